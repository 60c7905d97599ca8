// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/seeded_random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <vector>

using framequilt::tool::RandomPurpose;
using framequilt::tool::SeededRandom;

namespace {

std::vector<int> someNumbers(SeededRandom random) {
  std::vector<int> numbers;
  for (int i = 0; i < 4; ++i) numbers.push_back(random.between(0, 999));
  return numbers;
}

}  // namespace

// Worked out apart from this code, from the definitions of std::seed_seq and std::mt19937_64.
TEST(SeededRandom, TheNumbersAreTheSameOnEveryMachine) {
  SeededRandom random(1, RandomPurpose::kPath);
  EXPECT_EQ(random.between(0, 999999), 457103);
  EXPECT_EQ(random.within(0, 1), 0.4026064529250123);
  EXPECT_EQ(random.gauss(), 104089 / 65536.0F);
}

TEST(SeededRandom, SeedPurposeAndIndexTellSequencesApart) {
  const auto numbers = someNumbers({1, RandomPurpose::kNoise, 1});
  EXPECT_EQ(numbers, someNumbers({1, RandomPurpose::kNoise, 1}));
  EXPECT_NE(numbers, someNumbers({2, RandomPurpose::kNoise, 1}));
  EXPECT_NE(numbers, someNumbers({1, RandomPurpose::kPath, 1}));
  EXPECT_NE(numbers, someNumbers({1, RandomPurpose::kNoise, 2}));
}

TEST(SeededRandom, WholeNumbersReachBothEnds) {
  SeededRandom random(3, RandomPurpose::kPath);
  std::set<int> numbers;
  for (int i = 0; i < 200; ++i) numbers.insert(random.between(-2, 3));
  EXPECT_EQ(numbers, (std::set<int>{-2, -1, 0, 1, 2, 3}));
  EXPECT_EQ(random.between(7, 7), 7);
  random.between(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
}

TEST(SeededRandom, FractionsFillTheirRange) {
  SeededRandom random(3, RandomPurpose::kPath);
  std::vector<double> numbers;
  for (int i = 0; i < 1000; ++i) numbers.push_back(random.within(-0.5, 2));
  const auto [low, high] = std::minmax_element(numbers.begin(), numbers.end());
  EXPECT_GE(*low, -0.5);
  EXPECT_LT(*low, -0.45);
  EXPECT_LT(*high, 2);
  EXPECT_GT(*high, 1.95);
}

TEST(SeededRandom, NoiseIsNormal) {
  SeededRandom random(3, RandomPurpose::kNoise);
  constexpr int kCount = 100000;
  double sum = 0;
  double squares = 0;
  int beyondOne = 0;
  int beyondTwo = 0;
  for (int i = 0; i < kCount; ++i) {
    const double value = random.gauss();
    sum += value;
    squares += value * value;
    if (std::abs(value) > 1) ++beyondOne;
    if (std::abs(value) > 2) ++beyondTwo;
  }
  EXPECT_NEAR(sum / kCount, 0, 0.02);
  EXPECT_NEAR(std::sqrt(squares / kCount), 1, 0.02);
  EXPECT_NEAR(beyondOne / double{kCount}, 0.317, 0.01);
  EXPECT_NEAR(beyondTwo / double{kCount}, 0.0455, 0.005);
}
