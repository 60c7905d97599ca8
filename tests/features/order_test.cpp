// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <stdexcept>
#include <vector>

#include "features/descending_order.h"
#include "features/plain.h"
#include "features/quicksort.h"
#include "features/selection.h"
#include "tests/features/counted.h"
#include "tests/support/each_level.h"
#include "tests/support/points.h"
#include "tests/support/random_images.h"

namespace {

using Values = std::vector<float>;
using Indices = std::vector<int>;

Values randomValues(Random& random, int count, int lowest, int highest) {
  Values values;
  for (int k = 0; k < count; ++k) {
    values.push_back(static_cast<float>(random.between(lowest, highest)));
  }
  return values;
}

Indices stableOrder(const Values& values) {
  Indices order = counted(values.size());
  std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
    return values[static_cast<std::size_t>(a)] > values[static_cast<std::size_t>(b)];
  });
  return order;
}

TEST(DescendingOrder, IsThatOfAStableSort) {
  EXPECT_TRUE(framequilt::descendingOrder({}).empty());
  for (unsigned seed = 1; seed <= 100; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    const int span = 1 << random.between(0, 24);
    Values values = randomValues(random, random.between(1, 400), -span, span);
    for (float& value : values) value *= seed % 2 == 0 ? 1.0F : 1e-30F;
    EXPECT_EQ(framequilt::descendingOrder(values), stableOrder(values));
    std::sort(values.rbegin(), values.rend());
    EXPECT_EQ(framequilt::descendingOrder(values), stableOrder(values));
  }
}

TEST(DescendingOrder, TakesEndlessAndTinyValues) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  const Values values = {1e-45F, -kInfinity, 0.0F, kInfinity, -1e-45F, 3e38F, -3e38F};
  EXPECT_EQ(framequilt::descendingOrder(values), (Indices{3, 5, 0, 2, 4, 6, 1}));
}

/// The first places of both lists, and everything at its end in any order.
void expectFirstLikeWholeSort(const Values& keys, int wanted) {
  Values whole = keys;
  Indices wholeIndex = counted(keys.size());
  qsort(whole, wholeIndex, 0, static_cast<int>(keys.size()) - 1);
  Values first = keys;
  Indices firstIndex = counted(keys.size());
  framequilt::sortFirst(first, firstIndex, wanted);
  const auto count = std::clamp(wanted, 0, static_cast<int>(keys.size()));
  EXPECT_TRUE(std::equal(first.begin(), first.begin() + count, whole.begin()));
  EXPECT_TRUE(std::equal(firstIndex.begin(), firstIndex.begin() + count, wholeIndex.begin()));
  for (std::size_t k = 0; k < keys.size(); ++k) {
    EXPECT_EQ(first[k], keys[static_cast<std::size_t>(firstIndex[k])]);
  }
  std::sort(firstIndex.begin(), firstIndex.end());
  EXPECT_EQ(firstIndex, counted(keys.size()));
}

TEST(SortFirst, FirstPlacesAreThoseOfTheWholeSort) {
  for (unsigned seed = 1; seed <= 60; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    const int count = random.between(0, 90);
    Values keys = randomValues(random, count, 0, random.between(1, 60));
    if (seed % 5 == 0) std::sort(keys.begin(), keys.end());
    if (seed % 5 == 1) std::sort(keys.rbegin(), keys.rend());
    for (int wanted = -1; wanted <= count + 1; ++wanted) expectFirstLikeWholeSort(keys, wanted);
  }
}

TEST(SortFirst, NotANumberKeepsAllInPlace) {
  Values keys = {1, std::numeric_limits<float>::quiet_NaN(), 3};
  Indices index = counted(3);
  framequilt::sortFirst(keys, index, 3);
  EXPECT_EQ(index, counted(3));
}

struct Candidates {
  Values values;
  Points points;

  explicit Candidates(const Values& list) : values(list) {
    for (int k = 0; k < static_cast<int>(list.size()); ++k) points.push_back({k, -k});
  }
};

/// What the first cut leaves, by the whole sort.
Indices strongestByWholeSort(Values keys, int cap) {
  Indices index = counted(keys.size());
  qsort(keys, index, 0, static_cast<int>(keys.size()) - 1);
  index.resize(static_cast<std::size_t>(cap));
  return index;
}

TEST(FirstCutOrder, IsThatOfTheWholeSort) {
  int ofDistinct = 0;
  for (unsigned seed = 1; seed <= 200; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    const int count = random.between(2, 300);
    const int span = seed % 2 == 0 ? 1 << 23 : random.between(1, 200);
    Values values = randomValues(random, count, -1, span);
    if (seed % 10 == 3) values.back() = std::numeric_limits<float>::quiet_NaN();
    if (seed % 10 == 5) values.front() = -0.0F;
    const int cap = random.between(1, count - 1);
    const Indices expected = strongestByWholeSort(values, cap);
    ofDistinct += seed % 2 == 0 ? 1 : 0;
    Candidates list(values);
    int wanted = 0;
    EXPECT_TRUE(goToFirstGetRidOfSomeSPoints(list.values, list.points, 9, cap, 1, 1, wanted));
    Indices left;
    for (const SPoint point : list.points) left.push_back(point.x);
    EXPECT_EQ(left, expected);
    EXPECT_EQ(list.values.size(), expected.size());
  }
  EXPECT_EQ(ofDistinct, 100);
}

TEST(FirstCutOrder, TieAcrossTheCutIsDecidedByTheQuicksort) {
  // The smallest trades places with the last before the equal ones are looked at.
  Candidates list({1, 7, 5, 5});
  int wanted = 0;
  EXPECT_TRUE(goToFirstGetRidOfSomeSPoints(list.values, list.points, 9, 2, 1, 1, wanted));
  const Indices expected = strongestByWholeSort({1, 7, 5, 5}, 2);
  EXPECT_EQ(expected, (Indices{1, 3}));
  EXPECT_EQ(list.points, (Points{{1, -1}, {3, -3}}));
}

TEST(FirstCutOrder, MorePointsOrFewerThanValues) {
  Candidates list({4, 9, 6});
  list.points.push_back({50, 50});
  int wanted = 0;
  EXPECT_TRUE(goToFirstGetRidOfSomeSPoints(list.values, list.points, 9, 2, 1, 1, wanted));
  EXPECT_EQ(list.points, (Points{{1, -1}, {2, -2}}));
  Candidates few({4, 9, 6});
  few.points.resize(1);
  EXPECT_THROW(goToFirstGetRidOfSomeSPoints(few.values, few.points, 9, 2, 1, 1, wanted),
               std::out_of_range);
}

TEST(SecondCutOrder, IsThatOfPlainRadiiAndTheWholeSort) {
  for (unsigned seed = 1; seed <= 60; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    const int count = random.between(2, 400);
    Values values = randomValues(random, count, 1, random.between(2, 3000));
    // Values and places that the fast search is not made for, now and then.
    if (seed % 6 == 1) values.back() = std::numeric_limits<float>::infinity();
    if (seed % 6 == 2) values.back() = std::numeric_limits<float>::quiet_NaN();
    Points points;
    const int side = seed % 6 == 3 ? 200000 : random.between(5, 500);
    for (int k = 0; k < count; ++k) {
      points.push_back({random.between(0, side), random.between(0, side)});
    }
    const int wanted = random.between(1, count);
    Values radii = framequilt::plain::suppressionRadii(values, points, 0.5F);
    Points expected;
    Indices order = counted(points.size());
    qsort(radii, order, 0, count - 1);
    for (int k = 0; k < wanted; ++k) {
      const SPoint point = points[static_cast<std::size_t>(order[static_cast<std::size_t>(k)])];
      expected.push_back({2 * point.x, 2 * point.y});
    }
    atEachLevel([&] {
      Points out;
      EXPECT_TRUE(goToSecondGetRidOfSomeSPoints(values, points, wanted, 2, 0.5F, out));
      EXPECT_EQ(out, expected);
    });
  }
}

}  // namespace
