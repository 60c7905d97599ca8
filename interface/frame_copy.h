// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <opencv2/core/mat.hpp>

#include "framequilt/session.h"

namespace framequilt {

/// Bytes of one row of the frame.
std::size_t packedRow(const FrameView& frame);

/// A packed copy of the frame with 3 (blue, green, red) or 1 (gray) channels. Bytes of value 0
/// become 1. Colour becomes gray by the integer rule of imaging/gray.h.
cv::Mat frameCopy(const FrameView& frame, int channels);

/// The pixels of a matrix as a view. \throws Error unless it has 8 bits and 1, 3 or 4 channels.
FrameView viewOf(const cv::Mat& frame);

}  // namespace framequilt
