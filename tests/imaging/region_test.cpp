// SPDX-License-Identifier: Apache-2.0
#include "imaging/region.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <string>

#include "tests/imaging/guarded.h"
#include "tests/imaging/reference.h"
#include "tests/support/captured_output.h"
#include "tests/support/random_images.h"

namespace {

const std::string kRefusal =
    "ptr is null or endBigRow \xA1\xA2"
    "endBigCol overSize\n";

constexpr unsigned char kUntouched = GuardedBytes::kUntouched;

/// A half-open rectangle.
struct Rect {
  int row0, row1, col0, col1;
  int rows() const { return row1 - row0; }
  int cols() const { return col1 - col0; }
};

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

void expectInfo(const imgInfo& info, int reserved, int channels, int rows, int cols) {
  EXPECT_EQ(info.reserved, reserved);
  EXPECT_EQ(info.channels, channels);
  EXPECT_EQ(info.rows, rows);
  EXPECT_EQ(info.cols, cols);
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

/// A colour image whose pixels hold their own row and column, and a mark of the image.
Bytes located(int rows, int cols, unsigned char mark) {
  Bytes image;
  for (int r = 0; r < rows; ++r) {
    for (int c = 0; c < cols; ++c) {
      image.insert(image.end(),
                   {static_cast<unsigned char>(r), static_cast<unsigned char>(c), mark});
    }
  }
  return image;
}

Bytes locatedBlock(Rect rect, unsigned char mark) {
  Bytes block;
  for (int r = rect.row0; r < rect.row1; ++r) {
    for (int c = rect.col0; c < rect.col1; ++c) {
      block.insert(block.end(),
                   {static_cast<unsigned char>(r), static_cast<unsigned char>(c), mark});
    }
  }
  return block;
}

constexpr int kMosaicSide = 40;

/// Cuts the overlap of a frame at (5, 7) in a 40 x 40 mosaic and compares it with two rectangles.
void expectOverlap(int rows, int cols, int offsetX, int offsetY, Rect inMosaic, Rect inFrame) {
  SCOPED_TRACE(testing::Message() << rows << " x " << cols << " by " << offsetX << ", " << offsetY);
  Bytes mosaic = located(kMosaicSide, kMosaicSide, 1), frame = located(rows, cols, 2);
  const std::size_t room = std::max<std::size_t>(locatedBlock(inMosaic, 1).size(), 1);
  GuardedBytes mosaicPart(room), framePart(room);
  imgInfo mosaicPartInfo{11, 0, 0, 0}, framePartInfo{12, 0, 0, 0};

  takeOutOverLapImageFromMoasicImage(mosaic.data(), frame.data(), {0, 3, kMosaicSide, kMosaicSide},
                                     {0, 3, rows, cols}, {5, 7}, offsetX, offsetY, mosaicPartInfo,
                                     framePartInfo, mosaicPart.data(), framePart.data());

  EXPECT_EQ(mosaicPart.values(), locatedBlock(inMosaic, 1));
  EXPECT_EQ(framePart.values(), locatedBlock(inFrame, 2));
  EXPECT_TRUE(mosaicPart.intact() && framePart.intact());
  expectInfo(mosaicPartInfo, 11, 3, inMosaic.rows(), inMosaic.cols());
  expectInfo(framePartInfo, 12, 3, inFrame.rows(), inFrame.cols());
}

TEST(OverlapCut, WithoutAnOffsetIsTheWholeFrame) {
  expectOverlap(10, 10, 0, 0, {7, 17, 5, 15}, {0, 10, 0, 10});
}

TEST(OverlapCut, FollowsTheSignsOfTheOffset) {
  expectOverlap(10, 12, 3, 2, {9, 17, 8, 17}, {0, 8, 0, 9});
  expectOverlap(10, 12, -3, -2, {7, 15, 5, 14}, {2, 10, 3, 12});
  expectOverlap(10, 12, 3, -2, {7, 15, 8, 17}, {2, 10, 0, 9});
  expectOverlap(10, 12, -3, 2, {9, 17, 5, 14}, {0, 8, 3, 12});
}

TEST(OverlapCut, TenByTenFrameMovedLeftAndDown) {
  expectOverlap(10, 10, -3, 2, {9, 17, 5, 12}, {0, 8, 3, 10});
}

TEST(OverlapCut, MovesAlongOneAxis) {
  expectOverlap(10, 10, 0, -4, {7, 13, 5, 15}, {4, 10, 0, 10});
  expectOverlap(10, 10, -4, 0, {7, 17, 5, 11}, {0, 10, 4, 10});
  expectOverlap(10, 10, 9, 9, {16, 17, 14, 15}, {0, 1, 0, 1});
}

TEST(OverlapCut, FrameMovedByItsOwnSizeOverlapsNowhere) {
  Bytes mosaic = located(kMosaicSide, kMosaicSide, 1), frame = located(10, 10, 2);
  for (int offset : {10, -10, 14, -14}) {
    imgInfo mosaicPartInfo{}, framePartInfo{};
    GuardedBytes mosaicPart(1), framePart(1);
    takeOutOverLapImageFromMoasicImage(
        mosaic.data(), frame.data(), {0, 3, kMosaicSide, kMosaicSide}, {0, 3, 10, 10}, {15, 15},
        offset, offset, mosaicPartInfo, framePartInfo, mosaicPart.data(), framePart.data());
    const int side = 10 - std::abs(offset);
    expectInfo(mosaicPartInfo, 0, 3, side, side);
    expectInfo(framePartInfo, 0, 3, side, side);
    EXPECT_EQ(mosaicPart.values(), Bytes(1, kUntouched));
    EXPECT_EQ(framePart.values(), Bytes(1, kUntouched));
  }
}

TEST(OverlapCut, FailureOfTheMosaicDoesNotStopTheFrame) {
  Bytes mosaic = located(12, 12, 1), frame = located(10, 10, 2);
  GuardedBytes mosaicPart(300), framePart(300);
  imgInfo mosaicPartInfo{1, 0, 6, 7}, framePartInfo{};
  EXPECT_EQ(standardOutputOf([&] {
              takeOutOverLapImageFromMoasicImage(
                  mosaic.data(), frame.data(), {0, 3, 12, 12}, {0, 3, 10, 10}, {5, 7}, 0, 0,
                  mosaicPartInfo, framePartInfo, mosaicPart.data(), framePart.data());
            }),
            kRefusal);
  EXPECT_EQ(mosaicPart.values(), Bytes(300, kUntouched));
  expectInfo(mosaicPartInfo, 1, 3, 6, 7);  // the channel count is set before the cut
  EXPECT_EQ(framePart.values(), frame);
  expectInfo(framePartInfo, 0, 3, 10, 10);
}

TEST(OverlapCut, TakesTheChannelsOfEachImage) {
  Bytes mosaic = located(20, 20, 1), frame(100, 9);
  GuardedBytes mosaicPart(300), framePart(100);
  imgInfo mosaicPartInfo{}, framePartInfo{};
  takeOutOverLapImageFromMoasicImage(mosaic.data(), frame.data(), {0, 3, 20, 20}, {0, 1, 10, 10},
                                     {5, 7}, 0, 0, mosaicPartInfo, framePartInfo, mosaicPart.data(),
                                     framePart.data());
  EXPECT_EQ(mosaicPart.values(), locatedBlock({7, 17, 5, 15}, 1));
  EXPECT_EQ(framePart.values(), frame);
  EXPECT_TRUE(mosaicPart.intact() && framePart.intact());
}

TEST(OverlapCut, NullPointersLeaveEverythingAlone) {
  Bytes image = located(10, 10, 1);
  for (int missing = 0; missing < 4; ++missing) {
    SCOPED_TRACE(missing);
    GuardedBytes mosaicPart(300), framePart(300);
    imgInfo mosaicPartInfo{1, 2, 3, 4}, framePartInfo{5, 6, 7, 8};
    EXPECT_EQ(standardOutputOf([&] {
                takeOutOverLapImageFromMoasicImage(
                    missing == 0 ? nullptr : image.data(), missing == 1 ? nullptr : image.data(),
                    {0, 3, 10, 10}, {0, 3, 10, 10}, {0, 0}, 0, 0, mosaicPartInfo, framePartInfo,
                    missing == 2 ? nullptr : mosaicPart.data(),
                    missing == 3 ? nullptr : framePart.data());
              }),
              "ptr is null\n");
    EXPECT_EQ(mosaicPart.values(), Bytes(300, kUntouched));
    EXPECT_EQ(framePart.values(), Bytes(300, kUntouched));
    expectInfo(mosaicPartInfo, 1, 2, 3, 4);
    expectInfo(framePartInfo, 5, 6, 7, 8);
  }
}

}  // namespace
