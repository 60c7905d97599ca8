// SPDX-License-Identifier: Apache-2.0
#include "features/descriptor.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "features/descriptor_inside.h"
#include "features/gradient_bin.h"
#include "features/plain.h"
#include "interface/report.h"

namespace {

using framequilt::kCellSide;
using framequilt::kOrientationBins;

using Histogram = std::array<unsigned short, kOrientationBins>;

/// A gray image that continues with one row of zeros.
class GrayImage {
 public:
  explicit GrayImage(const framequilt::GrayView& view)
      : pixels_(view.pixels), rows_(view.rows), cols_(view.cols), size_(rows_ * cols_) {}

  /// Adds the gradient of a pixel to the histogram; one that has no two neighbours before it, or is
  /// the last of its column or row, adds nothing.
  void addGradient(std::ptrdiff_t row, std::ptrdiff_t col, Histogram& histogram) const {
    if (row < 2 || row >= rows_ - 1 || col < 2 || col >= cols_ - 1) return;
    const std::ptrdiff_t here = row * cols_ + col;
    const framequilt::GradientBin gradient = framequilt::plain::gradientBin(
        at(here + 2) - at(here - 2), at(here + 2 * cols_) - at(here - 2 * cols_));
    auto& bin = histogram[static_cast<std::size_t>(gradient.bin)];
    bin = static_cast<unsigned short>(bin + gradient.magnitude);
  }

 private:
  /// The tap past the end of a row is the next row's first pixel, past the last row it is 0.
  int at(std::ptrdiff_t index) const { return index < size_ ? pixels_[index] : 0; }

  const unsigned char* pixels_;
  std::ptrdiff_t rows_, cols_, size_;
};

Histogram cellHistogram(const GrayImage& image, std::ptrdiff_t originRow,
                        std::ptrdiff_t originCol) {
  Histogram histogram = {};
  for (auto col = originCol - 1; col < originCol - 1 + kCellSide; ++col) {
    for (auto row = originRow - 1; row < originRow - 1 + kCellSide; ++row) {
      image.addGradient(row, col, histogram);
    }
  }
  return histogram;
}

}  // namespace

void framequilt::plain::describeCorner(const GrayView& image, SPoint corner, int patch,
                                       unsigned short* descriptor, int length) {
  const GrayImage gray(image);
  const std::ptrdiff_t half = patch / 2;
  int filled = 0;
  for (auto dx = 1 - half; dx <= half; dx += kCellSide) {
    for (auto dy = 1 - half; dy <= half && filled < length; dy += kCellSide) {
      const Histogram cell = cellHistogram(gray, corner.y + dy, corner.x + dx);
      const int kept = std::min(kOrientationBins, length - filled);
      std::copy_n(cell.begin(), kept, descriptor + filled);
      filled += kept;
    }
  }
}

bool noRotaFeatureDescriber(unsigned char* image, int rows, int cols, int length, int patch,
                            std::vector<SPoint> corners, unsigned short* scratch,
                            unsigned short* descriptors) {
  if (image == nullptr) {
    framequilt::report("src_in ptr is null");
    return false;
  }
  if (length < 1 || scratch == nullptr) return true;
  std::fill_n(scratch, length, static_cast<unsigned short>(0));
  if (descriptors == nullptr) return true;

  const framequilt::GrayView gray = {image, rows, cols};
  for (std::size_t i = 0; i < corners.size(); ++i) {
    if (framequilt::liesInside(gray, corners[i], patch, length)) {
      framequilt::describeInside(gray, corners[i], patch, scratch);
    } else {
      framequilt::plain::describeCorner(gray, corners[i], patch, scratch, length);
    }
    std::copy_n(scratch, length, descriptors + i * static_cast<std::size_t>(length));
  }
  return true;
}
