// SPDX-License-Identifier: Apache-2.0
/// \file
/// Orientation bin and magnitude of a gradient between gray values.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace framequilt {

constexpr int kOrientationBins = 8;

struct GradientBin {
  int bin;        ///< 0..7, of 45 degrees each.
  int magnitude;  ///< Euclidean, cut to a whole number: 0..360.
};

namespace plain {

/// The definition, in single precision. Rows grow downwards, so angles turn clockwise on screen.
GradientBin gradientBin(int dx, int dy);

}  // namespace plain

/// plain::gradientBin for each gradient there is between bytes, -255..255 both ways. Half a
/// megabyte.
class GradientTable {
 public:
  /// Made by the first call. From any thread.
  static const GradientTable& shared();

  GradientTable();

  GradientBin operator()(int dx, int dy) const {
    const std::uint16_t found = entry(dx, dy);
    return {binOf(found), magnitudeOf(found)};
  }

  /// Both in one number.
  std::uint16_t entry(int dx, int dy) const { return entries_[index(dx, dy)]; }
  static int binOf(std::uint16_t entry) { return entry % kOrientationBins; }
  static int magnitudeOf(std::uint16_t entry) { return entry / kOrientationBins; }

 private:
  static constexpr int kLargest = 255;
  static constexpr std::size_t kRowLength = 512;

  static std::size_t index(int dx, int dy) {
    return static_cast<std::size_t>(dy + kLargest) * kRowLength +
           static_cast<std::size_t>(dx + kLargest);
  }

  /// magnitude * kOrientationBins + bin; rows of dy, columns of dx.
  std::array<std::uint16_t, std::size_t{2 * kLargest + 1} * kRowLength> entries_;
};

}  // namespace framequilt
