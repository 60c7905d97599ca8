// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/picture_format.h"

#include <algorithm>
#include <array>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "tools/framequilt/path_text.h"
#include "tools/framequilt/tiff_writing.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 6> kExtensions = {".png", ".jpg",  ".jpeg",
                                                         ".tif", ".tiff", ".bmp"};
constexpr int kLargestJpegSide = 65500;

bool isJpeg(const std::string& extension) { return extension == ".jpg" || extension == ".jpeg"; }

bool isTiff(const std::string& extension) { return extension == ".tif" || extension == ".tiff"; }

std::vector<unsigned char> encode(const cv::Mat& picture, const fs::path& target) {
  const std::string extension = lowerExtension(target);
  if (isJpeg(extension) && std::max(picture.rows, picture.cols) > kLargestJpegSide) {
    throw ToolError(inQuotes(target) + " would have " + sizeText(picture.rows, picture.cols) +
                    ", more than a JPEG holds: end the name with .tif");
  }
  std::vector<unsigned char> bytes;
  if (!cv::imencode(extension, picture, bytes) || bytes.empty()) {
    throw ToolError(inQuotes(target) + " could not be encoded: choose another format");
  }
  return bytes;
}

}  // namespace

void requireWritableFormat(const fs::path& target) {
  if (std::find(kExtensions.begin(), kExtensions.end(), lowerExtension(target)) ==
      kExtensions.end()) {
    throw ToolError(inQuotes(target) +
                    " names no known picture format: end it with .png, .jpg, .tif or .bmp");
  }
}

void writePicture(const cv::Mat& picture, OutputFile& output) {
  if (isTiff(lowerExtension(output.target()))) {
    writeTiff(picture, output);
  } else {
    const std::vector<unsigned char> bytes = encode(picture, output.target());
    output.write(bytes.data(), bytes.size());
  }
}

}  // namespace framequilt::tool
