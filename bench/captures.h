// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core/mat.hpp>
#include <vector>

namespace framequilt::bench {

/// What a camera saw on its way over a scene.
struct Capture {
  std::vector<cv::Mat> frames;     ///< 8 bits, blue-green-red, packed.
  std::vector<cv::Point2d> truth;  ///< Their top-left corners, in pixels of the scene.

  cv::Size frameSize() const { return frames.front().size(); }
};

/// Scans a generated scene in rows, to and fro; each frame shares about three quarters of its side
/// with the one before, and a camera's noise lies over it. Rows are long enough for the mosaic to
/// grow, where there are frames enough. The same on every machine.
Capture simulateScan(cv::Size frame, int frames);

}  // namespace framequilt::bench
