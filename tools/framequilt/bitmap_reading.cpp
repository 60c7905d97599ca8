// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/bitmap_reading.h"

#include <array>
#include <cstdint>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <system_error>

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

/// The two letters "BM" and the size of the file, little-endian.
using FileStart = std::array<unsigned char, 6>;

FileStart startOf(const fs::path& picture) {
  FileStart start{};
  std::ifstream(picture, std::ios::binary).read(reinterpret_cast<char*>(start.data()), 6);
  return start;
}

/// The decoder prints a line of its own about a file that is too short, so it is not asked.
bool isComplete(const fs::path& picture) {
  const FileStart start = startOf(picture);
  const std::uintmax_t declared = start[2] | std::uintmax_t{start[3]} << 8 |
                                  std::uintmax_t{start[4]} << 16 | std::uintmax_t{start[5]} << 24;
  std::error_code failure;
  const std::uintmax_t size = fs::file_size(picture, failure);
  return !failure && size >= declared;
}

}  // namespace

bool isBitmap(const fs::path& picture) {
  const FileStart start = startOf(picture);
  return start[0] == 'B' && start[1] == 'M';
}

cv::Mat readBitmap(const fs::path& picture) {
  if (!isComplete(picture)) return {};
  try {
    return cv::imread(picture.string(), cv::IMREAD_ANYCOLOR);
  } catch (const cv::Exception&) {
    return {};  // Its sides are beyond the decoder's limits.
  }
}

}  // namespace framequilt::tool
