// SPDX-License-Identifier: Apache-2.0
#include "features/matching.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <stdexcept>
#include <vector>

#include "tests/support/captured_output.h"
#include "tests/support/points.h"
#include "tests/support/random_images.h"

namespace {

using Descriptors = std::vector<unsigned short>;

constexpr float kRatio = 0.98F;

struct Matching {
  bool done;
  Points matches;
};

Matching match(Descriptors a, int countA, Descriptors b, int countB, int length,
               float ratio = kRatio) {
  std::vector<float> dist(static_cast<std::size_t>(countA) + 1, -1.0F);
  Matching result = {};
  result.done = calacDistanceIndexFun(a.data(), b.data(), dist.data(), ratio, countA, length,
                                      countB, length, result.matches);
  EXPECT_EQ(dist.back(), -1.0F) << "one distance per descriptor of A";
  return result;
}

TEST(MinimumSearch, FirstOfEqualMinimaWins) {
  float values[] = {4.0F, 1.0F, 7.0F, 1.0F, 7.0F};
  float minimum = 0.0F;
  float maximum = 0.0F;
  int index = -1;
  EXPECT_TRUE(findMinIndex<float>(values, 5, minimum, maximum, index));
  EXPECT_EQ(minimum, 1.0F);
  EXPECT_EQ(maximum, 7.0F);
  EXPECT_EQ(index, 1);
}

TEST(MinimumSearch, BelowTwoValuesOnlyTheFirstIsLookedAt) {
  float values[] = {4.0F, 1.0F};
  for (const int n : {1, 0, -3}) {
    float minimum = 0.0F;
    float maximum = 0.0F;
    int index = -1;
    EXPECT_TRUE(findMinIndex<float>(values, n, minimum, maximum, index));
    EXPECT_EQ(minimum, 4.0F);
    EXPECT_EQ(maximum, 4.0F);
    EXPECT_EQ(index, 0);
  }
}

TEST(MinimumSearch, NullArrayIsRefusedWithItsLine) {
  float minimum = 0.5F;
  float maximum = 0.5F;
  int index = 5;
  EXPECT_EQ(standardOutputOf(
                [&] { EXPECT_FALSE(findMinIndex<float>(nullptr, 3, minimum, maximum, index)); }),
            "findMinIndex ptr is null\n");
  EXPECT_EQ(index, 5);
}

TEST(Matching, NullDescriptorsAreRefusedWithTheLine) {
  Descriptors some(4);
  float dist[2];
  Points matches;
  for (const bool first : {true, false}) {
    EXPECT_EQ(standardOutputOf([&] {
                EXPECT_FALSE(calacDistanceIndexFun(first ? nullptr : some.data(),
                                                   first ? some.data() : nullptr, dist, kRatio, 1,
                                                   4, 1, 4, matches));
              }),
              "calacDistanceIndexFun ptr is null\n");
  }
  EXPECT_TRUE(matches.empty());
}

TEST(Matching, NullDistancesAreRefused) {
  Descriptors some(4);
  Points matches;
  EXPECT_EQ(standardOutputOf([&] {
              EXPECT_FALSE(calacDistanceIndexFun(some.data(), some.data(), nullptr, kRatio, 1, 4, 1,
                                                 4, matches));
            }),
            "findMinIndex ptr is null\n");
}

TEST(Matching, DistinctDescriptorsMatchThemselves) {
  const Descriptors lists = {0, 0, 100, 0, 0, 100, 300, 300};
  const Matching result = match(lists, 4, lists, 4, 2);
  EXPECT_TRUE(result.done);
  EXPECT_EQ(result.matches, (Points{{0, 0}, {1, 1}, {2, 2}, {3, 3}}));
}

TEST(Matching, MatchIsIndexInSecondThenIndexInFirst) {
  // The one descriptor of B is nearest to the third of A.
  EXPECT_EQ(match({0, 50, 200}, 3, {190}, 1, 1).matches, (Points{{0, 2}}));
}

TEST(Matching, DuplicatesInTheFirstListAreRejected) {
  EXPECT_TRUE(match({7, 7, 900}, 3, {9}, 1, 1).matches.empty()) << "nearest equals second nearest";
  EXPECT_TRUE(match({7, 7, 900}, 3, {7}, 1, 1).matches.empty()) << "0 / 0 is no number";
}

TEST(Matching, SeveralMayTakeTheSame) {
  EXPECT_EQ(match({0, 500}, 2, {1, 2, 3}, 3, 1).matches, (Points{{0, 0}, {1, 0}, {2, 0}}));
}

TEST(Matching, RatioIsStrict) {
  // Distances 1 and 4: a quotient of a quarter.
  EXPECT_EQ(match({9, 12}, 2, {10}, 1, 1, 0.25F).matches.size(), 0U);
  EXPECT_EQ(match({9, 12}, 2, {10}, 1, 1, 0.250001F).matches.size(), 1U);
}

TEST(Matching, RatioIsComparedWithTheQuotient) {
  // Multiplied out, both would come out the other way.
  const float above = std::nextafter(9.0F / 169.0F, 1.0F);
  EXPECT_EQ(match({23, 33}, 2, {20}, 1, 1, above).matches, (Points{{0, 0}}));
  EXPECT_TRUE(match({31, 33}, 2, {20}, 1, 1, 121.0F / 169.0F).matches.empty());
}

TEST(Matching, MatchesAreAppended) {
  Descriptors a = {0, 50, 200};
  Descriptors b = {190};
  float dist[3];
  Points matches = {{7, 8}};
  EXPECT_TRUE(calacDistanceIndexFun(a.data(), b.data(), dist, kRatio, 3, 1, 1, 1, matches));
  EXPECT_EQ(matches, (Points{{7, 8}, {0, 2}}));
  EXPECT_TRUE(calacDistanceIndexFun(a.data(), b.data(), dist, kRatio, 3, 1, 0, 1, matches));
  EXPECT_EQ(matches.size(), 2U);
}

/// The distances that are left of the one descriptor of B.
std::vector<float> distancesTo(Descriptors b, Descriptors a, int countA) {
  std::vector<float> dist(static_cast<std::size_t>(countA));
  const int length = static_cast<int>(b.size());
  Points matches;
  EXPECT_TRUE(calacDistanceIndexFun(a.data(), b.data(), dist.data(), kRatio, countA, length, 1,
                                    length, matches));
  return dist;
}

TEST(Matching, NearestDistanceIsReplacedByTheLargest) {
  EXPECT_EQ(distancesTo({10}, {13, 12, 6, 30}, 4), (std::vector<float>{9, 400, 16, 400}));
}

TEST(Matching, SquaresAreAddedInSinglePrecisionAndElementOrder) {
  // Beside 2^24 a one is lost, and another one after it; the other way round they are kept.
  const std::vector<float> dist = distancesTo({0, 0, 0}, {4096, 1, 1, 1, 1, 4096, 0, 0, 0}, 3);
  EXPECT_EQ(dist[0], 16777216.0F);
  EXPECT_EQ(dist[1], 16777218.0F);
}

TEST(Matching, SquaresWrapAt32Bits) {
  // 46341 squared is just above 2^31 and 65535 squared just below 2^32.
  EXPECT_EQ(match({0, 60000}, 2, {46341}, 1, 1).matches, (Points{{0, 0}}));
  EXPECT_EQ(distancesTo({0}, {46341, 65535, 7}, 3), (std::vector<float>{49.0F, -131071.0F, 49.0F}));
}

TEST(Matching, LoneDescriptorOfTheFirstListNeverMatches) {
  EXPECT_TRUE(match({5}, 1, {5, 6}, 2, 1).matches.empty());
}

TEST(Matching, NothingToMatchSucceeds) {
  for (const int countA : {0, -1}) {
    const Matching result = match({1, 2}, std::max(0, countA), {1, 2}, 2, 1);
    EXPECT_TRUE(result.done);
    EXPECT_TRUE(result.matches.empty());
  }
  EXPECT_TRUE(match({1, 2}, 2, {1}, 0, 1).done);
}

TEST(Matching, FirstListIsStridedSecondIsPacked) {
  // Elements between the descriptors of A (9999) are never read.
  // Strided as well, the second of B would be (200, 10) and match the other one.
  Descriptors a = {10, 200, 9999, 200, 10, 9999};
  Descriptors b = {201, 10, 11, 200, 10};
  std::vector<float> dist(2);
  Points matches;
  EXPECT_TRUE(calacDistanceIndexFun(a.data(), b.data(), dist.data(), kRatio, 2, 3, 2, 2, matches));
  EXPECT_EQ(matches, (Points{{0, 1}, {1, 0}}));
}

/// The sum in single precision and element order, and in double precision from the end.
float orderedSum(const unsigned short* a, const unsigned short* b, int length) {
  float sum = 0.0F;
  for (int k = 0; k < length; ++k) {
    const float difference = static_cast<float>(b[k]) - static_cast<float>(a[k]);
    sum = sum + difference * difference;
  }
  return sum;
}

TEST(Matching, EqualsASlowSearchOnRandomDescriptors) {
  constexpr int kLength = 200;
  for (unsigned seed = 1; seed <= 6; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    const int countA = random.between(2, 30);
    const int countB = random.between(1, 30);
    Descriptors a(static_cast<std::size_t>(countA) * kLength);
    Descriptors b(static_cast<std::size_t>(countB) * kLength);
    // Small ranges make near ties, as real histograms do.
    for (auto& value : a) value = static_cast<unsigned short>(random.between(0, 4000));
    for (auto& value : b) value = static_cast<unsigned short>(random.between(0, 4000));
    Points expected;
    for (int j = 0; j < countB; ++j) {
      float best = std::numeric_limits<float>::infinity();
      float second = best;
      int bestIndex = -1;
      for (int i = 0; i < countA; ++i) {
        const float distance = orderedSum(a.data() + i * kLength, b.data() + j * kLength, kLength);
        if (distance < best) {
          second = best;
          best = distance;
          bestIndex = i;
        } else if (distance < second) {
          second = distance;
        }
      }
      if (kRatio > best / second) expected.push_back({j, bestIndex});
    }
    EXPECT_EQ(match(a, countA, b, countB, kLength).matches, expected);
    EXPECT_FALSE(expected.empty() && countA > 20 && countB > 20) << "compared nothing";
  }
}

TEST(PairExpansion, TakesFirstByRowIndexAndSecondByColumnIndex) {
  const Points cornersA = {{1, 2}, {3, 4}};
  const Points cornersB = {{5, 6}, {7, 8}, {9, 10}};
  Points a = {{0, 0}};
  Points b;
  EXPECT_TRUE(roughMatchSPoint(cornersA, cornersB, {{2, 0}, {0, 1}}, a, b));
  EXPECT_EQ(a, (Points{{0, 0}, {1, 2}, {3, 4}})) << "appended";
  EXPECT_EQ(b, (Points{{9, 10}, {5, 6}}));
}

TEST(PairExpansion, NoMatchGivesNoPair) {
  Points a;
  Points b;
  EXPECT_TRUE(roughMatchSPoint({{1, 1}}, {{1, 1}}, {}, a, b));
  EXPECT_TRUE(a.empty());
  EXPECT_TRUE(b.empty());
}

TEST(PairExpansion, IndexOutsideItsListThrows) {
  Points a;
  Points b;
  EXPECT_THROW(roughMatchSPoint({{1, 1}}, {{1, 1}}, {{0, 1}}, a, b), std::out_of_range);
  EXPECT_THROW(roughMatchSPoint({{1, 1}}, {{1, 1}}, {{-1, 0}}, a, b), std::out_of_range);
}

}  // namespace
