// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core/mat.hpp>
#include <string>

namespace framequilt {

/// Writes `picture` (8 bits, gray or blue-green-red, not empty) as a PNG file. The bytes go to a
/// temporary file in the same folder, which then takes the place of `path`; an older file stays
/// until that moment.
/// \throws CallFailure saying what is wrong with the path or the disk; std::bad_alloc.
void writePng(const cv::Mat& picture, const std::string& path);

}  // namespace framequilt
