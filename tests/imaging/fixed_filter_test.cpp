// SPDX-License-Identifier: Apache-2.0
#include <framequilt/tuning.h>
#include <gtest/gtest.h>

#include <string>

#include "imaging/filter.h"
#include "tests/imaging/reference.h"
#include "tests/support/captured_output.h"
#include "tests/support/guarded.h"
#include "tests/support/random_images.h"

namespace {

Bytes binomial(Bytes src, int rows, int cols) {
  GuardedBytes out(src.size());
  // Neither the weights nor the tap count is read.
  EXPECT_TRUE(
      opencvfilter2DCalcCh1<unsigned char>(src.data(), nullptr, rows, cols, -7, out.data()));
  EXPECT_TRUE(out.intact());
  return out.values();
}

TEST(BinomialFilter, SinglePixelSpreadsAndIsTruncated) {
  Bytes src(25, 0);
  src[at(2, 2, 5)] = 15;
  const unsigned char x = GuardedBytes::kUntouched;
  EXPECT_EQ(binomial(src, 5, 5), (Bytes{x, x, x, x, x,  //
                                        x, 0, 1, 0, x,  //
                                        x, 1, 3, 1, x,  //
                                        x, 0, 1, 0, x,  //
                                        x, x, x, x, x}));
}

TEST(BinomialFilter, FlatImageKeepsItsValue) {
  EXPECT_EQ(binomial(Bytes(9, 200), 3, 3)[4], 200);
  EXPECT_EQ(binomial(Bytes(9, 255), 3, 3)[4], 255);
}

TEST(BinomialFilter, ImagesBelowThreeRowsOrColumnsAreLeftAlone) {
  for (const auto& [rows, cols] : {std::pair(2, 9), {9, 2}, {1, 1}, {2, 2}, {0, 4}}) {
    const std::size_t size = area(rows, cols);
    EXPECT_EQ(binomial(Bytes(size + 1, 9), rows, cols), Bytes(size + 1, GuardedBytes::kUntouched));
  }
}

TEST(BinomialFilter, AgreesWithTheKernelAtEveryWidth) {
  Random random(63);
  for (int cols = 3; cols <= 70; ++cols) {
    const int rows = random.between(3, 7);
    SCOPED_TRACE(testing::Message() << "seed 63: " << rows << " x " << cols);
    const Bytes src = random.bytes(area(rows, cols));
    Bytes expected(src.size(), GuardedBytes::kUntouched);
    for (int r = 1; r < rows - 1; ++r) {
      for (int c = 1; c < cols - 1; ++c) {
        double sum = 0.0;  // sixteenths are exact
        for (int k = 0; k < 9; ++k) {
          sum += static_cast<double>(filterH2Dker[k]) * src[at(r - 1 + k / 3, c - 1 + k % 3, cols)];
        }
        expected[at(r, c, cols)] = static_cast<unsigned char>(sum);
      }
    }
    EXPECT_EQ(binomial(src, rows, cols), expected);
  }
}

Bytes edges(Bytes src, int rows, int cols) {
  GuardedBytes out(src.size());
  EXPECT_TRUE(opencvFilter2DColCalcChUchar(src.data(), rows, cols, -7, out.data()));
  EXPECT_TRUE(out.intact());
  return out.values();
}

TEST(EdgeFilter, FlatRowGivesZero) {
  const unsigned char x = GuardedBytes::kUntouched;
  EXPECT_EQ(edges(Bytes(11, 255), 1, 11), (Bytes{x, x, x, x, 0, 0, 0, x, x, x, x}));
}

TEST(EdgeFilter, NegativeResponsesWrap) {
  Bytes src(17, 0);
  src[8] = 1;
  const unsigned char x = GuardedBytes::kUntouched;
  EXPECT_EQ(edges(src, 1, 17),
            (Bytes{x, x, x, x, 255, 254, 255, 2, 4, 2, 255, 254, 255, x, x, x, x}));
}

TEST(EdgeFilter, LargeResponsesWrap) {
  Bytes src(9, 0);
  src[4] = 200;
  EXPECT_EQ(edges(src, 1, 9)[4], 32);  // 800 - 3 * 256
}

TEST(EdgeFilter, RowsBelowNineColumnsAreLeftAlone) {
  for (int cols = 0; cols < 9; ++cols) {
    const std::size_t size = area(3, cols) + 1;
    EXPECT_EQ(edges(Bytes(size, 50), 3, cols), Bytes(size, GuardedBytes::kUntouched));
  }
}

TEST(EdgeFilter, AgreesWithItsTapsAtEveryWidth) {
  Random random(64);
  for (int cols = 9; cols <= 70; ++cols) {
    const int rows = random.between(1, 4);
    SCOPED_TRACE(testing::Message() << "seed 64: " << rows << " x " << cols);
    const Bytes src = random.bytes(area(rows, cols));
    Bytes expected(src.size(), GuardedBytes::kUntouched);
    for (int r = 0; r < rows; ++r) {
      for (int c = 4; c < cols - 4; ++c) {
        float sum = 0.0F;
        for (int k = 0; k < 9; ++k) sum += filterH2DefKer[k] * src[at(r, c - 4 + k, cols)];
        expected[at(r, c, cols)] = wrappedByte(sum);
      }
    }
    EXPECT_EQ(edges(src, rows, cols), expected);
  }
}

TEST(FixedFilters, NullPointersAreRefusedWithOneLine) {
  Bytes in(9, 1), out(9, 171);
  float* const kernel = filterH2Dker;
  const std::string output = standardOutputOf([&] {
    EXPECT_FALSE(opencvfilter2DCalcCh1<unsigned char>(nullptr, kernel, 3, 3, 3, out.data()));
    EXPECT_FALSE(opencvfilter2DCalcCh1<unsigned char>(in.data(), kernel, 3, 3, 3, nullptr));
    EXPECT_FALSE(opencvFilter2DColCalcChUchar(nullptr, 1, 9, 9, out.data()));
    EXPECT_FALSE(opencvFilter2DColCalcChUchar(in.data(), 1, 9, 9, nullptr));
  });
  EXPECT_EQ(output, "ptr is NULL\nptr is NULL\nptr is NULL\nptr is NULL\n");
  EXPECT_EQ(out, Bytes(9, 171));
}

}  // namespace
