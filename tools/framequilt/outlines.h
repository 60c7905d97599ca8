// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <opencv2/core/mat.hpp>
#include <vector>

namespace framequilt::tool {

struct FrameOutline {
  std::size_t number;  ///< Of the frame in its capture, from 1.
  cv::Rect place;      ///< In pixels of the picture that it is drawn on.
};

/// A colour copy of the mosaic with the border and the number of each frame, later ones on top.
cv::Mat withOutlines(const cv::Mat& mosaic, const std::vector<FrameOutline>& outlines);

}  // namespace framequilt::tool
