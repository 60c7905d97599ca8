// SPDX-License-Identifier: Apache-2.0
/// \file
/// How many pairs of points each pair's offset explains.
#pragma once

#include <cstddef>
#include <vector>

#include "framequilt/records.h"

namespace framequilt {

/// Squared residual, in pixels, from which a pair no longer agrees. A residual below 4 is one whose
/// square is below 16 in single precision, too: the root of the largest number below 16 is below 4.
constexpr float kSquaredTolerance = 16.0F;

struct Winner {
  std::size_t pair;
  int votes;
};

/// The pair whose offset explains most pairs, of equal ones the earlier, and how many these are.
/// \param pointsA,pointsB  Of at least one pair; `pointsB` is no shorter than `pointsA`.
Winner mostVotedPair(const std::vector<SPoint>& pointsA, const std::vector<SPoint>& pointsB);

}  // namespace framequilt
