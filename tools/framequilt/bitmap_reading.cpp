// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/bitmap_reading.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <system_error>

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

/// The two letters "BM", the size of the file, where the pixels begin, then the size of the next
/// header, which begins with the picture's columns and rows; numbers are little-endian.
using FileStart = std::array<unsigned char, 26>;
constexpr std::size_t kFileSize = 2;
constexpr std::size_t kHeaderSize = 14;
constexpr std::size_t kCols = 18;
constexpr std::size_t kRows = 22;
/// The first form of that header has 16 bits for each of them.
constexpr std::uint32_t kFirstHeaderSize = 12;
constexpr std::size_t kFirstRows = 20;

FileStart startOf(const fs::path& picture) {
  FileStart start{};
  std::ifstream(picture, std::ios::binary)
      .read(reinterpret_cast<char*>(start.data()), static_cast<std::streamsize>(start.size()));
  return start;
}

std::uint32_t number16(const FileStart& start, std::size_t at) {
  return start[at] | std::uint32_t{start[at + 1]} << 8U;
}

std::uint32_t number32(const FileStart& start, std::size_t at) {
  return number16(start, at) | number16(start, at + 2) << 16U;
}

/// Rows are negative where they are stored from the top down.
std::int64_t magnitude(std::uint32_t number) {
  return std::abs(std::int64_t{static_cast<std::int32_t>(number)});
}

/// The decoder prints a line of its own about a file that is too short, so it is not asked.
bool isComplete(const fs::path& picture) {
  const FileStart start = startOf(picture);
  const std::uintmax_t declared = number32(start, kFileSize);
  std::error_code failure;
  const std::uintmax_t size = fs::file_size(picture, failure);
  return !failure && size >= declared;
}

}  // namespace

bool isBitmap(const fs::path& picture) {
  const FileStart start = startOf(picture);
  return start[0] == 'B' && start[1] == 'M';
}

BitmapSize bitmapSize(const fs::path& picture) {
  const FileStart start = startOf(picture);
  if (number32(start, kHeaderSize) == kFirstHeaderSize) {
    return {number16(start, kFirstRows), number16(start, kCols)};
  }
  return {magnitude(number32(start, kRows)), magnitude(number32(start, kCols))};
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
