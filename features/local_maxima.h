// SPDX-License-Identifier: Apache-2.0
/// \file
/// Local maxima of a row of a response plane.
#pragma once

#include <cstddef>

namespace framequilt {

/// Marks with 1, and the others with 0, those of `count` pixels from `row` on that are above
/// `threshold` and equal the maximum of their 3 x 3 neighbourhood. Neighbours that are no number
/// count for nothing; a pixel that is none is no maximum.
///
/// \param row   The pixels next to those looked at, and the rows above and below, are read too.
/// \param cols  Distance of two rows in pixels.
void markLocalMaxima(const float* row, std::ptrdiff_t cols, std::ptrdiff_t count, float threshold,
                     unsigned char* marks);

}  // namespace framequilt
