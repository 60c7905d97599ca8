// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <vector>

/// The sort as it is defined: a hole that moves, the first element as pivot, no shortcuts.
inline void plainSort(std::vector<float>& keys, std::vector<int>& index, int low, int high) {
  if (low >= high) return;
  const auto at = [](int place) { return static_cast<std::size_t>(place); };
  const float pivot = keys[at(low)];
  const int pivotIndex = index[at(low)];
  int i = low;
  int j = high;
  while (i < j) {
    while (i < j && keys[at(j)] <= pivot) j = j - 1;
    keys[at(i)] = keys[at(j)];
    index[at(i)] = index[at(j)];
    while (i < j && keys[at(i)] >= pivot) i = i + 1;
    keys[at(j)] = keys[at(i)];
    index[at(j)] = index[at(i)];
  }
  keys[at(i)] = pivot;
  index[at(i)] = pivotIndex;
  plainSort(keys, index, low, i - 1);
  plainSort(keys, index, i + 1, high);
}
