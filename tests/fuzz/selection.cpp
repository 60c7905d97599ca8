// SPDX-License-Identifier: Apache-2.0
// From a response to a corner list: maxima, the cut to the strongest, the spread, and the quicksort
// that decides between equal ones, against loops over single candidates.
#include "features/selection.h"

#include <cmath>
#include <iterator>
#include <stdexcept>

#include "features/descending_order.h"
#include "features/local_maxima.h"
#include "features/plain.h"
#include "features/quicksort.h"
#include "imaging/pixel_math.h"
#include "tests/features/counted.h"
#include "tests/features/plain_sort.h"
#include "tests/fuzz/input_bytes.h"
#include "tests/fuzz/levels.h"
#include "tests/fuzz/target.h"

namespace {

using framequilt::fuzz::InputBytes;
using framequilt::fuzz::same;
using Values = std::vector<float>;
using Indices = std::vector<int>;
using Points = std::vector<SPoint>;

std::size_t place(int index) { return static_cast<std::size_t>(index); }

bool samePoints(const Points& a, const Points& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](SPoint p, SPoint q) { return p.x == q.x && p.y == q.y; });
}

bool anyNan(Values::const_iterator begin, Values::const_iterator end) {
  return std::any_of(begin, end, [](float value) { return std::isnan(value); });
}

/// The whole list sorted by definition; one with a NaN in it stays.
Indices plainOrder(Values& keys) {
  Indices order = counted(keys.size());
  if (!anyNan(keys.begin(), keys.end())) {
    plainSort(keys, order, 0, static_cast<int>(keys.size()) - 1);
  }
  return order;
}

void checkSort(InputBytes& in) {
  Values keys = in.numbers(place(in.between(0, 90)));
  Indices index = counted(keys.size());
  const int last = static_cast<int>(keys.size()) - 1;
  const bool whole = in.byte() < 200;
  const int low = whole ? 0 : in.between(-1, 90);
  const int high = whole ? last : in.between(-1, 90);
  const bool sorts = low >= 0 && low < high && high <= last &&
                     !anyNan(keys.begin() + low, keys.begin() + high + 1);
  Values expected = keys;
  Indices expectedIndex = index;
  if (sorts) plainSort(expected, expectedIndex, low, high);
  qsort(keys, index, low, high);
  FRAMEQUILT_HOLDS(same(keys, expected));
  FRAMEQUILT_HOLDS(index == expectedIndex);
}

void checkSortFirst(InputBytes& in) {
  const Values keys = in.numbers(place(in.between(0, 90)));
  const int count = static_cast<int>(keys.size());
  const int wanted = in.between(-1, count + 1);
  Values expected = keys;
  const Indices expectedIndex = plainOrder(expected);
  Values first = keys;
  Indices index = counted(keys.size());
  framequilt::sortFirst(first, index, wanted);
  for (int k = 0; k < count; ++k) {
    FRAMEQUILT_HOLDS(same(first[place(k)], keys[place(index[place(k)])]));
    if (k >= wanted) continue;
    FRAMEQUILT_HOLDS(same(first[place(k)], expected[place(k)]));
    FRAMEQUILT_HOLDS(index[place(k)] == expectedIndex[place(k)]);
  }
  std::sort(index.begin(), index.end());
  FRAMEQUILT_HOLDS(index == counted(keys.size()));
}

void checkDescendingOrder(InputBytes& in) {
  Values values = in.numbers(place(in.between(0, 90)));
  for (float& value : values) value = std::isnan(value) ? 1.0F : value;
  const Indices order = framequilt::descendingOrder(values);
  FRAMEQUILT_HOLDS(order.size() == values.size());
  for (std::size_t k = 1; k < order.size(); ++k) {
    const float before = values[place(order[k - 1])];
    const float here = values[place(order[k])];
    FRAMEQUILT_HOLDS(before >= here);
    FRAMEQUILT_HOLDS(!same(before, here) || order[k - 1] < order[k]);
  }
}

struct Candidates {
  Values values;
  Points points;
};

Candidates takeCandidates(InputBytes& in) {
  Candidates list;
  list.values = in.numbers(place(in.between(0, 60)));
  const int longer = in.byte() < 240 ? 0 : in.between(-2, 2);
  const bool anywhere = in.byte() >= 240;
  const int side = in.between(1, 500);
  const int count = std::max(0, static_cast<int>(list.values.size()) + longer);
  for (int k = 0; k < count; ++k) {
    list.points.push_back(anywhere ? SPoint{in.anyInt(), in.anyInt()}
                                   : SPoint{in.between(0, side), in.between(0, side)});
  }
  return list;
}

void checkFirstCut(InputBytes& in) {
  Candidates list = takeCandidates(in);
  // Fewer points than values are for the caller to avoid, where they are cut.
  list.points.resize(std::max(list.points.size(), list.values.size()));
  const int candidates = static_cast<int>(list.values.size());
  const int wanted = in.between(-1, 70);
  const int cap = in.between(0, 70);
  Candidates expected = list;
  if (candidates > cap) {
    Values keys = list.values;
    const Indices order = plainOrder(keys);
    expected = {};
    for (int k = 0; k < cap; ++k) {
      expected.values.push_back(list.values[place(order[place(k)])]);
      expected.points.push_back(list.points[place(order[place(k)])]);
    }
  }
  const bool refused = list.values.empty() || list.points.empty();
  int count = 4711;
  const bool done = goToFirstGetRidOfSomeSPoints(list.values, list.points, wanted, cap, in.anyInt(),
                                                 in.anyInt(), count);
  FRAMEQUILT_HOLDS(done == (!refused && !expected.values.empty()));
  FRAMEQUILT_HOLDS(count == (refused ? 4711 : std::min(candidates, wanted)));
  if (refused) return;
  FRAMEQUILT_HOLDS(same(list.values, expected.values));
  FRAMEQUILT_HOLDS(samePoints(list.points, expected.points));
}

/// What the second cut leaves, by radii of single candidates and the whole sort.
bool spreadPlainly(const Candidates& list, int count, int factor, float robust, Points& out) {
  if (list.values.empty() || list.points.empty()) return false;
  if (static_cast<int>(list.points.size()) < count) {
    out = list.points;
    return true;
  }
  Values radii = framequilt::plain::suppressionRadii(list.values, list.points, robust);
  const Indices order = plainOrder(radii);
  for (int k = 0; k < count; ++k) {
    const SPoint point = list.points[place(order[place(k)])];
    out.push_back(factor == 1 ? point
                              : SPoint{framequilt::product32(point.x, factor),
                                       framequilt::product32(point.y, factor)});
  }
  return !out.empty();
}

void checkSecondCut(InputBytes& in) {
  const Candidates list = takeCandidates(in);
  const int count = in.between(-1, 65);
  const int factor = in.byte() < 200 ? 2 : in.anyInt();
  const float robust = in.byte() < 200 ? 0.5F : in.number();
  const auto run = [&](auto cut, Points& out) {
    try {
      return cut(out) ? 1 : 0;
    } catch (const std::out_of_range&) {
      return 2;
    }
  };
  Points expected;
  const int how =
      run([&](Points& out) { return spreadPlainly(list, count, factor, robust, out); }, expected);
  framequilt::fuzz::atEachLevel([&] {
    Points found;
    FRAMEQUILT_HOLDS(run(
                         [&](Points& out) {
                           return goToSecondGetRidOfSomeSPoints(list.values, list.points, count,
                                                                factor, robust, out);
                         },
                         found) == how);
    FRAMEQUILT_HOLDS(samePoints(found, expected));
  });
}

/// The definition, a pixel at a time.
bool isMaximum(const float* pixel, int cols, float threshold) {
  float maximum = *pixel;
  for (const float* row : {pixel - cols, pixel, pixel + cols}) {
    maximum = std::max({maximum, row[-1], row[0], row[1]});
  }
  return maximum > threshold && maximum == *pixel;
}

void checkRowOfMaxima(InputBytes& in) {
  const int count = in.between(0, 80);
  const int cols = count + 2;
  const Values plane = in.numbers(place(3 * cols));
  const float threshold = in.number();
  const float* const row = plane.data() + cols + 1;
  std::vector<unsigned char> expected(place(count) + 1, 171);
  for (int c = 0; c < count; ++c) expected[place(c)] = isMaximum(row + c, cols, threshold) ? 1 : 0;
  framequilt::fuzz::atEachLevel([&] {
    std::vector<unsigned char> marks(expected.size(), 171);
    framequilt::markLocalMaxima(row, cols, count, threshold, marks.data());
    FRAMEQUILT_HOLDS(marks == expected);
  });
}

void checkPlaneOfMaxima(InputBytes& in) {
  const int rows = in.between(38, 46);
  const int cols = in.between(38, 60);
  const std::vector<unsigned char> tones = in.image(place(rows * cols));
  Values plane(tones.begin(), tones.end());
  for (int odd = in.between(0, 20); odd > 0; --odd) plane[in.word() % plane.size()] = in.number();
  const float threshold = in.number();
  Candidates expected;
  for (int r = 20; r < rows - 20; ++r) {
    for (int c = 20; c < cols - 20; ++c) {
      const float* const pixel = plane.data() + r * cols + c;
      if (!isMaximum(pixel, cols, threshold)) continue;
      expected.values.push_back(*pixel);
      expected.points.push_back({c, r});
    }
  }
  framequilt::fuzz::atEachLevel([&] {
    Candidates found;
    FRAMEQUILT_HOLDS(responseValueMaxSuppression(plane.data(), threshold, rows, cols, found.values,
                                                 found.points));
    FRAMEQUILT_HOLDS(same(found.values, expected.values));
    FRAMEQUILT_HOLDS(samePoints(found.points, expected.points));
  });
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  framequilt::fuzz::silenceReports();
  InputBytes in(data, size);
  using Check = void (*)(InputBytes&);
  static constexpr Check kChecks[] = {
      &checkSort,      &checkSortFirst,   &checkDescendingOrder, &checkFirstCut,
      &checkSecondCut, &checkRowOfMaxima, &checkPlaneOfMaxima,
  };
  kChecks[in.byte() % std::size(kChecks)](in);
  return 0;
}
