// SPDX-License-Identifier: Apache-2.0
#include "features/matching_lanes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <vector>

#include "features/matching.h"
#include "features/plain.h"
#include "imaging/assistant.h"
#include "tests/support/each_level.h"
#include "tests/support/guarded.h"
#include "tests/support/points.h"
#include "tests/support/random_images.h"

namespace {

using Elements = std::vector<unsigned short>;
using framequilt::DescriptorSets;

constexpr float kRatio = 0.98F;

/// Both sets in memory of their exact size, so that reads outside show under address checks.
struct Sets {
  Elements a, b;
  int countA, strideA, countB, length;

  Sets(int ofA, int stride, int ofB, int elements)
      : a(static_cast<std::size_t>((ofA - 1) * stride + elements)),
        b(static_cast<std::size_t>(ofB * elements)),
        countA(ofA),
        strideA(stride),
        countB(ofB),
        length(elements) {}

  void fill(Random& random, int low, int high) {
    for (Elements* list : {&a, &b}) {
      for (auto& value : *list) value = static_cast<unsigned short>(random.between(low, high));
    }
  }

  /// B becomes A, each element up to `noise` away.
  void pairUp(Random& random, int noise) {
    for (int j = 0; j < countB; ++j) {
      for (int k = 0; k < length; ++k) {
        const int element = a[static_cast<std::size_t>((j % countA) * strideA + k)];
        b[static_cast<std::size_t>(j * length + k)] = static_cast<unsigned short>(
            std::clamp(element + random.between(-noise, noise), 0, 46340));
      }
    }
  }

  DescriptorSets view() const { return {a.data(), countA, strideA, b.data(), countB, length}; }
};

struct Outcome {
  Points matches;
  std::vector<float> dist;
};

Outcome plainly(const Sets& sets, float ratio) {
  Outcome outcome = {{{-7, -7}}, std::vector<float>(static_cast<std::size_t>(sets.countA))};
  EXPECT_TRUE(framequilt::plain::matchDescriptors(sets.view(), outcome.dist.data(), ratio,
                                                  outcome.matches));
  return outcome;
}

/// Compares at each level and returns how many matches there were.
std::size_t expectLikePlain(Sets sets, float ratio = kRatio) {
  const Outcome expected = plainly(sets, ratio);
  EXPECT_TRUE(framequilt::suitsLanes(sets.view()));
  atEachLevel([&] {
    GuardedFloats dist(expected.dist.size());
    for (const int threads : {2, 1, 0}) {
      framequilt::setThreads(threads);
      Points matches = {{-7, -7}};
      std::fill_n(dist.data(), expected.dist.size(), -1.0F);
      framequilt::matchInLanes(sets.view(), dist.data(), ratio, matches);
      EXPECT_EQ(matches, expected.matches);
      EXPECT_EQ(dist.values(), expected.dist);
      EXPECT_TRUE(dist.intact());
    }

    Points ofLibrary = {{-7, -7}};
    EXPECT_TRUE(calacDistanceIndexFun(sets.a.data(), sets.b.data(), dist.data(), ratio, sets.countA,
                                      sets.strideA, sets.countB, sets.length, ofLibrary));
    EXPECT_EQ(ofLibrary, expected.matches);
    EXPECT_EQ(dist.values(), expected.dist);
    EXPECT_TRUE(dist.intact());
  });
  return expected.matches.size() - 1;
}

TEST(MatchingInLanes, EveryCountIsLikeThePlainOne) {
  // Whole blocks of lanes and all remainders; the same for descriptors of B at once.
  std::size_t matched = 0;
  for (int count = 1; count <= 70; ++count) {
    SCOPED_TRACE(count);
    Random random(static_cast<unsigned>(count));
    Sets sets(count, 9, 1 + count % 9, 7);
    sets.fill(random, 0, 900);
    matched += expectLikePlain(sets);
  }
  EXPECT_GT(matched, 100U);
}

TEST(MatchingInLanes, EveryLengthIsLikeThePlainOne) {
  std::size_t matched = 0;
  for (int length = 1; length <= 70; ++length) {
    SCOPED_TRACE(length);
    Random random(static_cast<unsigned>(length));
    Sets sets(37, length, 6, length);
    sets.fill(random, 0, 4000);
    matched += expectLikePlain(sets);
  }
  EXPECT_GT(matched, 100U);
}

TEST(MatchingInLanes, RealSizesAreLikeThePlainOne) {
  for (const int high : {40, 300, 5760, 46340}) {
    SCOPED_TRACE(high);
    Random random(static_cast<unsigned>(high));
    Sets sets(181, 200, 90, 200);
    sets.fill(random, 0, high);
    expectLikePlain(sets);
    sets.pairUp(random, 5 + high / 10);
    EXPECT_GT(expectLikePlain(sets), 80U);
  }
}

TEST(MatchingInLanes, NearTiesBeyondExactSumsAreLikeThePlainOne) {
  // Sums far above 2^24, which differ by what single precision loses: the order of the elements
  // decides which descriptor is nearest.
  std::size_t matched = 0;
  for (unsigned seed = 1; seed <= 20; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    constexpr int kLength = 200;
    Sets sets(65, kLength, 4, kLength);
    for (int k = 0; k < kLength; ++k) {
      sets.a[static_cast<std::size_t>(k)] = static_cast<unsigned short>(random.between(0, 5760));
    }
    for (int i = 1; i < sets.countA; ++i) {
      const auto to = sets.a.begin() + static_cast<std::ptrdiff_t>(i) * kLength;
      std::copy_n(sets.a.begin(), kLength, to);
      // The same elements in another order have the same exact distance to zeros.
      for (int swaps = 0; swaps < 40; ++swaps) {
        std::swap(to[random.between(0, kLength - 1)], to[random.between(0, kLength - 1)]);
      }
    }
    matched += expectLikePlain(sets, 1.0F);
  }
  EXPECT_GT(matched, 0U);
}

TEST(MatchingInLanes, EqualDistancesAreLikeThePlainOne) {
  for (unsigned seed = 1; seed <= 60; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    const int length = random.between(1, 3);
    Sets sets(random.between(1, 100), length, random.between(1, 12), length);
    sets.fill(random, 0, 3);
    for (const float ratio : {0.98F, 1.0F, 1.5F, 1e30F, -1.0F}) expectLikePlain(sets, ratio);
  }
}

TEST(MatchingInLanes, OverlappingAndRepeatedDescriptorsOfAAreLikeThePlainOne) {
  Random random(5);
  for (const int stride : {0, 1, 11, 17}) {
    Sets sets(45, stride, 5, 12);
    sets.fill(random, 0, 200);
    expectLikePlain(sets);
  }
}

TEST(MatchingInLanes, LargestDifferencesAreLikeThePlainOne) {
  Sets sets(33, 200, 5, 200);
  std::fill(sets.a.begin(), sets.a.end(), static_cast<unsigned short>(46340));
  sets.a[200 * 20 + 199] = 46339;
  EXPECT_EQ(expectLikePlain(sets), 0U);
  EXPECT_EQ(expectLikePlain(sets, 1.5F), 5U);
}

TEST(MatchingInLanes, SquaresThatWrapDoNotSuit) {
  for (const std::size_t place : {0U, 7U, 13U}) {
    for (const bool inA : {true, false}) {
      Sets sets(2, 7, 2, 7);
      (inA ? sets.a : sets.b)[place] = 46340;
      EXPECT_TRUE(framequilt::suitsLanes(sets.view()));
      (inA ? sets.a : sets.b)[place] = 46341;
      EXPECT_FALSE(framequilt::suitsLanes(sets.view()));
    }
  }
}

TEST(MatchingInLanes, ElementsBetweenDescriptorsAreNotLookedAt) {
  Sets sets(3, 9, 2, 7);
  for (const std::size_t gap : {7U, 8U, 16U, 17U}) sets.a[gap] = 65535;
  EXPECT_TRUE(framequilt::suitsLanes(sets.view()));
}

TEST(MatchingInLanes, EmptySetsDoNotSuit) {
  const Elements some(4);
  EXPECT_FALSE(framequilt::suitsLanes({some.data(), 0, 1, some.data(), 1, 1}));
  EXPECT_FALSE(framequilt::suitsLanes({some.data(), 1, 1, some.data(), 0, 1}));
  EXPECT_FALSE(framequilt::suitsLanes({some.data(), 1, 1, some.data(), 1, 0}));
}

TEST(MatchingInLanes, WrappingSquaresGoThePlainWay) {
  Random random(8);
  Sets sets(40, 20, 9, 20);
  sets.fill(random, 0, 65535);
  ASSERT_FALSE(framequilt::suitsLanes(sets.view()));
  const Outcome expected = plainly(sets, kRatio);
  GuardedFloats dist(40);
  Points matches = {{-7, -7}};
  EXPECT_TRUE(calacDistanceIndexFun(sets.a.data(), sets.b.data(), dist.data(), kRatio, 40, 20, 9,
                                    20, matches));
  EXPECT_EQ(matches, expected.matches);
  EXPECT_EQ(dist.values(), expected.dist);
  EXPECT_TRUE(dist.intact());
}

}  // namespace
