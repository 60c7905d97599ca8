// SPDX-License-Identifier: Apache-2.0
#include "features/selection.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <numeric>
#include <utility>

#include "features/descending_order.h"
#include "features/local_maxima.h"
#include "features/plain.h"
#include "features/quicksort.h"
#include "features/suppression_radius.h"
#include "imaging/pixel_math.h"
#include "interface/report.h"

namespace {

using framequilt::difference32;
using framequilt::product32;
using framequilt::rowStart;

/// No candidate lies closer than this to an edge of the response plane.
constexpr int kMargin = 20;
constexpr int kBothMargins = 2 * kMargin;

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
  int radius = static_cast<int>(framequilt::kLargestRadius);
  for (std::size_t j = 0; j < points.size(); ++j) {
    if (values.at(j) * robust > values.at(i)) {
      radius = std::min(radius, squaredDistance(points[i], points[j]));
    }
  }
  return static_cast<float>(radius);
}

float largestOf(const std::vector<float>& values) {
  float largest = 0.0F;
  for (const float value : values) {
    if (value >= largest) largest = value;
  }
  return largest;
}

std::vector<int> countedIndices(std::size_t count) {
  std::vector<int> index(count);
  std::iota(index.begin(), index.end(), 0);
  return index;
}

/// The `wanted` strongest, strongest first, equal ones in the order of the quicksort; further ones
/// may follow.
std::vector<int> strongestFirst(const std::vector<float>& values, int wanted) {
  // Without equal ones there is but one order. A value that is no number keeps everything in place.
  const bool ordered =
      std::none_of(values.begin(), values.end(), [](float value) { return std::isnan(value); });
  if (ordered) {
    std::vector<int> order = framequilt::descendingOrder(values);
    const auto end = order.begin() + std::clamp(wanted + 1, 0, static_cast<int>(order.size()));
    const auto tie = std::adjacent_find(order.begin(), end, [&](int a, int b) {
      return values[static_cast<std::size_t>(a)] == values[static_cast<std::size_t>(b)];
    });
    if (tie == end) return order;
  }
  std::vector<float> keys = values;
  std::vector<int> index = countedIndices(values.size());
  framequilt::sortFirst(keys, index, wanted);
  return index;
}

}  // namespace

std::vector<float> framequilt::plain::suppressionRadii(const std::vector<float>& values,
                                                       const std::vector<SPoint>& points,
                                                       float robust) {
  const float threshold = largestOf(values) * robust;
  std::vector<float> radii(points.size());
  for (std::size_t i = 0; i < points.size(); ++i) {
    radii[i] =
        values.at(i) > threshold ? kLargestRadius : suppressionRadius(values, points, i, robust);
  }
  return radii;
}

bool responseValueMaxSuppression(float* response, float threshold, int rows, int cols,
                                 std::vector<float>& values, std::vector<SPoint>& points) {
  if (response == nullptr) {
    framequilt::report("responseValueMaxSuppression ptr is null");
    return false;
  }
  if (rows <= kBothMargins || cols <= kBothMargins) return true;
  const std::ptrdiff_t width = std::ptrdiff_t{cols} - kBothMargins;
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

  const std::vector<int> order = strongestFirst(values, cap);
  std::vector<float> strongest;
  std::vector<SPoint> places;
  for (int k = 0; k < cap; ++k) {
    const auto from = static_cast<std::size_t>(order[static_cast<std::size_t>(k)]);
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

  std::vector<float> radii = framequilt::suitRadiusLanes(values, points, robust)
                                 ? framequilt::suppressionRadiiInLanes(values, points, robust)
                                 : framequilt::plain::suppressionRadii(values, points, robust);
  std::vector<int> index = countedIndices(points.size());
  framequilt::sortFirst(radii, index, count);

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
  maxValue = largestOf(values);
  return true;
}
