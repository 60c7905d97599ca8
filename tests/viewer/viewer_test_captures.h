// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <opencv2/core.hpp>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tools/framequilt/generated_scene.h"
#include "tools/viewer/model/stitch_worker.h"

namespace framequilt::viewer {

/// Lets frames of a test's capture through one by one, or all of them.
class Gate {
 public:
  explicit Gate(int open = 1000000) : open_(open) {}
  void let(int frames) {
    {
      const std::lock_guard lock(mutex_);
      open_ += frames;
    }
    changed_.notify_all();
  }
  /// False when `stop` says so.
  bool pass(const std::function<bool()>& stop) {
    std::unique_lock lock(mutex_);
    while (open_ == 0) {
      if (stop && stop()) return false;
      changed_.wait_for(lock, std::chrono::milliseconds(5));
    }
    --open_;
    return true;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  int open_;
};

/// A capture that is cut from a scene at given places.
class PlacedCapture final : public tool::FrameSource {
 public:
  static constexpr int kRows = 240;
  static constexpr int kCols = 320;

  PlacedCapture(std::vector<cv::Point> places, tool::InputSettings settings,
                std::shared_ptr<Gate> gate)
      : places_(std::move(places)),
        settings_(std::move(settings)),
        gate_(std::move(gate)),
        scene_(tool::generateScene({1400, 1000}, 3)) {}

  tool::CaptureShape shape() const override { return {kRows, kCols, 3}; }
  std::optional<std::size_t> count() const override { return places_.size(); }
  std::optional<tool::SourceFrame> next() override {
    if (next_ == places_.size() || !gate_->pass(settings_.interrupted)) return std::nullopt;
    const cv::Point place = places_[next_++];
    if (place.x < 0) throw std::runtime_error("the disk was pulled out\nsecond line");
    const cv::Rect part(place, cv::Size(kCols, kRows));
    return tool::SourceFrame{scene_(part).clone(), next_, "f" + std::to_string(next_), {}};
  }
  std::size_t skipped() const override { return 0; }

 private:
  std::vector<cv::Point> places_;
  tool::InputSettings settings_;
  std::shared_ptr<Gate> gate_;
  cv::Mat scene_;
  std::size_t next_ = 0;
};

/// The 4th of five frames is far away.
inline std::vector<cv::Point> pathWithAGap() {
  return {{0, 0}, {100, 10}, {200, 20}, {900, 600}, {290, 30}};
}

inline CaptureRequest requestOf(std::vector<cv::Point> places,
                                std::shared_ptr<Gate> gate = std::make_shared<Gate>()) {
  CaptureRequest request;
  request.name = "test";
  request.options.backend = "host";
  request.open = [places = std::move(places),
                  gate = std::move(gate)](const tool::InputSettings& settings) {
    return std::make_unique<PlacedCapture>(places, settings, gate);
  };
  return request;
}

}  // namespace framequilt::viewer
