// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <opencv2/core.hpp>
#include <vector>

#include "imaging/fusion.h"
#include "imaging/imaging_state.h"
#include "imaging/resize.h"
#include "imaging/run_buffer.h"
#include "tests/support/scene.h"

namespace framequilt::fuzz {

/// A frame as a run of that scale blends it.
inline Frame atWorkingSize(Frame frame, int scale) {
  if (scale == 1) return frame;
  Frame working(frame.rows / scale, frame.cols / scale, frame.channels);
  resizeWithinFrame(frame.bytes.data(), frame.rows, frame.cols, scale, frame.channels,
                    working.bytes.data(), working.bytes.size());
  return working;
}

/// `frame` without bytes of value 0, which become 1.
inline Frame withoutZeros(Frame frame) {
  std::replace(frame.bytes.begin(), frame.bytes.end(), static_cast<unsigned char>(0),
               static_cast<unsigned char>(1));
  return frame;
}

/// What a mosaic has to hold, made by the plain fusion from the frames that were placed. Counts
/// from the top-left corner of the first one, in pixels of the mosaic.
class MosaicModel {
 public:
  void begin(const Frame& first) {
    box_ = {0, 0, first.cols, first.rows};
    picture_ = first;
  }

  void join(const Frame& frame, cv::Point corner) {
    extend(box_ | cv::Rect(corner, cv::Size(frame.cols, frame.rows)));
    Frame ground(frame.rows, frame.cols, frame.channels);
    const cv::Point inBox = corner - box_.tl();
    copyRows(ground, inBox, [](unsigned char* own, unsigned char* theirs, std::size_t bytes) {
      std::memcpy(theirs, own, bytes);
    });
    Frame fused = frame;
    fusePlainly(ground.bytes.data(), fused.bytes.data(), frame.channels, 0, frame.rows, frame.cols);
    drop(AreaImageOneGaryFloat);
    drop(AreaImageTwoGaryFloat);
    drop(AreaImageOneWeight);
    drop(AreaImageOneGary);
    drop(AreaImageTwoGary);
    copyRows(fused, inBox, [](unsigned char* own, unsigned char* theirs, std::size_t bytes) {
      std::memcpy(own, theirs, bytes);
    });
  }

  const cv::Rect& box() const { return box_; }

  /// Whether `mosaic` shows a part of the plane that begins at `corner`; beside the box it is
  /// black.
  bool shows(const cv::Mat& mosaic, cv::Point corner) const {
    const std::size_t bytes = mosaic.elemSize();
    if (mosaic.channels() != picture_.channels) return false;
    for (int r = 0; r < mosaic.rows; ++r) {
      std::vector<unsigned char> expected(static_cast<std::size_t>(mosaic.cols) * bytes, 0);
      const cv::Rect shared = cv::Rect(corner.x, corner.y + r, mosaic.cols, 1) & box_;
      if (!shared.empty()) {
        std::memcpy(expected.data() + static_cast<std::size_t>(shared.x - corner.x) * bytes,
                    picture_.bytes.data() + (static_cast<std::size_t>(shared.y - box_.y) *
                                                 static_cast<std::size_t>(picture_.cols) +
                                             static_cast<std::size_t>(shared.x - box_.x)) *
                                                bytes,
                    static_cast<std::size_t>(shared.width) * bytes);
      }
      if (std::memcmp(expected.data(), mosaic.ptr(r), expected.size()) != 0) return false;
    }
    return true;
  }

 private:
  void extend(const cv::Rect& box) {
    const Frame before = picture_;
    const cv::Point moved = box_.tl() - box.tl();
    picture_ = Frame(box.height, box.width, before.channels);
    box_ = box;
    Frame copy = before;
    copyRows(copy, moved, [](unsigned char* own, unsigned char* theirs, std::size_t bytes) {
      std::memcpy(own, theirs, bytes);
    });
  }

  /// Calls `copy` for each row of `part` and where it lies in the picture.
  template <class Copy>
  void copyRows(Frame& part, cv::Point corner, Copy copy) {
    const std::size_t bytes =
        static_cast<std::size_t>(part.cols) * static_cast<std::size_t>(part.channels);
    for (int r = 0; r < part.rows; ++r) {
      copy(&picture_.at(corner.y + r, corner.x), &part.at(r, 0), bytes);
    }
  }

  cv::Rect box_;
  Frame picture_;
};

}  // namespace framequilt::fuzz
