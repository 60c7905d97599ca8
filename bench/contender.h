// SPDX-License-Identifier: Apache-2.0
/// \file
/// What is compared: a way to turn the frames of a moving camera into a mosaic, a frame at a time.
#pragma once

#include <functional>
#include <memory>
#include <opencv2/core/mat.hpp>
#include <string>

namespace framequilt::bench {

/// What became of one frame.
struct Placed {
  bool joined = false;
  cv::Point2d place;  ///< Of its top-left corner, from that of the first frame, in pixels.
};

/// A mosaic in the making. Frames are packed, 8 bits, blue-green-red, of one size, and stay as they
/// are. A frame that cannot be joined is left out, and the next one is held against the last that
/// was.
class Contender {
 public:
  Contender() = default;
  virtual ~Contender() = default;
  Contender(const Contender&) = delete;
  Contender& operator=(const Contender&) = delete;

  /// Makes a mosaic of two frames; tells what became of the second.
  virtual Placed start(const cv::Mat& first, const cv::Mat& second) = 0;
  virtual Placed next(const cv::Mat& frame) = 0;

  /// Of all that is allocated, so that it changes when the mosaic grows.
  virtual cv::Size mosaicSize() const = 0;
};

/// How a contender is called and made.
struct Entry {
  std::string key;   ///< In the JSON.
  std::string name;  ///< In the table.
  std::function<std::unique_ptr<Contender>(cv::Size frame)> open;
};

}  // namespace framequilt::bench
