// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <opencv2/core.hpp>
#include <utility>

#include "tools/framequilt/frame_stepper.h"

/// A camera whose frames come when the test says so. May be used from any thread.
class FakeCamera {
 public:
  /// What a frame is: its pixels; a damaged frame has none.
  using Frame = std::function<cv::Mat()>;

  static Frame filled(int value, int rows = 8, int cols = 10) {
    return [=] { return cv::Mat(rows, cols, CV_8UC3, cv::Scalar::all(value)); };
  }

  /// Lets the camera give one frame more.
  void give(Frame frame) {
    const std::lock_guard lock(mutex_);
    frames_.push_back(std::move(frame));
    changed_.notify_all();
  }

  /// After the frames given so far the camera is unplugged.
  void unplug() {
    const std::lock_guard lock(mutex_);
    unplugged_ = true;
    changed_.notify_all();
  }

  /// Waits until every frame given so far has been handed on and the next one is asked for.
  void waitUntilAskedForMore() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return frames_.empty() && asking_; });
  }

  std::size_t decoded() const {
    const std::lock_guard lock(mutex_);
    return decoded_;
  }

  framequilt::tool::FrameGrabber grabber() {
    return {[this] { return grab(); }, [this](cv::Mat& pixels) { return retrieve(pixels); }};
  }

 private:
  bool grab() {
    std::unique_lock lock(mutex_);
    asking_ = true;
    changed_.notify_all();
    changed_.wait(lock, [this] { return !frames_.empty() || unplugged_; });
    asking_ = false;
    if (frames_.empty()) return false;
    current_ = std::move(frames_.front());
    frames_.pop_front();
    return true;
  }

  bool retrieve(cv::Mat& pixels) {
    const std::lock_guard lock(mutex_);
    ++decoded_;
    pixels = current_();
    return !pixels.empty();
  }

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Frame> frames_;
  Frame current_;
  std::size_t decoded_ = 0;
  bool asking_ = false;
  bool unplugged_ = false;
};
