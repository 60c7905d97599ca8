// SPDX-License-Identifier: Apache-2.0
#include "features/consensus.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <stdexcept>

#include "tests/support/captured_output.h"
#include "tests/support/points.h"
#include "tests/support/random_images.h"

namespace {

struct Vote {
  bool done;
  Points one, two;
  float dx, dy;
};

Vote vote(const Points& pointsA, const Points& pointsB) {
  Vote result = {false, {}, {}, -1.5F, -2.5F};
  result.done =
      ransacMatchSPointArrayFun(pointsA, pointsB, result.one, result.two, result.dx, result.dy);
  return result;
}

/// Pairs whose second point is `base` and whose first lies at each of the offsets from it.
Vote voteOnOffsets(const Points& offsets) {
  const SPoint base = {100, 200};
  Points pointsA;
  for (const SPoint offset : offsets) pointsA.push_back({base.x + offset.x, base.y + offset.y});
  return vote(pointsA, Points(offsets.size(), base));
}

TEST(Consensus, EmptyListIsRefusedWithItsLine) {
  for (const bool firstEmpty : {true, false}) {
    const Points some = {{1, 2}};
    Vote result = {};
    const std::string printed =
        standardOutputOf([&] { result = firstEmpty ? vote({}, some) : vote(some, {}); });
    EXPECT_EQ(printed, "ransacMatchSPointArrayFun size 0\n");
    EXPECT_FALSE(result.done);
    EXPECT_TRUE(result.one.empty());
    EXPECT_EQ(result.dx, -1.5F) << "outputs stay as they were";
    EXPECT_EQ(result.dy, -2.5F);
  }
}

TEST(Consensus, SinglePairIsItsOwnInlier) {
  const Vote result = vote({{30, 5}}, {{10, 25}});
  EXPECT_TRUE(result.done);
  EXPECT_EQ(result.dx, 20.0F);
  EXPECT_EQ(result.dy, -20.0F);
  EXPECT_EQ(result.one, (Points{{30, 5}}));
  EXPECT_EQ(result.two, (Points{{10, 25}}));
}

TEST(Consensus, OffsetsThreePixelsApartSupportEachOther) {
  EXPECT_EQ(voteOnOffsets({{10, 0}, {13, 0}}).one.size(), 2U);
}

TEST(Consensus, OffsetsFourPixelsApartDoNot) {
  const Vote result = voteOnOffsets({{10, 0}, {14, 0}});
  EXPECT_EQ(result.one.size(), 1U);
  EXPECT_EQ(result.dx, 10.0F) << "of equal groups the earlier wins";
}

TEST(Consensus, ToleranceIsEuclidean) {
  // (2, 3) is sqrt(13) < 4 away, (3, 3) is sqrt(18) > 4 away.
  EXPECT_EQ(voteOnOffsets({{0, 0}, {2, 3}}).one.size(), 2U);
  EXPECT_EQ(voteOnOffsets({{0, 0}, {3, 3}}).one.size(), 1U);
}

TEST(Consensus, OfGroupsOfOneSizeTheEarlierMemberWins) {
  const Vote result = voteOnOffsets({{50, 9}, {-20, 4}, {50, 10}, {-20, 5}});
  EXPECT_EQ(result.dx, 50.0F);
  EXPECT_EQ(result.dy, 9.0F);
  EXPECT_EQ(result.one.size(), 2U);
}

TEST(Consensus, OffsetIsThatOfTheWinningPairAndNoMean) {
  // The middle one alone reaches both neighbours.
  const Vote result = voteOnOffsets({{10, 0}, {13, 0}, {16, 0}});
  EXPECT_EQ(result.one.size(), 3U);
  EXPECT_EQ(result.dx, 13.0F);
}

TEST(Consensus, InliersComeInPairOrderAndAreAppended) {
  const Points a = {{110, 0}, {500, 500}, {210, 1}, {312, 2}};
  const Points b = {{100, 0}, {3, 3}, {200, 0}, {300, 0}};
  Points one = {{7, 7}};
  Points two = {{8, 8}};
  float dx = 0.0F;
  float dy = 0.0F;
  EXPECT_TRUE(ransacMatchSPointArrayFun(a, b, one, two, dx, dy));
  EXPECT_EQ(one, (Points{{7, 7}, {110, 0}, {210, 1}, {312, 2}}));
  EXPECT_EQ(two, (Points{{8, 8}, {100, 0}, {200, 0}, {300, 0}}));
}

TEST(Consensus, ShorterSecondListThrows) {
  EXPECT_THROW(vote({{1, 1}, {2, 2}}, {{1, 1}}), std::out_of_range);
}

TEST(Consensus, OffsetOfTheHypothesisIsLeftWhenTheListEnds) {
  Points one;
  Points two;
  float dx = 0.0F;
  float dy = 0.0F;
  EXPECT_THROW(ransacMatchSPointArrayFun({{9, 1}, {2, 2}}, {{1, 4}}, one, two, dx, dy),
               std::out_of_range);
  EXPECT_EQ(dx, 8.0F);
  EXPECT_EQ(dy, -3.0F);
  EXPECT_TRUE(one.empty());
}

TEST(Consensus, DifferencesAreWholeNumbersBeforeTheyAreFloats) {
  // 16777217 becomes 2^24; as floats the two would be 16777218 apart.
  EXPECT_EQ(vote({{16777219, 0}}, {{2, 0}}).dx, 16777216.0F);
}

TEST(Consensus, ResidualIsAddedFromLeftToRight) {
  // 1 + 2^24 is 2^24 again, so the second pair lies 4 away from the first one's offset, not 3.
  const Vote result = vote({{16777216, 0}, {16777220, 0}}, {{0, 0}, {1, 0}});
  EXPECT_EQ(result.one, (Points{{16777216, 0}}));
}

TEST(Consensus, PairsBeyondTheirOwnToleranceLeaveTheLastOffset) {
  // The differences wrap: 2^31 - 1 - (-2^31) is -1 in 32 bits, and explains no pair.
  constexpr int kLow = std::numeric_limits<int>::min();
  constexpr int kHigh = std::numeric_limits<int>::max();
  const Vote result = vote({{kHigh, 0}, {kHigh, 0}}, {{kLow, 0}, {kLow + 2, 0}});
  EXPECT_TRUE(result.done);
  EXPECT_TRUE(result.one.empty());
  EXPECT_TRUE(result.two.empty());
  EXPECT_EQ(result.dx, -3.0F);
  EXPECT_EQ(result.dy, 0.0F);
}

TEST(Consensus, ShorterFirstListDecidesHowManyPairsThereAre) {
  const Vote result = vote({{5, 5}}, {{1, 1}, {9, 9}});
  EXPECT_TRUE(result.done);
  EXPECT_EQ(result.one.size(), 1U);
  EXPECT_EQ(result.dx, 4.0F);
}

/// The vote in whole numbers: 4 > sqrt(s) is 16 > s.
std::size_t votesInIntegers(const Points& a, const Points& b, std::size_t h) {
  std::size_t votes = 0;
  for (std::size_t k = 0; k < a.size(); ++k) {
    const int ex = b[k].x + (a[h].x - b[h].x) - a[k].x;
    const int ey = b[k].y + (a[h].y - b[h].y) - a[k].y;
    votes += ex * ex + ey * ey < 16 ? 1U : 0U;
  }
  return votes;
}

TEST(Consensus, EqualsTheVoteInIntegersOnRandomPairs) {
  for (unsigned seed = 1; seed <= 40; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    Points a;
    Points b;
    const int pairs = random.between(1, 60);
    for (int k = 0; k < pairs; ++k) {
      b.push_back({random.between(0, 2000), random.between(0, 2000)});
      a.push_back({b.back().x + random.between(-6, 6), b.back().y + random.between(-6, 6)});
    }
    std::size_t best = 0;
    for (std::size_t h = 1; h < a.size(); ++h) {
      if (votesInIntegers(a, b, h) > votesInIntegers(a, b, best)) best = h;
    }
    const Vote result = vote(a, b);
    EXPECT_EQ(result.one.size(), votesInIntegers(a, b, best));
    EXPECT_EQ(result.dx, static_cast<float>(a[best].x - b[best].x));
    EXPECT_EQ(result.dy, static_cast<float>(a[best].y - b[best].y));
  }
}

}  // namespace
