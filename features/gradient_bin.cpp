// SPDX-License-Identifier: Apache-2.0
#include "features/gradient_bin.h"

#include <cmath>

namespace framequilt {
namespace {

constexpr int kDegreesPerBin = 45;
constexpr double kPi = 3.141592653589793;

/// Angle of a gradient to the horizontal in whole degrees, 0..90; dx is not 0.
int steepness(float dx, float dy) {
  const float t = std::atan(std::fabs(dy / dx));
  return static_cast<int>(static_cast<float>(static_cast<double>(t) * 0.5 / kPi * 360.0));
}

/// Orientation of a gradient in whole degrees, 0..359; `degrees` is its steepness, for a dx of 0
/// anything.
int orientation(int dx, int dy, int degrees) {
  if (dx == 0) {
    if (dy == 0) return 0;
    return dy > 0 ? 90 : 270;
  }
  if (dx > 0) {
    if (dy > 0) return degrees;
    return degrees == 0 ? 0 : 360 - degrees;
  }
  return dy > 0 ? 180 - degrees : degrees + 180;
}

int magnitude(float dx, float dy) { return static_cast<int>(std::sqrt(dx * dx + dy * dy)); }

}  // namespace

GradientBin plain::gradientBin(int dx, int dy) {
  const auto x = static_cast<float>(dx);
  const auto y = static_cast<float>(dy);
  const int degrees = dx == 0 ? 0 : steepness(x, y);
  return {orientation(dx, dy, degrees) / kDegreesPerBin, magnitude(x, y)};
}

GradientTable::GradientTable() : entries_{} {
  // Steepness and magnitude have no sign: one quadrant is computed, four are filled.
  for (int dy = 0; dy <= kLargest; ++dy) {
    for (int dx = 0; dx <= kLargest; ++dx) {
      const auto x = static_cast<float>(dx);
      const auto y = static_cast<float>(dy);
      const int degrees = dx == 0 ? 0 : steepness(x, y);
      const int length = magnitude(x, y);
      for (const int signedX : {dx, -dx}) {
        for (const int signedY : {dy, -dy}) {
          const int bin = orientation(signedX, signedY, degrees) / kDegreesPerBin;
          entries_[index(signedX, signedY)] =
              static_cast<std::uint16_t>(length * kOrientationBins + bin);
        }
      }
    }
  }
}

const GradientTable& GradientTable::shared() {
  static const GradientTable& table = *new GradientTable;
  return table;
}

}  // namespace framequilt
