// SPDX-License-Identifier: Apache-2.0
#include "features/descriptor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "interface/report.h"

namespace {

constexpr int kCellSide = 4;
constexpr int kBins = 8;
constexpr int kDegreesPerBin = 45;
constexpr double kPi = 3.141592653589793;

using Histogram = std::array<unsigned short, kBins>;

/// Angle of a gradient to the horizontal in whole degrees, 0..90; dx is not 0.
int steepness(float dx, float dy) {
  const float t = std::atan(std::fabs(dy / dx));
  return static_cast<int>(static_cast<float>(static_cast<double>(t) * 0.5 / kPi * 360.0));
}

/// Orientation of a gradient in whole degrees, 0..359. Rows grow downwards, so it turns clockwise
/// on screen.
int orientation(float dx, float dy) {
  if (dx == 0.0F) {
    if (dy == 0.0F) return 0;
    return dy > 0.0F ? 90 : 270;
  }
  const int degrees = steepness(dx, dy);
  if (dx > 0.0F) {
    if (dy > 0.0F) return degrees;
    return degrees == 0 ? 0 : 360 - degrees;
  }
  return dy > 0.0F ? 180 - degrees : degrees + 180;
}

/// A gray image that continues with one row of zeros.
class GrayImage {
 public:
  GrayImage(const unsigned char* pixels, int rows, int cols)
      : pixels_(pixels), rows_(rows), cols_(cols), size_(rows_ * cols_) {}

  /// Adds the gradient of a pixel to the histogram; one that has no two neighbours before it, or is
  /// the last of its column or row, adds nothing.
  void addGradient(std::ptrdiff_t row, std::ptrdiff_t col, Histogram& histogram) const {
    if (row < 2 || row >= rows_ - 1 || col < 2 || col >= cols_ - 1) return;
    const std::ptrdiff_t here = row * cols_ + col;
    const auto dx = static_cast<float>(at(here + 2) - at(here - 2));
    const auto dy = static_cast<float>(at(here + 2 * cols_) - at(here - 2 * cols_));
    const int magnitude = static_cast<int>(std::sqrt(dx * dx + dy * dy));
    auto& bin = histogram[static_cast<std::size_t>(orientation(dx, dy) / kDegreesPerBin)];
    bin = static_cast<unsigned short>(bin + magnitude);
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

/// Fills as much of `descriptor` as there are cells, column block by column block.
void describe(const GrayImage& image, SPoint corner, int patch, unsigned short* descriptor,
              int length) {
  const std::ptrdiff_t half = patch / 2;
  int filled = 0;
  for (auto dx = 1 - half; dx <= half; dx += kCellSide) {
    for (auto dy = 1 - half; dy <= half && filled < length; dy += kCellSide) {
      const Histogram cell = cellHistogram(image, corner.y + dy, corner.x + dx);
      const int kept = std::min(kBins, length - filled);
      std::copy_n(cell.begin(), kept, descriptor + filled);
      filled += kept;
    }
  }
}

}  // namespace

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

  const GrayImage gray(image, rows, cols);
  for (std::size_t i = 0; i < corners.size(); ++i) {
    describe(gray, corners[i], patch, scratch, length);
    std::copy_n(scratch, length, descriptors + i * static_cast<std::size_t>(length));
  }
  return true;
}
