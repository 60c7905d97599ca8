// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <opencv2/core/mat.hpp>

#include "tools/framequilt/output_file.h"

namespace framequilt::tool {

/// \throws ToolError when the extension is none of the formats that mosaics are written in.
void requireWritableFormat(const std::filesystem::path& target);

/// Writes `picture` (8 bits, gray or blue-green-red; rows may lie apart) as the whole content of
/// `output`, in the format that the extension of its target names; `output.publish()` is left to
/// the caller.
///
/// \throws ToolError naming the target when the format cannot hold the picture or the disk is full.
void writePicture(const cv::Mat& picture, OutputFile& output);

}  // namespace framequilt::tool
