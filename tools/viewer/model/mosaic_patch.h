// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QImage>
#include <array>
#include <functional>
#include <opencv2/core/mat.hpp>

namespace framequilt::viewer {

/// A copy of a part of the mosaic, in steady mosaic pixels (session.h); 0 where no frame lies. May
/// be called from any thread.
using MosaicReader = std::function<cv::Mat(const cv::Rect&)>;

/// Levels that a patch brings: whole, half and quarter size.
constexpr int kPatchLevels = 3;

/// A part of the mosaic, ready to be drawn: 32 bits a pixel, clear where no frame lies.
struct MosaicPatch {
  cv::Rect area;  ///< In steady mosaic pixels; corners are multiples of four.
  std::array<QImage, kPatchLevels> levels;
};

/// \param pixels  8 bits, gray or blue-green-red.
/// \returns the same in premultiplied ARGB.
QImage pictureOf(const cv::Mat& pixels);

/// Half as large: each pixel is the mean of four. \param picture  Premultiplied ARGB, even sides.
QImage halved(const QImage& picture);

/// The patch around `changed`, which may be empty; then so is the patch.
MosaicPatch readPatch(const MosaicReader& read, const cv::Rect& changed);

}  // namespace framequilt::viewer
