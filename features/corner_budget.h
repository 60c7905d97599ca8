// SPDX-License-Identifier: Apache-2.0
/// \file
/// How many corners a run looks for in each image.
#pragma once

#include "imaging/pixel_math.h"

namespace framequilt {

/// Corners wanted, from the budget and the scale of the run: 181 for 1 and 1. 32-bit arithmetic.
constexpr int wantedCorners(int budget, int scale) noexcept {
  return product32(sum32(budget, 8), difference32(580, product32(80, scale))) / 16 - 100;
}

/// The cap on candidates that are spread out.
constexpr int candidateCap(int wanted) noexcept { return product32(7, wanted); }

}  // namespace framequilt
