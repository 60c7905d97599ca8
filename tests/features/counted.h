// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <numeric>
#include <vector>

/// 0, 1, 2, ...: the indices of a list before it is sorted.
inline std::vector<int> counted(std::size_t count) {
  std::vector<int> index(count);
  std::iota(index.begin(), index.end(), 0);
  return index;
}
