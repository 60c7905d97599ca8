// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <vector>

namespace framequilt::tool {

/// The smallest of the values, at least one and in rising order, that `percent` (1 to 100) of them
/// do not exceed.
inline double nearestRank(const std::vector<double>& sorted, std::size_t percent) {
  return sorted[(sorted.size() * percent + 99) / 100 - 1];
}

}  // namespace framequilt::tool
