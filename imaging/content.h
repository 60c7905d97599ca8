// SPDX-License-Identifier: Apache-2.0
/// \file
/// Which pixels of an image have content, by the rule of `rgb2GrayFloat1`.
#pragma once

#include <cstddef>
#include <vector>

#include "imaging/pixel_math.h"

namespace framequilt {

/// An image whose rows may lie apart.
struct ImageView {
  const unsigned char* pixels;
  std::ptrdiff_t stride;  ///< Bytes from one row to the next.
  int rows, cols, channels;

  const unsigned char* row(int r) const { return pixels + r * stride; }
  std::size_t rowBytes() const { return planeSize(1, cols, channels); }
};

/// How much of a stretch of pixels has content.
enum class Filling { kEmpty, kMixed, kFull };

/// 1 for each pixel of a row that has content, 0 for the others; unless the row is full, then
/// `content` is left alone. 1 or 3 channels.
Filling contentOfRow(const ImageView& image, int row, std::vector<unsigned char>& content);

}  // namespace framequilt
