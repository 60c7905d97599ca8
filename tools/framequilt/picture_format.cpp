// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/picture_format.h"

#include <algorithm>
#include <array>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <string_view>

#include "tools/framequilt/path_text.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 6> kExtensions = {".png", ".jpg",  ".jpeg",
                                                         ".tif", ".tiff", ".bmp"};
constexpr int kLargestJpegSide = 65500;

bool isJpeg(const std::string& extension) { return extension == ".jpg" || extension == ".jpeg"; }

}  // namespace

void requireWritableFormat(const fs::path& target) {
  if (std::find(kExtensions.begin(), kExtensions.end(), lowerExtension(target)) ==
      kExtensions.end()) {
    throw ToolError(inQuotes(target) +
                    " names no known picture format: end it with .png, .jpg, .tif or .bmp");
  }
}

std::vector<unsigned char> encodePicture(const cv::Mat& picture, const fs::path& target) {
  const std::string extension = lowerExtension(target);
  if (isJpeg(extension) && std::max(picture.rows, picture.cols) > kLargestJpegSide) {
    throw ToolError(inQuotes(target) + " would have " + std::to_string(picture.cols) + " x " +
                    std::to_string(picture.rows) +
                    " pixels, more than a JPEG holds: end the name with .tif");
  }
  std::vector<unsigned char> bytes;
  if (!cv::imencode(extension, picture, bytes) || bytes.empty()) {
    throw ToolError(inQuotes(target) + " could not be encoded: choose another format");
  }
  return bytes;
}

}  // namespace framequilt::tool
