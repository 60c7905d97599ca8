// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

namespace framequilt {

/// Places of the values, the largest first, equal ones in their order, except that -0 may
/// count as below +0. Takes a few passes (radix sort). Not for NaN.
std::vector<int> descendingOrder(const std::vector<float>& values);

}  // namespace framequilt
