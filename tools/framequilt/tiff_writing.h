// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core/mat.hpp>
#include <optional>

#include "tools/framequilt/output_file.h"

namespace framequilt::tool {

/// Writes `picture` (8 bits, gray or blue-green-red) to `output` as a BigTIFF: no limit at 4 GB,
/// compressed without loss, in tiles, so that a viewer decodes only what it shows. Neither a second
/// picture nor the file is held in memory: the rows are read as they are compressed.
///
/// \throws ToolError naming the target, std::bad_alloc.
void writeTiff(const cv::Mat& picture, OutputFile& output);

/// The same as an OME-TIFF: with smaller copies, each half as large as the one before, down to one
/// tile (in the picture's SubIFDs), and with a description of the picture in OME-XML.
///
/// \param pixelSize  Side of a pixel in micrometres, above 0; none where it is unknown.
void writeOmeTiff(const cv::Mat& picture, std::optional<double> pixelSize, OutputFile& output);

}  // namespace framequilt::tool
