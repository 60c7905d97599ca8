// SPDX-License-Identifier: Apache-2.0
/// \file
/// Large black images whose memory is touched where somebody writes, not before.
#pragma once

#include <opencv2/core/mat.hpp>

namespace framequilt {

/// All bytes 0. From 8 MiB on it is fresh memory of the system, in large pages where it has them:
/// it costs nothing until it is written, and what was never written takes no memory.
/// \throws cv::Exception (StsNoMem), of OpenCV's own allocator, which is asked last.
cv::Mat blackImage(int rows, int cols, int type);

/// Copies `from` to a black image of the same size and type, leaving alone what is black in both.
void copyToBlack(const cv::Mat& from, cv::Mat to);

}  // namespace framequilt
