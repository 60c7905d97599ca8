// SPDX-License-Identifier: Apache-2.0
/// \file
/// The quicksort that decides the order of equal keys.
#pragma once

#include <vector>

namespace framequilt {

/// As the exported `qsort` on the whole of two lists of one length, but only the `wanted` first
/// places hold what they would after it; what else there is follows in any order. Lists with a NaN
/// among the keys stay as they are.
void sortFirst(std::vector<float>& keys, std::vector<int>& index, int wanted);

}  // namespace framequilt
