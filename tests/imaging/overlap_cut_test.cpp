// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <string>

#include "imaging/region.h"
#include "tests/imaging/region_blocks.h"
#include "tests/support/captured_output.h"
#include "tests/support/guarded.h"

namespace {

const std::string kRefusal =
    "ptr is null or endBigRow \xA1\xA2"
    "endBigCol overSize\n";

constexpr unsigned char kUntouched = GuardedBytes::kUntouched;

/// A block of a colour image whose pixels hold their own row and column, and a mark of the image.
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

Bytes located(int rows, int cols, unsigned char mark) {
  return locatedBlock({0, rows, 0, cols}, mark);
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

TEST(OverlapCut, OffsetsThatNoFrameHasTakeNothing) {
  Bytes image = located(10, 10, 1);
  for (const int offset :
       {std::numeric_limits<int>::min(), std::numeric_limits<int>::max(), -10, 10}) {
    SCOPED_TRACE(offset);
    GuardedBytes mosaicPart(300), framePart(300);
    imgInfo mosaicPartInfo{}, framePartInfo{};
    takeOutOverLapImageFromMoasicImage(image.data(), image.data(), {0, 3, 10, 10}, {0, 3, 10, 10},
                                       {0, 0}, offset, offset, mosaicPartInfo, framePartInfo,
                                       mosaicPart.data(), framePart.data());
    EXPECT_EQ(mosaicPart.values(), Bytes(300, kUntouched));
    EXPECT_EQ(framePart.values(), Bytes(300, kUntouched));
  }
}

}  // namespace
