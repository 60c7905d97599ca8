// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <opencv2/core/mat.hpp>
#include <string>

namespace framequilt::tool {

/// How the tiles of a Deep Zoom pyramid are cut and kept: as JPEG.
struct DeepZoom {
  std::string name;    ///< The pyramid is NAME.dzi and the folder NAME_files.
  int tileSide = 510;  ///< Pixels of a tile without its overlap.
  int overlap = 1;     ///< Pixels that a tile shares with each neighbour.
  static constexpr const char* kFormat = "jpg";
};

/// Writes `picture` (8 bits, gray or blue-green-red) as a Deep Zoom pyramid into `folder`: tiles of
/// the picture and of copies that are half as large each, down to one pixel.
/// \throws ToolError naming `shownFolder`, which is what the user calls the folder.
void writeDeepZoom(const cv::Mat& picture, const DeepZoom& pyramid,
                   const std::filesystem::path& folder, const std::filesystem::path& shownFolder);

}  // namespace framequilt::tool
