// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core/types.hpp>

namespace framequilt::viewer {

/// Division that rounds down, also below zero. \param divisor  Positive.
constexpr int floorDiv(int value, int divisor) {
  return value >= 0 ? value / divisor : -((divisor - 1 - value) / divisor);
}

/// Division that rounds up, also below zero. \param divisor  Positive.
constexpr int ceilDiv(int value, int divisor) { return -floorDiv(-value, divisor); }

/// The smallest rectangle of cells of `side` pixels that covers `pixels`, in cells.
inline cv::Rect cellsOver(const cv::Rect& pixels, int side) {
  if (pixels.empty()) return {};
  const cv::Point first(floorDiv(pixels.x, side), floorDiv(pixels.y, side));
  const cv::Point end(ceilDiv(pixels.x + pixels.width, side),
                      ceilDiv(pixels.y + pixels.height, side));
  return {first, end};
}

/// Cells of `side` pixels, in pixels.
inline cv::Rect pixelsOf(const cv::Rect& cells, int side) {
  return {cells.x * side, cells.y * side, cells.width * side, cells.height * side};
}

}  // namespace framequilt::viewer
