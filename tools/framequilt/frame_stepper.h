// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <opencv2/core/mat.hpp>
#include <optional>

namespace framequilt::tool {

/// Where the frames of a video or a camera come from: cv::VideoCapture as a rule.
struct FrameGrabber {
  std::function<bool()> grab;              ///< Goes to the next frame; false when there is none.
  std::function<bool(cv::Mat&)> retrieve;  ///< Decodes it to a matrix of its own; false if damaged.
};

struct NumberedFrame {
  cv::Mat pixels;      ///< Empty for a frame that could not be decoded.
  std::size_t number;  ///< From 1, of all frames grabbed.
};

/// Takes the 1st, (N + 1)th, (2N + 1)th ... frame; those between are not decoded.
class FrameStepper {
 public:
  FrameStepper(FrameGrabber grabber, int every);

  /// None at the end. \throws what the grabber throws.
  std::optional<NumberedFrame> next();

 private:
  FrameGrabber grabber_;
  std::size_t every_;
  std::size_t grabbed_ = 0;
};

}  // namespace framequilt::tool
