// SPDX-License-Identifier: Apache-2.0
#include "features/quicksort.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "features/selection.h"

namespace {

/// Keys and their indices, and the moves that the quicksort makes on both.
class SortRange {
 public:
  /// Places behind `last` need not be sorted.
  SortRange(std::vector<float>& keys, std::vector<int>& index, int last)
      : keys_(keys.data()), index_(index.data()), last_(last) {}

  void sort(int low, int high) {
    while (low < high && low <= last_) {
      low = skipSettled(low, high);
      if (ascends(low, high)) {
        reverse(low, high);
        return;
      }
      const int middle = partition(low, high);
      // The two sides do not touch each other, so the shorter one can go first: the stack stays
      // as deep as the logarithm of the range.
      if (middle - low < high - middle) {
        sort(low, middle - 1);
        low = middle + 1;
      } else {
        sort(middle + 1, high);
        high = middle - 1;
      }
    }
  }

 private:
  void move(int from, int to) {
    keys_[to] = keys_[from];
    index_[to] = index_[from];
  }

  /// Puts keys[low] where it belongs, greater keys before it and smaller ones behind; keys equal to
  /// it stay on the side where the scans find them. Returns its place.
  int partition(int low, int high) {
    const float pivot = keys_[low];
    const int pivotIndex = index_[low];
    int i = low;
    int j = high;
    while (i < j) {
      while (i < j && keys_[j] <= pivot) --j;
      move(j, i);
      while (i < j && keys_[i] >= pivot) ++i;
      move(i, j);
    }
    keys_[i] = pivot;
    index_[i] = pivotIndex;
    return i;
  }

  /// First place from which on partitioning changes anything: while the pivot is the maximum of its
  /// range, a pass moves nothing and goes on behind it.
  int skipSettled(int low, int high) const {
    int end = low;
    while (end < high && keys_[end] >= keys_[end + 1]) ++end;
    if (end == high) return high;
    // [low, end] descends, so each of its keys only has to hold against what follows `end`.
    const float rest = *std::max_element(keys_ + end + 1, keys_ + high + 1);
    while (low <= end && keys_[low] >= rest) ++low;
    return low;
  }

  bool ascends(int low, int high) const { return std::is_sorted(keys_ + low, keys_ + high + 1); }

  /// What the passes make of an ascending range: the pivot is the minimum and trades places with
  /// the last key, which then is a settled maximum; and so on inwards until the ends are equal.
  void reverse(int low, int high) {
    for (; low < high && keys_[low] < keys_[high]; ++low, --high) {
      std::swap(keys_[low], keys_[high]);
      std::swap(index_[low], index_[high]);
    }
  }

  float* keys_;
  int* index_;
  int last_;
};

bool sortable(const std::vector<float>& keys, const std::vector<int>& index, int low, int high) {
  if (low >= high || low < 0) return false;
  const auto end = static_cast<std::size_t>(high) + 1;
  return end <= keys.size() && end <= index.size() &&
         std::none_of(keys.begin() + low, keys.begin() + high + 1,
                      [](float key) { return std::isnan(key); });
}

}  // namespace

void framequilt::sortFirst(std::vector<float>& keys, std::vector<int>& index, int wanted) {
  const int high = static_cast<int>(keys.size()) - 1;
  if (sortable(keys, index, 0, high)) SortRange(keys, index, wanted - 1).sort(0, high);
}

void qsort(std::vector<float>& keys, std::vector<int>& index, int low, int high) {
  if (sortable(keys, index, low, high)) SortRange(keys, index, high).sort(low, high);
}
