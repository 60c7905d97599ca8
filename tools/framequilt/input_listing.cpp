// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/input_listing.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <system_error>

#include "tools/framequilt/natural_order.h"
#include "tools/framequilt/path_text.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 13> kPictureExtensions = {
    ".png", ".jpg",  ".jpeg", ".jpe", ".tif", ".tiff", ".bmp",
    ".dib", ".webp", ".jp2",  ".pgm", ".ppm", ".pnm"};

bool looksLikePicture(const fs::path& file) {
  if (file.filename().string().front() == '.') return false;
  return std::find(kPictureExtensions.begin(), kPictureExtensions.end(), lowerExtension(file)) !=
         kPictureExtensions.end();
}

bool sameFile(const fs::path& a, const fs::path& b) {
  std::error_code ignored;
  return fs::equivalent(a, b, ignored);
}

std::vector<fs::path> picturesIn(const fs::path& folder, const fs::path& output) {
  std::error_code failure;
  std::vector<fs::path> pictures;
  fs::directory_iterator entries(folder, failure);
  for (; !failure && entries != fs::directory_iterator(); entries.increment(failure)) {
    const fs::path& file = entries->path();
    std::error_code ignored;
    if (!fs::is_directory(file, ignored) && looksLikePicture(file) && !sameFile(file, output)) {
      pictures.push_back(file);
    }
  }
  if (failure) {
    throw ToolError("folder " + inQuotes(folder) + " cannot be listed (" + failure.message() +
                    "): check its permissions");
  }
  if (pictures.empty()) {
    throw ToolError("folder " + inQuotes(folder) +
                    " holds no pictures: give a folder with .png, .jpg, .tif or .bmp files");
  }
  std::sort(pictures.begin(), pictures.end(), [](const fs::path& a, const fs::path& b) {
    return naturalLess(a.filename().native(), b.filename().native());
  });
  return pictures;
}

}  // namespace

std::vector<fs::path> listPictures(const std::vector<std::string>& inputs, const fs::path& output) {
  std::vector<fs::path> pictures;
  for (const fs::path input : inputs) {
    std::error_code failure;
    const fs::file_status status = fs::status(input, failure);
    if (!fs::exists(status)) {
      throw ToolError(inQuotes(input) + " cannot be found (" + failure.message() +
                      "): check the path");
    }
    if (fs::is_directory(status)) {
      const std::vector<fs::path> found = picturesIn(input, output);
      pictures.insert(pictures.end(), found.begin(), found.end());
    } else {
      pictures.push_back(input);
    }
  }
  return pictures;
}

}  // namespace framequilt::tool
