// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/deep_zoom.h"

#include <algorithm>
#include <fstream>
#include <string>
#include <system_error>

#include "tools/framequilt/path_text.h"
#include "tools/framequilt/tool_error.h"
#include "tools/framequilt/vips_picture.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

/// Without visible blocks at four times the size of a middling 75.
constexpr const char* kQuality = "[Q=88]";

/// Whether the file is there and ends like this.
bool endsWith(const fs::path& file, const std::string& expected) {
  const auto size = static_cast<std::streamoff>(expected.size());
  std::ifstream stream(file, std::ios::binary);
  std::string end(expected.size(), '\0');
  stream.seekg(-size, std::ios::end);
  stream.read(end.data(), size);
  return stream && end == expected;
}

/// Whether the file ends as JPEG files do.
bool isWholeTile(const fs::path& file) { return endsWith(file, "\xFF\xD9"); }

/// Whether every tile of a level of this size is there.
bool isWholeLevel(const fs::path& folder, cv::Size size, const DeepZoom& pyramid) {
  for (int row = 0; row * pyramid.tileSide < size.height; ++row) {
    for (int col = 0; col * pyramid.tileSide < size.width; ++col) {
      const std::string name =
          std::to_string(col) + "_" + std::to_string(row) + "." + DeepZoom::kFormat;
      if (!isWholeTile(folder / name)) return false;
    }
  }
  return true;
}

fs::path levelFolder(const fs::path& folder, const DeepZoom& pyramid, int level) {
  return folder / (pyramid.name + "_files") / std::to_string(level);
}

/// Of the level that is as large as the picture; that of one pixel is 0.
int lastLevel(cv::Size size) {
  int level = 0;
  while (1LL << level < std::max(size.width, size.height)) ++level;
  return level;
}

/// libvips takes folders that are there, and ends the process where it cannot make one.
bool makeFolders(const fs::path& folder, cv::Size size, const DeepZoom& pyramid) {
  std::error_code failure;
  for (int level = lastLevel(size); level >= 0 && !failure; --level) {
    fs::create_directories(levelFolder(folder, pyramid, level), failure);
  }
  return !failure;
}

/// Whether libvips left a file under the name it has until it is whole.
bool hasUnfinished(const fs::path& folder) {
  std::error_code failure;
  for (fs::recursive_directory_iterator entry(folder, failure);
       !failure && entry != fs::recursive_directory_iterator(); entry.increment(failure)) {
    if (entry->path().filename().native().front() == '.') return true;
  }
  return static_cast<bool>(failure);
}

/// libvips does not notice when a disk is full.
bool isWhole(const fs::path& folder, cv::Size size, const DeepZoom& pyramid) {
  if (!endsWith(folder / (pyramid.name + ".dzi"), "</Image>\n") || hasUnfinished(folder)) {
    return false;
  }
  for (int level = lastLevel(size); level >= 0; --level) {
    if (!isWholeLevel(levelFolder(folder, pyramid, level), size, pyramid)) return false;
    size = {(size.width + 1) / 2, (size.height + 1) / 2};
  }
  return true;
}

}  // namespace

void writeDeepZoom(const cv::Mat& picture, const DeepZoom& pyramid, const fs::path& folder,
                   const fs::path& shownFolder) {
  const GObjectPtr<VipsImage> view = vipsViewOf(picture);
  const std::string suffix = std::string(".") + DeepZoom::kFormat + kQuality;
  const bool written =
      makeFolders(folder, picture.size(), pyramid) &&
      vips_dzsave(view.get(), (folder / pyramid.name).c_str(), "layout", VIPS_FOREIGN_DZ_LAYOUT_DZ,
                  "suffix", suffix.c_str(), "tile_size", pyramid.tileSide, "overlap",
                  pyramid.overlap, "depth", VIPS_FOREIGN_DZ_DEPTH_ONEPIXEL, nullptr) == 0;
  vips_error_clear();
  // Says when it was made, and by what; nobody reads it, and no two runs would be the same.
  std::error_code ignored;
  fs::remove(folder / (pyramid.name + "_files") / "vips-properties.xml", ignored);
  if (written && isWhole(folder, picture.size(), pyramid)) return;
  throw ToolError("the tiles of " + inQuotes(shownFolder) +
                  " could not be written: free some space or choose another folder");
}

}  // namespace framequilt::tool
