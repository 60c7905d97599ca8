// SPDX-License-Identifier: Apache-2.0
#include "features/selection.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <numeric>
#include <utility>

#include "features/local_maxima.h"
#include "imaging/pixel_math.h"
#include "interface/report.h"

namespace {

using framequilt::difference32;
using framequilt::product32;
using framequilt::rowStart;

/// No candidate lies closer than this to an edge of the response plane.
constexpr int kMargin = 20;
/// Cap of the squared radius, in pixels of the response plane.
constexpr int kLargestRadius = 65535;

/// The first mark from `from` on, null when there is none.
const unsigned char* nextMark(const unsigned char* from, const unsigned char* end) {
  return static_cast<const unsigned char*>(
      std::memchr(from, 1, static_cast<std::size_t>(end - from)));
}

bool refuseEmpty(const std::vector<float>& values, const std::vector<SPoint>& points) {
  if (!values.empty() && !points.empty()) return false;
  framequilt::report("goToGetRidOfSomeSPoints CornervalueIn size is 0");
  return true;
}

int squaredDistance(SPoint a, SPoint b) {
  const int dx = difference32(a.x, b.x);
  const int dy = difference32(a.y, b.y);
  return framequilt::sum32(product32(dx, dx), product32(dy, dy));
}

/// Squared distance from candidate `i` to the nearest clearly stronger one.
float suppressionRadius(const std::vector<float>& values, const std::vector<SPoint>& points,
                        std::size_t i, float robust) {
  int radius = kLargestRadius;
  for (std::size_t j = 0; j < points.size(); ++j) {
    if (values.at(j) * robust > values.at(i)) {
      radius = std::min(radius, squaredDistance(points[i], points[j]));
    }
  }
  return static_cast<float>(radius);
}

/// Keys and their indices, and the moves that the quicksort makes on both.
class SortRange {
 public:
  SortRange(std::vector<float>& keys, std::vector<int>& index)
      : keys_(keys.data()), index_(index.data()) {}

  void sort(int low, int high) {
    while (low < high) {
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
};

bool sortable(const std::vector<float>& keys, const std::vector<int>& index, int low, int high) {
  if (low >= high || low < 0) return false;
  const auto end = static_cast<std::size_t>(high) + 1;
  return end <= keys.size() && end <= index.size() &&
         std::none_of(keys.begin() + low, keys.begin() + high + 1,
                      [](float key) { return std::isnan(key); });
}

std::vector<int> countedIndices(std::size_t count) {
  std::vector<int> index(count);
  std::iota(index.begin(), index.end(), 0);
  return index;
}

}  // namespace

bool responseValueMaxSuppression(float* response, float threshold, int rows, int cols,
                                 std::vector<float>& values, std::vector<SPoint>& points) {
  if (response == nullptr) {
    framequilt::report("responseValueMaxSuppression ptr is null");
    return false;
  }
  if (rows <= 2 * kMargin || cols <= 2 * kMargin) return true;
  const std::ptrdiff_t width = std::ptrdiff_t{cols} - 2 * kMargin;
  std::vector<unsigned char> marks(static_cast<std::size_t>(width));
  for (int r = kMargin; r < rows - kMargin; ++r) {
    const float* const row = response + rowStart(r, cols) + kMargin;
    framequilt::markLocalMaxima(row, cols, width, threshold, marks.data());
    const unsigned char* const end = marks.data() + width;
    for (const unsigned char* mark = marks.data(); (mark = nextMark(mark, end)) != nullptr;
         ++mark) {
      const std::ptrdiff_t c = mark - marks.data();
      values.push_back(row[c]);
      points.push_back({kMargin + static_cast<int>(c), r});
    }
  }
  return true;
}

bool goToFirstGetRidOfSomeSPoints(std::vector<float>& values, std::vector<SPoint>& points,
                                  int wanted, int cap, int /*scale*/, int /*pvalue*/, int& count) {
  if (refuseEmpty(values, points)) return false;
  const int candidates = static_cast<int>(values.size());
  // Before the cut, also when more are wanted than the cut will leave.
  count = std::min(candidates, wanted);
  if (candidates <= cap) return true;

  std::vector<float> keys = values;
  std::vector<int> index = countedIndices(values.size());
  qsort(keys, index, 0, candidates - 1);

  std::vector<float> strongest;
  std::vector<SPoint> places;
  for (int k = 0; k < cap; ++k) {
    const auto from = static_cast<std::size_t>(index[static_cast<std::size_t>(k)]);
    strongest.push_back(values.at(from));
    places.push_back(points.at(from));
  }
  values = std::move(strongest);
  points = std::move(places);
  return !values.empty();
}

bool goToSecondGetRidOfSomeSPoints(std::vector<float> values, std::vector<SPoint> points, int count,
                                   int factor, float robust, std::vector<SPoint>& out) {
  if (refuseEmpty(values, points)) return false;
  const int candidates = static_cast<int>(points.size());
  if (candidates < count) {
    // Handed over in pixels of the reduced image: the factor is not applied here.
    out = std::move(points);
    return true;
  }

  float maximum = 0.0F;
  fidMax(values, maximum);
  const float threshold = maximum * robust;
  std::vector<float> radii(points.size());
  for (std::size_t i = 0; i < points.size(); ++i) {
    radii[i] = values.at(i) > threshold ? static_cast<float>(kLargestRadius)
                                        : suppressionRadius(values, points, i, robust);
  }
  std::vector<int> index = countedIndices(points.size());
  qsort(radii, index, 0, candidates - 1);

  for (int k = 0; k < count; ++k) {
    const auto place = static_cast<std::size_t>(k);
    out.push_back(points[static_cast<std::size_t>(index[place])]);
    if (factor != 1) {
      out[place] = {product32(out[place].x, factor), product32(out[place].y, factor)};
    }
  }
  return !out.empty();
}

bool fidMax(std::vector<float> values, float& maxValue) {
  if (values.empty()) {
    framequilt::report("CornervalueIn size is 0");
    return false;
  }
  maxValue = 0.0F;
  for (const float value : values) {
    if (value >= maxValue) maxValue = value;
  }
  return true;
}

void qsort(std::vector<float>& keys, std::vector<int>& index, int low, int high) {
  if (sortable(keys, index, low, high)) SortRange(keys, index).sort(low, high);
}
