// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <filesystem>
#include <opencv2/core/mat.hpp>

namespace framequilt::tool {

/// Whether the file is a Windows bitmap by its first bytes: libvips does not read those itself.
bool isBitmap(const std::filesystem::path& picture);

/// As the header of a bitmap tells it; 0 where it ends early.
struct BitmapSize {
  std::int64_t rows;
  std::int64_t cols;
};
BitmapSize bitmapSize(const std::filesystem::path& picture);

/// The pixels of a bitmap, 8 bits a channel, gray or blue-green-red as stored; empty when it ends
/// early or cannot be decoded.
cv::Mat readBitmap(const std::filesystem::path& picture);

}  // namespace framequilt::tool
