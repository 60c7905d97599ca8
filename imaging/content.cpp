// SPDX-License-Identifier: Apache-2.0
#include "imaging/content.h"

#include <algorithm>
#include <cstring>

#include "imaging/cpu_level.h"

namespace framequilt {
namespace {

using Bytes = unsigned char;

/// Where no byte is 0, every pixel has content.
bool hasZero(const Bytes* bytes, std::size_t count) {
  return std::memchr(bytes, 0, count) != nullptr;
}

/// Whether all bits of the bytes are 0.
struct AllZero {
  FRAMEQUILT_ROUTINE bool run(const Bytes* bytes, std::size_t count) {
    Bytes any = 0;
    for (std::size_t i = 0; i < count; ++i) any |= bytes[i];
    return any == 0;
  }
};

struct ColourContent {
  FRAMEQUILT_ROUTINE void run(const Bytes* __restrict bgr, std::size_t count,
                              Bytes* __restrict content) {
    for (std::size_t i = 0; i < count; ++i) {
      const unsigned gray = 299U * bgr[3 * i + 2] + 587U * bgr[3 * i + 1] + 114U * bgr[3 * i];
      content[i] = gray >= 500U ? 1 : 0;
    }
  }
};

struct GrayContent {
  FRAMEQUILT_ROUTINE void run(const Bytes* __restrict gray, int count, Bytes* __restrict content) {
    for (int i = 0; i < count; ++i) content[i] = gray[i] != 0 ? 1 : 0;
  }
};

/// Pixels that are looked at together.
constexpr int kStretch = 256;

}  // namespace

Filling contentOfRow(const ImageView& image, int row, std::vector<unsigned char>& content) {
  if (!hasZero(image.row(row), image.rowBytes())) return Filling::kFull;
  const auto cols = static_cast<std::size_t>(image.cols);
  for (int begin = 0; begin < image.cols; begin += kStretch) {
    const int count = std::min(kStretch, image.cols - begin);
    const Bytes* const pixels = image.row(row) + rowStart(1, begin, image.channels);
    Bytes* const to = content.data() + begin;
    const std::size_t bytes = planeSize(1, count, image.channels);
    if (Leveled<AllZero>::call(pixels, bytes)) {
      std::memset(to, 0, static_cast<std::size_t>(count));
    } else if (!hasZero(pixels, bytes)) {
      std::memset(to, 1, static_cast<std::size_t>(count));
    } else if (image.channels == 3) {
      Leveled<ColourContent>::call(pixels, static_cast<std::size_t>(count), to);
    } else {
      Leveled<GrayContent>::call(pixels, count, to);
    }
  }
  if (std::memchr(content.data(), 0, cols) == nullptr) return Filling::kFull;
  return std::memchr(content.data(), 1, cols) == nullptr ? Filling::kEmpty : Filling::kMixed;
}

}  // namespace framequilt
