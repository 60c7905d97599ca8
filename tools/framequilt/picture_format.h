// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <opencv2/core/mat.hpp>
#include <vector>

namespace framequilt::tool {

/// \throws ToolError when the extension is none of the formats that mosaics are written in.
void requireWritableFormat(const std::filesystem::path& target);

/// The bytes of a picture file in the format that the extension of `target` names.
/// \throws ToolError naming the target when the format cannot hold the picture.
std::vector<unsigned char> encodePicture(const cv::Mat& picture,
                                         const std::filesystem::path& target);

}  // namespace framequilt::tool
