// SPDX-License-Identifier: Apache-2.0
#include "imaging/region.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <string>

#include "tests/imaging/reference.h"
#include "tests/imaging/region_blocks.h"
#include "tests/support/captured_output.h"
#include "tests/support/guarded.h"
#include "tests/support/random_images.h"

namespace {

const std::string kRefusal =
    "ptr is null or endBigRow \xA1\xA2"
    "endBigCol overSize\n";

constexpr unsigned char kUntouched = GuardedBytes::kUntouched;

Bytes countedUp(std::size_t count) {
  Bytes bytes(count);
  std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(0));
  return bytes;
}

bool cut(Bytes& big, Rect rect, int bigRows, int bigCols, int channels, imgInfo& info,
         unsigned char* small) {
  return willBigImgAssignRowColToSmallImg(big.data(), rect.row0, rect.row1, rect.col0, rect.col1,
                                          bigRows, bigCols, channels, info, small);
}

bool write(Bytes& small, int smallCols, Rect rect, int bigRows, int bigCols, int channels,
           unsigned char* big) {
  // The row count of the small image is not read.
  return willSmallImgToBigImgAssignRowCol(small.data(), -5, smallCols, rect.row0, rect.row1,
                                          rect.col0, rect.col1, bigRows, bigCols, channels, big);
}

TEST(BlockCut, IsPackedAndDescribed) {
  Bytes big = countedUp(20);  // 4 x 5
  imgInfo info{42, 0, 0, 0};
  GuardedBytes small(6);
  EXPECT_TRUE(cut(big, {1, 3, 1, 4}, 4, 5, 1, info, small.data()));
  EXPECT_EQ(small.values(), (Bytes{6, 7, 8, 11, 12, 13}));
  EXPECT_TRUE(small.intact());
  expectInfo(info, 42, 1, 2, 3);
}

TEST(BlockCut, ColourPixelsStayTogether) {
  Bytes big = countedUp(area(3, 3, 3));
  imgInfo info{};
  GuardedBytes small(12);
  EXPECT_TRUE(cut(big, {1, 3, 1, 3}, 3, 3, 3, info, small.data()));
  EXPECT_EQ(small.values(), (Bytes{12, 13, 14, 15, 16, 17, 21, 22, 23, 24, 25, 26}));
  expectInfo(info, 0, 3, 2, 2);
}

TEST(BlockCut, MayReachTheFarEdgesButNotBeyond) {
  Bytes big = countedUp(12);  // 3 x 4
  imgInfo info{};
  GuardedBytes small(12);
  EXPECT_EQ(standardOutputOf([&] {
              EXPECT_TRUE(cut(big, {0, 3, 0, 4}, 3, 4, 1, info, small.data()));
            }),
            "");
  EXPECT_EQ(small.values(), big);

  imgInfo untouched{1, 2, 3, 4};
  GuardedBytes nothing(20);
  for (const Rect rect : {Rect{0, 4, 0, 4}, Rect{0, 3, 0, 5}, Rect{4, 4, 0, 4}}) {
    EXPECT_EQ(
        standardOutputOf([&] { EXPECT_FALSE(cut(big, rect, 3, 4, 1, untouched, nothing.data())); }),
        kRefusal);
  }
  EXPECT_EQ(nothing.values(), Bytes(20, kUntouched));
  expectInfo(untouched, 1, 2, 3, 4);
}

TEST(BlockCut, EmptyRangesAreRecordedAndCopyNothing) {
  Bytes big = countedUp(12);
  GuardedBytes small(12);
  imgInfo info{};
  EXPECT_TRUE(cut(big, {2, 2, 0, 4}, 3, 4, 1, info, small.data()));
  expectInfo(info, 0, 1, 0, 4);
  EXPECT_TRUE(cut(big, {0, 3, 3, 3}, 3, 4, 3, info, small.data()));
  expectInfo(info, 0, 3, 3, 0);
  EXPECT_TRUE(cut(big, {3, 1, 4, 1}, 3, 4, 1, info, small.data()));
  expectInfo(info, 0, 1, -2, -3);
  EXPECT_EQ(small.values(), Bytes(12, kUntouched));
}

TEST(BlockCut, OtherChannelCountsAreDescribedButNotCopied) {
  Bytes big = countedUp(48);
  GuardedBytes small(48);
  for (int channels : {-1, 0, 2, 4}) {
    imgInfo info{};
    EXPECT_TRUE(cut(big, {0, 3, 0, 4}, 3, 4, channels, info, small.data()));
    expectInfo(info, 0, channels, 3, 4);
  }
  EXPECT_EQ(small.values(), Bytes(48, kUntouched));
}

TEST(BlockWrite, UsesTheRowLengthOfTheSmallImage) {
  Bytes small = {1, 2, 3, 99, 4, 5, 6, 99};  // rows of four, three of them written
  GuardedBytes big(20);
  EXPECT_TRUE(write(small, 4, {1, 3, 2, 5}, 4, 5, 1, big.data()));
  const unsigned char x = kUntouched;
  EXPECT_EQ(big.values(), (Bytes{x, x, x, x, x,  //
                                 x, x, 1, 2, 3,  //
                                 x, x, 4, 5, 6,  //
                                 x, x, x, x, x}));
  EXPECT_TRUE(big.intact());
}

TEST(BlockWrite, RefusesWhatReachesBeyondTheBigImage) {
  Bytes small = countedUp(20);
  GuardedBytes big(12);
  for (const Rect rect : {Rect{0, 4, 0, 4}, Rect{0, 3, 0, 5}, Rect{4, 4, 0, 0}}) {
    EXPECT_EQ(standardOutputOf([&] { EXPECT_FALSE(write(small, 5, rect, 3, 4, 1, big.data())); }),
              kRefusal);
  }
  EXPECT_EQ(big.values(), Bytes(12, kUntouched));
  EXPECT_EQ(standardOutputOf([&] {
              EXPECT_TRUE(write(small, 4, {0, 3, 0, 4}, 3, 4, 1, big.data()));
            }),
            "");
  EXPECT_EQ(big.values(), countedUp(12));
}

TEST(BlockWrite, EmptyRangesAndOtherChannelCountsCopyNothing) {
  Bytes small = countedUp(48);
  GuardedBytes big(48);
  EXPECT_TRUE(write(small, 4, {2, 2, 0, 4}, 3, 4, 1, big.data()));
  EXPECT_TRUE(write(small, 4, {2, 1, 0, 4}, 3, 4, 3, big.data()));
  EXPECT_TRUE(write(small, 4, {0, 3, 2, 2}, 3, 4, 1, big.data()));
  for (int channels : {-1, 0, 2, 4}) {
    EXPECT_TRUE(write(small, 4, {0, 3, 0, 4}, 3, 4, channels, big.data()));
  }
  EXPECT_EQ(big.values(), Bytes(48, kUntouched));
}

TEST(BlockCopy, RefusalIs45BytesAndALineEnd) { EXPECT_EQ(kRefusal.size(), 46U); }

TEST(BlockCopy, NullPointersAreRefusedWithOneLine) {
  Bytes image = countedUp(4);
  imgInfo info{1, 2, 3, 4};
  const std::string output = standardOutputOf([&] {
    EXPECT_FALSE(
        willBigImgAssignRowColToSmallImg(nullptr, 0, 1, 0, 1, 2, 2, 1, info, image.data()));
    EXPECT_FALSE(
        willBigImgAssignRowColToSmallImg(image.data(), 0, 1, 0, 1, 2, 2, 1, info, nullptr));
    EXPECT_FALSE(
        willSmallImgToBigImgAssignRowCol(nullptr, 1, 1, 0, 1, 0, 1, 2, 2, 1, image.data()));
    EXPECT_FALSE(
        willSmallImgToBigImgAssignRowCol(image.data(), 1, 1, 0, 1, 0, 1, 2, 2, 1, nullptr));
  });
  EXPECT_EQ(output, kRefusal + kRefusal + kRefusal + kRefusal);
  EXPECT_EQ(image, countedUp(4));
  expectInfo(info, 1, 2, 3, 4);
}

TEST(BlockCopy, MovesRandomBlocksOfEveryWidth) {
  Random random(81);
  for (int cols = 0; cols <= 70; ++cols) {
    const int channels = random.between(0, 1) == 0 ? 1 : 3;
    const int row0 = random.between(0, 3), col0 = random.between(0, 9);
    const Rect rect = {row0, row0 + random.between(0, 4), col0, col0 + cols};
    const int bigRows = rect.row1 + random.between(0, 2),
              bigCols = rect.col1 + random.between(0, 5);
    SCOPED_TRACE(testing::Message() << "seed 81: cols " << cols << ", channels " << channels);
    Bytes big = random.bytes(area(bigRows, bigCols, channels) + 1);
    const Bytes fresh = random.bytes(area(rect.rows(), cols, channels));

    Bytes expectedSmall;
    Bytes expectedBig(big.size(), kUntouched);
    for (int r = 0; r < rect.rows(); ++r) {
      for (int k = 0; k < cols * channels; ++k) {
        const std::size_t inBig =
            at(row0 + r, 0, bigCols * channels) + static_cast<std::size_t>(col0 * channels + k);
        expectedSmall.push_back(big[inBig]);
        expectedBig[inBig] = fresh[at(r, k, cols * channels)];
      }
    }

    imgInfo info{};
    GuardedBytes small(fresh.size()), target(big.size());
    EXPECT_TRUE(cut(big, rect, bigRows, bigCols, channels, info, small.data()));
    EXPECT_EQ(small.values(), expectedSmall);
    expectInfo(info, 0, channels, rect.rows(), cols);
    Bytes source = fresh;
    source.push_back(0);
    EXPECT_TRUE(write(source, cols, rect, bigRows, bigCols, channels, target.data()));
    EXPECT_EQ(target.values(), expectedBig);
    EXPECT_TRUE(small.intact() && target.intact());
  }
}

}  // namespace
