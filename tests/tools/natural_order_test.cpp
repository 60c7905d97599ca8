// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/natural_order.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using framequilt::tool::naturalLess;

TEST(NaturalOrder, NumbersCompareByTheirValue) {
  EXPECT_TRUE(naturalLess("f2", "f10"));
  EXPECT_FALSE(naturalLess("f10", "f2"));
  EXPECT_TRUE(naturalLess("f2b10", "f2b11"));
  EXPECT_TRUE(naturalLess("9", "10"));
}

TEST(NaturalOrder, TextAroundNumbersComparesByteByByte) {
  EXPECT_TRUE(naturalLess("a10", "b2"));
  EXPECT_TRUE(naturalLess("f2.jpg", "f2.png"));
  EXPECT_TRUE(naturalLess("Z", "\xC3\xA4"));
}

TEST(NaturalOrder, APrefixComesFirst) {
  EXPECT_TRUE(naturalLess("f", "f1"));
  EXPECT_TRUE(naturalLess("", "a"));
  EXPECT_FALSE(naturalLess("a", ""));
}

TEST(NaturalOrder, NumbersOfAnyLengthFit) {
  EXPECT_TRUE(naturalLess("f99999999999999999999999998", "f99999999999999999999999999"));
  EXPECT_TRUE(naturalLess("f9", "f10000000000000000000000000"));
}

TEST(NaturalOrder, LeadingZerosDecideOnlyBetweenEqualNames) {
  EXPECT_TRUE(naturalLess("f007", "f8"));
  EXPECT_TRUE(naturalLess("f1", "f002"));
  EXPECT_TRUE(naturalLess("f01", "f1"));
  EXPECT_FALSE(naturalLess("f1", "f01"));
  EXPECT_TRUE(naturalLess("f1a", "f01b"));
}

TEST(NaturalOrder, NothingIsLessThanItself) {
  EXPECT_FALSE(naturalLess("f10", "f10"));
  EXPECT_FALSE(naturalLess("", ""));
}

TEST(NaturalOrder, SortsACapture) {
  std::vector<std::string> names = {"f10", "f9", "f1", "f100", "f2", "e5"};
  std::sort(names.begin(), names.end(), naturalLess);
  EXPECT_EQ(names, (std::vector<std::string>{"e5", "f1", "f2", "f9", "f10", "f100"}));
}
