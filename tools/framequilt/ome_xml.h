// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <opencv2/core/mat.hpp>
#include <optional>
#include <string>

namespace framequilt::tool {

/// \throws ToolError when the name does not end as those of OME-TIFF files do, by which readers
/// recognise them.
void requireOmeTiffName(const std::filesystem::path& target);

/// The name without its folder and ".ome.tif".
std::string omeName(const std::filesystem::path& target);

/// What an OME-TIFF says of the one picture in it, in ASCII.
///
/// \param name       Bytes that are not UTF-8 are replaced.
/// \param pixelSize  Side of a pixel in micrometres; none where it is unknown.
std::string omeXml(const cv::Mat& picture, const std::string& name,
                   std::optional<double> pixelSize);

}  // namespace framequilt::tool
