// SPDX-License-Identifier: Apache-2.0
/// \file
/// Matching with the distances to many descriptors of A side by side.
#pragma once

#include <vector>

#include "features/plain.h"
#include "framequilt/records.h"

namespace framequilt {

/// No difference of the two sets has a square beyond 31 bits. Single precision then squares as
/// whole numbers do that are rounded afterwards.
bool suitsLanes(const DescriptorSets& sets);

/// The same as plain::matchDescriptors, for sets that suit. `dist` ends up with the same distances,
/// those of the last descriptor of B.
void matchInLanes(const DescriptorSets& sets, float* dist, float ratio,
                  std::vector<SPoint>& matches);

}  // namespace framequilt
