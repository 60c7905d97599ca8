// SPDX-License-Identifier: Apache-2.0
#include "imaging/pixel_math.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace {

using namespace framequilt;  // NOLINT: the header under test

constexpr int kSmallest = std::numeric_limits<int>::min();
constexpr int kLargest = std::numeric_limits<int>::max();

TEST(LowByte, CutsWithoutRoundingOrSaturating) {
  EXPECT_EQ(lowByte(0), 0);
  EXPECT_EQ(lowByte(255), 255);
  EXPECT_EQ(lowByte(256), 0);
  EXPECT_EQ(lowByte(800), 32);
  EXPECT_EQ(lowByte(-1), 255);
  EXPECT_EQ(lowByte(-256), 0);
  EXPECT_EQ(lowByte(kLargest), 255);
  EXPECT_EQ(lowByte(kSmallest), 0);
}

TEST(WrappingArithmetic, AgreesWithPlainArithmeticWhereThatFits) {
  EXPECT_EQ(sum32(40000, -7), 39993);
  EXPECT_EQ(difference32(-5, 9), -14);
  EXPECT_EQ(product32(-300, 700), -210000);
}

TEST(WrappingArithmetic, WrapsModulo2To32) {
  EXPECT_EQ(sum32(kLargest, 1), kSmallest);
  EXPECT_EQ(sum32(kSmallest, kSmallest), 0);
  EXPECT_EQ(difference32(kSmallest, 1), kLargest);
  EXPECT_EQ(difference32(0, kSmallest), kSmallest);
  EXPECT_EQ(product32(65536, 65536), 0);
  EXPECT_EQ(product32(65536, 32768), kSmallest);
  EXPECT_EQ(product32(46341, 46341), -2147479015);
  EXPECT_EQ(product32(kSmallest, -1), kSmallest);
}

TEST(TruncateToInt, GoesTowardZero) {
  EXPECT_EQ(truncateToInt(2.99F), 2);
  EXPECT_EQ(truncateToInt(-2.99F), -2);
  EXPECT_EQ(truncateToInt(-0.5F), 0);
  EXPECT_EQ(truncateToInt(1e9F), 1000000000);
}

TEST(TruncateToInt, KeepsWhatJustFits) {
  EXPECT_EQ(truncateToInt(-2147483648.0F), kSmallest);
  EXPECT_EQ(truncateToInt(2147483520.0F), 2147483520);  // the next float is 2^31
}

TEST(TruncateToInt, GivesTheSmallestNumberForWhatDoesNotFit) {
  EXPECT_EQ(truncateToInt(2147483648.0F), kSmallest);
  EXPECT_EQ(truncateToInt(-2147483904.0F), kSmallest);
  EXPECT_EQ(truncateToInt(1e30F), kSmallest);
  EXPECT_EQ(truncateToInt(std::numeric_limits<float>::infinity()), kSmallest);
  EXPECT_EQ(truncateToInt(-std::numeric_limits<float>::infinity()), kSmallest);
  EXPECT_EQ(truncateToInt(std::nanf("")), kSmallest);
}

TEST(PlaneSize, MultipliesItsSides) {
  EXPECT_EQ(planeSize(3, 5), 15U);
  EXPECT_EQ(planeSize(3, 5, 3), 45U);
}

TEST(PlaneSize, SideBelowOneMakesItEmpty) {
  EXPECT_EQ(planeSize(0, 5), 0U);
  EXPECT_EQ(planeSize(5, 0), 0U);
  EXPECT_EQ(planeSize(5, 5, 0), 0U);
  EXPECT_EQ(planeSize(-2, -3), 0U);
  EXPECT_EQ(planeSize(2, -3, -1), 0U);
}

TEST(PlaneSize, ExceedsTheRangeOfAnInt) {
  EXPECT_EQ(planeSize(60000, 60000, 3), std::size_t{10800000000U});
}

TEST(RowStart, ExceedsTheRangeOfAnIntAndMayBeNegative) {
  EXPECT_EQ(rowStart(4, 10), 40);
  EXPECT_EQ(rowStart(4, 10, 3), 120);
  EXPECT_EQ(rowStart(59999, 60000, 3), std::ptrdiff_t{10799820000});
  EXPECT_EQ(rowStart(-1, 10, 3), -30);
}

}  // namespace
