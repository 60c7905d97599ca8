// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core/mat.hpp>

#include "tools/framequilt/output_file.h"

namespace framequilt::tool {

/// Writes `picture` (8 bits, gray or blue-green-red) to `output` as a BigTIFF: no limit at 4 GB,
/// compressed without loss, in tiles, so that a viewer decodes only what it shows. Neither a second
/// picture nor the file is held in memory: the rows are read as they are compressed.
///
/// \throws ToolError naming the target, std::bad_alloc.
void writeTiff(const cv::Mat& picture, OutputFile& output);

}  // namespace framequilt::tool
