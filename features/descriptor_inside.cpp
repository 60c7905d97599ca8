// SPDX-License-Identifier: Apache-2.0
#include "features/descriptor_inside.h"

#include <algorithm>
#include <cstddef>

#include "features/gradient_bin.h"

namespace framequilt {
namespace {

/// Pixels around the patch that its gradients read.
constexpr std::ptrdiff_t kReach = 2;

/// Cells in a row or column of a patch.
std::ptrdiff_t cellsOf(std::ptrdiff_t patch) { return (patch / 2 * 2 + kCellSide - 1) / kCellSide; }

}  // namespace

bool liesInside(const GrayView& image, SPoint corner, int patch, int length) {
  if (patch < 2) return false;
  const std::ptrdiff_t cells = cellsOf(patch);
  const std::ptrdiff_t row = std::ptrdiff_t{corner.y} - patch / 2;
  const std::ptrdiff_t col = std::ptrdiff_t{corner.x} - patch / 2;
  const std::ptrdiff_t side = cells * kCellSide;
  return row >= kReach && row + side + kReach <= image.rows && col >= kReach &&
         col + side + kReach <= image.cols && cells * cells * kOrientationBins <= length;
}

void describeInside(const GrayView& image, SPoint corner, int patch, unsigned short* descriptor) {
  const GradientTable& gradients = GradientTable::shared();
  const std::ptrdiff_t cols = image.cols;
  const std::ptrdiff_t cells = cellsOf(patch);
  const std::ptrdiff_t columnOfCells = cells * kOrientationBins;
  std::fill_n(descriptor, cells * columnOfCells, static_cast<unsigned short>(0));

  const unsigned char* row =
      image.pixels + (std::ptrdiff_t{corner.y} - patch / 2) * cols + corner.x - patch / 2;
  for (std::ptrdiff_t r = 0; r < cells * kCellSide; ++r, row += cols) {
    unsigned short* const histograms = descriptor + r / kCellSide * kOrientationBins;
    // From cell to cell, so that a bin is not added to again before it has been stored.
    for (std::ptrdiff_t c = 0; c < kCellSide; ++c) {
      for (std::ptrdiff_t cell = 0; cell < cells; ++cell) {
        const unsigned char* const pixel = row + cell * kCellSide + c;
        const GradientBin gradient =
            gradients(pixel[kReach] - pixel[-kReach], pixel[kReach * cols] - pixel[-kReach * cols]);
        unsigned short& bin = histograms[cell * columnOfCells + gradient.bin];
        bin = static_cast<unsigned short>(bin + gradient.magnitude);
      }
    }
  }
}

}  // namespace framequilt
