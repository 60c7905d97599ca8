// SPDX-License-Identifier: Apache-2.0
#include "imaging/content.h"

#include <cstring>

#include "imaging/cpu_level.h"

namespace framequilt {
namespace {

using Bytes = unsigned char;

/// Where no byte is 0, every pixel has content.
struct HasZero {
  FRAMEQUILT_ROUTINE bool run(const Bytes* bytes, std::size_t count) {
    Bytes zeros = 0;
    for (std::size_t i = 0; i < count; ++i) zeros |= bytes[i] == 0 ? Bytes{1} : Bytes{0};
    return zeros != 0;
  }
};

struct ColourContent {
  FRAMEQUILT_ROUTINE void run(const Bytes* __restrict bgr, int count, Bytes* __restrict content) {
    for (int i = 0; i < count; ++i) {
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

}  // namespace

Filling contentOfRow(const ImageView& image, int row, std::vector<unsigned char>& content) {
  if (!Leveled<HasZero>::call(image.row(row), image.rowBytes())) return Filling::kFull;
  const auto cols = static_cast<std::size_t>(image.cols);
  if (image.channels == 3) {
    Leveled<ColourContent>::call(image.row(row), image.cols, content.data());
  } else {
    Leveled<GrayContent>::call(image.row(row), image.cols, content.data());
  }
  if (std::memchr(content.data(), 0, cols) == nullptr) return Filling::kFull;
  return std::memchr(content.data(), 1, cols) == nullptr ? Filling::kEmpty : Filling::kMixed;
}

}  // namespace framequilt
