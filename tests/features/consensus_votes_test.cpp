// SPDX-License-Identifier: Apache-2.0
#include "features/consensus_votes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "features/consensus.h"
#include "features/plain.h"
#include "tests/support/each_level.h"
#include "tests/support/points.h"
#include "tests/support/random_images.h"

namespace {

constexpr int kLow = std::numeric_limits<int>::min();
constexpr int kHigh = std::numeric_limits<int>::max();

struct Vote {
  bool done = false;
  Points one = {{-1, -2}}, two = {{-3, -4}};
  float dx = 0.5F, dy = 0.25F;
};

/// Compares at each level and returns how many pairs agreed.
std::size_t expectLikePlain(const Points& a, const Points& b) {
  Vote expected;
  expected.done =
      framequilt::plain::agreeOnOffset(a, b, expected.one, expected.two, expected.dx, expected.dy);
  atEachLevel([&] {
    Vote vote;
    vote.done = ransacMatchSPointArrayFun(a, b, vote.one, vote.two, vote.dx, vote.dy);
    EXPECT_EQ(vote.done, expected.done);
    EXPECT_EQ(vote.one, expected.one);
    EXPECT_EQ(vote.two, expected.two);
    EXPECT_EQ(vote.dx, expected.dx);
    EXPECT_EQ(vote.dy, expected.dy);
  });
  return expected.one.size() - 1;
}

/// Pairs that lie up to `scatter` from an offset, between `low` and `high`.
std::size_t expectRandomPairsLikePlain(unsigned seed, int pairs, int low, int high, int scatter) {
  SCOPED_TRACE(seed);
  Random random(seed);
  Points a;
  Points b;
  for (int k = 0; k < pairs; ++k) {
    b.push_back({random.between(low, high), random.between(low, high)});
    a.push_back({b.back().x + random.between(-scatter, scatter),
                 b.back().y + random.between(-scatter, scatter)});
  }
  return expectLikePlain(a, b);
}

TEST(ConsensusVotes, SquaredToleranceIsThatOfTheRoot) {
  constexpr float kBelow = 15.9999990F;
  ASSERT_EQ(std::nextafter(kBelow, 100.0F), framequilt::kSquaredTolerance);
  EXPECT_LT(std::sqrt(kBelow), 4.0F);
  EXPECT_EQ(std::sqrt(framequilt::kSquaredTolerance), 4.0F);
}

TEST(ConsensusVotes, EveryCountIsLikeThePlainOne) {
  std::size_t agreed = 0;
  for (int pairs = 1; pairs <= 70; ++pairs) {
    agreed += expectRandomPairsLikePlain(static_cast<unsigned>(pairs), pairs, 0, 4000, 6);
  }
  EXPECT_GT(agreed, 500U);
}

TEST(ConsensusVotes, CoordinatesBeyondWholeFloatsAreLikeThePlainOne) {
  std::size_t agreed = 0;
  for (unsigned seed = 1; seed <= 40; ++seed) {
    agreed += expectRandomPairsLikePlain(seed, 50, 16777200, 16777240, 8);
    agreed += expectRandomPairsLikePlain(seed, 50, -33554500, -33554400, 8);
    agreed += expectRandomPairsLikePlain(seed, 50, -1000000000, 1000000000, 40);
  }
  EXPECT_GT(agreed, 500U);
}

TEST(ConsensusVotes, WrappingDifferencesAreLikeThePlainOne) {
  std::size_t without = 0;
  for (unsigned seed = 1; seed <= 60; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    Points a;
    Points b;
    for (int pairs = random.between(1, 4); pairs > 0; --pairs) {
      a.push_back({kHigh - random.between(0, 300), random.between(0, 3)});
      b.push_back({kLow + random.between(0, 300), random.between(0, 3)});
    }
    without += expectLikePlain(a, b) == 0 ? 1U : 0U;
  }
  EXPECT_GT(without, 10U) << "no list without any agreeing pair";
}

TEST(ConsensusVotes, ManyPairsAreLikeThePlainOne) {
  EXPECT_GT(expectRandomPairsLikePlain(7, 1087, 0, 6000, 9), 50U);
}

TEST(ConsensusVotes, LongerSecondListIsLikeThePlainOne) {
  EXPECT_EQ(expectLikePlain({{5, 5}, {6, 6}}, {{1, 1}, {2, 2}, {3, 3}}), 2U);
}

/// What a list that ends too early throws.
template <class Consensus>
std::string thrownBy(Consensus consensus, Vote& vote) {
  try {
    consensus(Points{{9, 1}, {2, 2}, {4, 4}}, Points{{1, 4}, {5, 5}}, vote.one, vote.two, vote.dx,
              vote.dy);
  } catch (const std::out_of_range& error) {
    return error.what();
  }
  return "";
}

TEST(ConsensusVotes, ShorterSecondListThrowsAsThePlainOneDoes) {
  Vote expected;
  const std::string thrown = thrownBy(framequilt::plain::agreeOnOffset, expected);
  EXPECT_FALSE(thrown.empty());
  Vote vote;
  EXPECT_EQ(thrownBy(ransacMatchSPointArrayFun, vote), thrown);
  EXPECT_EQ(vote.dx, expected.dx);
  EXPECT_EQ(vote.dy, expected.dy);
  EXPECT_EQ(vote.one, expected.one);
}

}  // namespace
