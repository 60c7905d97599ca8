// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/model/mosaic_patch.h"

#include <cstddef>
#include <cstdint>

#include "tools/viewer/model/grid.h"

namespace framequilt::viewer {
namespace {

using Pixel = std::uint32_t;
constexpr Pixel kOpaque = 0xff000000;

Pixel opaqueUnlessEmpty(Pixel colour) { return colour == 0 ? 0 : kOpaque | colour; }

void convertRow(const std::uint8_t* from, int channels, int cols, Pixel* to) {
  if (channels == 1) {
    for (int c = 0; c < cols; ++c) to[c] = opaqueUnlessEmpty(from[c] * Pixel{0x010101});
    return;
  }
  for (int c = 0; c < cols; ++c) {
    const std::uint8_t* bgr = from + std::ptrdiff_t{3} * c;
    to[c] = opaqueUnlessEmpty(bgr[0] | Pixel{bgr[1]} << 8 | Pixel{bgr[2]} << 16);
  }
}

/// The rounded mean of each byte: two bytes at a time, with room for the sum of four between them.
Pixel meanOf(Pixel a, Pixel b, Pixel c, Pixel d) {
  constexpr Pixel kEven = 0x00ff00ff;
  constexpr Pixel kHalves = 0x00020002;
  const Pixel even = (a & kEven) + (b & kEven) + (c & kEven) + (d & kEven) + kHalves;
  const Pixel odd =
      (a >> 8 & kEven) + (b >> 8 & kEven) + (c >> 8 & kEven) + (d >> 8 & kEven) + kHalves;
  return (even >> 2 & kEven) | (odd >> 2 & kEven) << 8;
}

const Pixel* rowOf(const QImage& picture, int row) {
  return reinterpret_cast<const Pixel*>(picture.constScanLine(row));
}

Pixel* rowOf(QImage& picture, int row) { return reinterpret_cast<Pixel*>(picture.scanLine(row)); }

}  // namespace

QImage pictureOf(const cv::Mat& pixels) {
  QImage picture(pixels.cols, pixels.rows, QImage::Format_ARGB32_Premultiplied);
  for (int r = 0; r < pixels.rows; ++r) {
    convertRow(pixels.ptr(r), pixels.channels(), pixels.cols, rowOf(picture, r));
  }
  return picture;
}

QImage halved(const QImage& picture) {
  QImage half(picture.width() / 2, picture.height() / 2, QImage::Format_ARGB32_Premultiplied);
  for (int r = 0; r < half.height(); ++r) {
    const Pixel* upper = rowOf(picture, 2 * r);
    const Pixel* lower = rowOf(picture, 2 * r + 1);
    Pixel* to = rowOf(half, r);
    const std::ptrdiff_t cols = half.width();
    for (std::ptrdiff_t c = 0; c < cols; ++c) {
      to[c] = meanOf(upper[2 * c], upper[2 * c + 1], lower[2 * c], lower[2 * c + 1]);
    }
  }
  return half;
}

MosaicPatch readPatch(const MosaicReader& read, const cv::Rect& changed) {
  constexpr int kAlignment = 1 << (kPatchLevels - 1);
  MosaicPatch patch;
  if (changed.empty()) return patch;
  patch.area = pixelsOf(cellsOver(changed, kAlignment), kAlignment);
  patch.levels[0] = pictureOf(read(patch.area));
  for (std::size_t level = 1; level < patch.levels.size(); ++level) {
    patch.levels[level] = halved(patch.levels[level - 1]);
  }
  return patch;
}

}  // namespace framequilt::viewer
