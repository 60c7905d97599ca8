// SPDX-License-Identifier: Apache-2.0
#include "features/descriptor_inside.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "features/gradient_bin.h"
#include "imaging/cpu_level.h"

namespace framequilt {
namespace {

/// Pixels around the patch that its gradients read.
constexpr std::ptrdiff_t kReach = 2;

/// Cells in a row or column of a patch.
std::ptrdiff_t cellsOf(std::ptrdiff_t patch) { return (patch / 2 * 2 + kCellSide - 1) / kCellSide; }

/// Cells whose histograms are made side by side.
constexpr std::ptrdiff_t kLanes = 32;
constexpr std::ptrdiff_t kPixels = std::ptrdiff_t{kCellSide} * kCellSide;

struct CellGradients {
  std::uint16_t entries[kPixels][kLanes] = {};  ///< Of the table of gradients.
};

struct CellHistograms {
  std::uint16_t bins[kOrientationBins][kLanes];
};

/// Eight passes over all pixels cost less than one that adds to bins in memory, where each addition
/// waits to know whether it follows one to the same bin.
template <int Bytes>
struct AddHistograms {
  typedef std::uint16_t Entries __attribute__((vector_size(Bytes)));
  static constexpr std::ptrdiff_t kWidth = Bytes / 2;
  static constexpr std::uint16_t kBinOfEntry = kOrientationBins - 1;
  static constexpr auto kMagnitudeOfEntry = static_cast<std::uint16_t>(~kBinOfEntry);

  FRAMEQUILT_ROUTINE void run(const CellGradients& gradients, CellHistograms& histograms) {
    for (std::ptrdiff_t lane = 0; lane < kLanes; lane += kWidth) {
      Entries entries[kPixels];
      for (std::ptrdiff_t pixel = 0; pixel < kPixels; ++pixel) {
        __builtin_memcpy(&entries[pixel], gradients.entries[pixel] + lane, sizeof(Entries));
      }
      for (std::uint16_t bin = 0; bin < kOrientationBins; ++bin) {
        Entries sums = {};
        for (const Entries& entry : entries) {
          const Entries belongs = (Entries)((entry & kBinOfEntry) == bin);
          // The magnitudes, still times the number of bins: they fit.
          sums += belongs & entry & kMagnitudeOfEntry;
        }
        sums /= kOrientationBins;
        __builtin_memcpy(histograms.bins[bin] + lane, &sums, sizeof(sums));
      }
    }
  }
};

/// The gradients of a cell's pixels, the first of which is `pixel`.
void lookUp(const unsigned char* pixel, std::ptrdiff_t cols, std::ptrdiff_t lane,
            CellGradients& gradients) {
  const GradientTable& table = GradientTable::shared();
  for (std::ptrdiff_t r = 0; r < kCellSide; ++r, pixel += cols) {
    for (std::ptrdiff_t c = 0; c < kCellSide; ++c) {
      const unsigned char* const here = pixel + c;
      gradients.entries[r * kCellSide + c][lane] =
          table.entry(here[kReach] - here[-kReach], here[kReach * cols] - here[-kReach * cols]);
    }
  }
}

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
  const std::ptrdiff_t side = cellsOf(patch);
  const std::ptrdiff_t cells = side * side;
  const unsigned char* const origin =
      image.pixels + (std::ptrdiff_t{corner.y} - patch / 2) * image.cols + corner.x - patch / 2;
  CellGradients gradients;
  CellHistograms histograms;
  for (std::ptrdiff_t first = 0; first < cells; first += kLanes) {
    const std::ptrdiff_t count = std::min(kLanes, cells - first);
    for (std::ptrdiff_t lane = 0; lane < count; ++lane) {
      const std::ptrdiff_t cell = first + lane;
      const unsigned char* const pixel =
          origin + cell % side * kCellSide * image.cols + cell / side * kCellSide;
      lookUp(pixel, image.cols, lane, gradients);
    }
    LeveledByWidth<AddHistograms>::call(gradients, histograms);
    unsigned short* bin = descriptor + first * kOrientationBins;
    for (std::ptrdiff_t lane = 0; lane < count; ++lane) {
      for (const auto& lanes : histograms.bins) *bin++ = lanes[lane];
    }
  }
}

}  // namespace framequilt
