// SPDX-License-Identifier: Apache-2.0
/// \file
/// Squared distances from candidates to the nearest clearly stronger one, many side by side.
#pragma once

#include <vector>

#include "framequilt/records.h"

namespace framequilt {

/// Values and factor are finite and the factor is not negative, so that the stronger ones of a
/// candidate are the first few in the order of strength; and squared distances stay below 2^31.
bool suitRadiusLanes(const std::vector<float>& values, const std::vector<SPoint>& points,
                     float robust);

/// The same as plain::suppressionRadii, for candidates that suit.
std::vector<float> suppressionRadiiInLanes(const std::vector<float>& values,
                                           const std::vector<SPoint>& points, float robust);

}  // namespace framequilt
