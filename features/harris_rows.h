// SPDX-License-Identifier: Apache-2.0
/// \file
/// The Harris response of a plane in one pass over its rows: gradient products, both passes of the
/// smoothing and the response of a row are made from the rows above and below it while these are in
/// the cache. The result is that of the four steps in harris.cpp, bit for bit.
#pragma once

namespace framequilt {

/// What the response is computed with.
struct HarrisTuning {
  const float* kernel;  ///< `kHarrisTaps` weights of the smoothing.
  float k;
};

inline constexpr int kHarrisTaps = 5;

/// No response lies closer than this to an edge of the plane. The gradients and the taps of the
/// smoothing reach 3 pixels further out, so that borders have no part in it.
inline constexpr int kHarrisMargin = 20;

/// Fills `response` (rows x cols, packed) for the 8-bit plane `gray`, zeros where there is none.
/// \return The sum of the positive responses, added row by row in single precision.
float harrisResponse(const unsigned char* gray, int rows, int cols, const HarrisTuning& tuning,
                     float* response);

}  // namespace framequilt
