// SPDX-License-Identifier: Apache-2.0
#include "features/suppression_radius.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <stdexcept>
#include <vector>

#include "features/plain.h"
#include "tests/support/each_level.h"
#include "tests/support/points.h"
#include "tests/support/random_images.h"

namespace {

using Values = std::vector<float>;

constexpr int kLow = std::numeric_limits<int>::min();
constexpr int kHigh = std::numeric_limits<int>::max();

struct Candidates {
  Values values;
  Points points;

  /// `distinct` different values above `lowest`, points from `origin` on in a square of `side`.
  Candidates(unsigned seed, int count, int lowest, int distinct, SPoint origin, int side) {
    Random random(seed);
    for (int k = 0; k < count; ++k) {
      values.push_back(static_cast<float>(random.between(lowest, lowest + distinct - 1)));
      points.push_back({origin.x + random.between(0, side), origin.y + random.between(0, side)});
    }
  }
};

/// Compares at each level and returns how many have a stronger one near.
int expectLikePlain(const Candidates& list, float robust) {
  const Values expected = framequilt::plain::suppressionRadii(list.values, list.points, robust);
  EXPECT_TRUE(framequilt::suitRadiusLanes(list.values, list.points, robust));
  atEachLevel([&] {
    EXPECT_EQ(framequilt::suppressionRadiiInLanes(list.values, list.points, robust), expected);
  });
  return static_cast<int>(std::count_if(expected.begin(), expected.end(),
                                        [](float radius) { return radius < 65535.0F; }));
}

TEST(SuppressionRadius, EveryCountIsLikeThePlainOne) {
  int suppressed = 0;
  for (int count = 1; count <= 100; ++count) {
    SCOPED_TRACE(count);
    suppressed += expectLikePlain(
        Candidates(static_cast<unsigned>(count), count, 1, 200, {20, 20}, 250), 0.5F);
  }
  EXPECT_GT(suppressed, 1000);
}

TEST(SuppressionRadius, ManyCandidatesAreLikeThePlainOne) {
  for (const int distinct : {1, 3, 50, 1 << 20}) {
    for (const float robust : {0.0F, 0.3F, 0.5F, 0.9F, 1.0F, 1.25F, 3.0F}) {
      SCOPED_TRACE(robust);
      expectLikePlain(Candidates(9, 700, 1, distinct, {20, 20}, 600), robust);
    }
  }
  EXPECT_GT(expectLikePlain(Candidates(9, 700, 1, 1 << 20, {20, 20}, 600), 0.5F), 300);
}

TEST(SuppressionRadius, RankedCandidatesAreLikeThePlainOne) {
  Candidates list(3, 500, 1, 5000, {20, 20}, 300);
  std::sort(list.values.rbegin(), list.values.rend());
  EXPECT_GT(expectLikePlain(list, 0.5F), 200);
}

TEST(SuppressionRadius, ValuesOfAnySignAreLikeThePlainOne) {
  int suppressed = 0;
  for (const int lowest : {-40, -20, -200}) {
    Candidates list(5, 150, lowest, 41, {0, 0}, 100);
    for (std::size_t k = 0; k < list.values.size(); k += 7) list.values[k] = -0.0F;
    suppressed += expectLikePlain(list, 0.5F);
  }
  EXPECT_GT(suppressed, 100);
  Candidates huge(5, 150, 1, 40, {0, 0}, 100);
  for (float& value : huge.values) value *= 8e36F;
  EXPECT_GT(expectLikePlain(huge, 0.5F), 50);
  expectLikePlain(huge, 1e6F);
}

TEST(SuppressionRadius, RadiiAroundTheCapAreLikeThePlainOne) {
  for (int side = 250; side <= 260; ++side) {
    for (int across = 0; across <= 24; ++across) {
      Candidates list(1, 3, 1, 1, {0, 0}, 0);
      list.values = {1, 100, 1};
      list.points = {{0, 0}, {side, across}, {across, side}};
      expectLikePlain(list, 0.5F);
    }
  }
}

TEST(SuppressionRadius, FarPlacesAreLikeThePlainOne) {
  int suppressed = 0;
  for (const SPoint origin :
       {SPoint{kLow, kHigh - 32767}, SPoint{kHigh - 32767, kLow}, SPoint{16777210, -16777230}}) {
    Candidates list(11, 200, 1, 1000, origin, 300);
    suppressed += expectLikePlain(list, 0.5F);
    // As far apart as they may be.
    list.points[0] = origin;
    list.points[1] = {origin.x + 32767, origin.y + 32767};
    suppressed += expectLikePlain(list, 0.5F);
  }
  EXPECT_GT(suppressed, 500);
}

TEST(SuppressionRadius, FurtherValuesAreNoCandidates) {
  Candidates list(2, 60, 1, 100, {0, 0}, 60);
  list.points.resize(40);
  EXPECT_GT(expectLikePlain(list, 0.5F), 10);
  list.values.back() = 1e9F;
  expectLikePlain(list, 0.5F);
}

TEST(SuppressionRadius, OthersDoNotSuit) {
  const Candidates list(2, 40, 1, 100, {0, 0}, 60);
  EXPECT_TRUE(framequilt::suitRadiusLanes(list.values, list.points, 0.5F));
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
  for (const float robust : {-0.5F, kInfinity, kNone}) {
    EXPECT_FALSE(framequilt::suitRadiusLanes(list.values, list.points, robust));
  }
  for (const float value : {kInfinity, -kInfinity, kNone}) {
    Values values = list.values;
    values[39] = value;
    EXPECT_FALSE(framequilt::suitRadiusLanes(values, list.points, 0.5F));
  }
  for (const SPoint far : {SPoint{32768, 0}, SPoint{0, 32768}, SPoint{kHigh, kLow}}) {
    Points points = list.points;
    points[5] = {0, 0};
    points[39] = far;
    EXPECT_FALSE(framequilt::suitRadiusLanes(list.values, points, 0.5F));
  }
  EXPECT_FALSE(framequilt::suitRadiusLanes({}, {}, 0.5F));
  Points more = list.points;
  more.push_back({1, 1});
  EXPECT_FALSE(framequilt::suitRadiusLanes(list.values, more, 0.5F));
  EXPECT_THROW(framequilt::plain::suppressionRadii(list.values, more, 0.5F), std::out_of_range);
}

}  // namespace
