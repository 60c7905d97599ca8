// SPDX-License-Identifier: Apache-2.0
// Calls that a host should not make: nothing crashes, and the next good call works.
#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <utility>

#include "framequilt/framequilt.h"
#include "tests/run/captures.h"
#include "tests/support/recorded_reports.h"

namespace {

constexpr int kRows = 240;
constexpr int kCols = 320;

/// One call with whatever it is given.
struct Call {
  SPoint topLeft = {7, 7}, bottomRight = {7, 7};
  cv::Mat mosaic;
  stitchflags record = {};
  int result;

  Call(Frame* reference, Frame* frame, int frameIndex)
      : result(stichingImagedJoint(reference == nullptr ? nullptr : reference->bytes.data(),
                                   frame == nullptr ? nullptr : frame->bytes.data(), frameIndex, 1,
                                   0, 0, false, topLeft, bottomRight, mosaic, record)) {}
};

class Protocol : public testing::Test {
 protected:
  void TearDown() override { uinitJoint(); }

  static bool start(int rows = kRows, int cols = kCols) {
    return initJoint(rows, cols, 1, 1, 20000, 20000, 1, 0);
  }

  RecordedReports reports_;
  Frame reference_ = Scene(560, 700, 1, 11).cut(200, 150, kRows, kCols);
  Frame frame_ = Scene(560, 700, 1, 11).cut(300, 150, kRows, kCols);
};

TEST_F(Protocol, FrameWithoutAStartFails) {
  for (const int index : {0, 1, 2}) {
    const Call call(&reference_, &frame_, index);
    EXPECT_EQ(call.result, -1);
    EXPECT_TRUE(call.mosaic.empty());
  }
}

TEST_F(Protocol, FrameAfterAStopFails) {
  start();
  EXPECT_EQ(Call(&reference_, &frame_, 0).result, 0);
  uinitJoint();
  EXPECT_EQ(Call(nullptr, &frame_, 1).result, -1);
  EXPECT_EQ(Call(&reference_, &frame_, 0).result, -1);
}

TEST_F(Protocol, StopsMayComeAtAnyTime) {
  EXPECT_TRUE(uinitJoint());
  EXPECT_TRUE(uinitJoint());
  start();
  EXPECT_TRUE(uinitJoint());
  EXPECT_TRUE(uinitJoint());
}

TEST_F(Protocol, LaterFrameComesFirst) {
  start();
  const Call early(nullptr, &frame_, 1);
  EXPECT_EQ(early.result, -1);
  EXPECT_TRUE(early.mosaic.empty());
  EXPECT_EQ(Call(&reference_, &frame_, 0).record.offsetX, 100);
}

TEST_F(Protocol, FrameIsNull) {
  start();
  reports_.takeOfCaller();
  EXPECT_EQ(Call(&reference_, nullptr, 0).result, -1);
  EXPECT_EQ(reports_.ofCaller(),
            (Lines{"thedestImage is NULL", "stitchingImageOffset ptr is null"}));
  EXPECT_EQ(Call(&reference_, &frame_, 0).result, 0);
}

TEST_F(Protocol, ReferenceIsNull) {
  start();
  reports_.takeOfCaller();
  EXPECT_EQ(Call(nullptr, &frame_, 0).result, -1);
  EXPECT_EQ(reports_.ofCaller(), (Lines{"stitchingImageOffset ptr is null"}));
  EXPECT_EQ(Call(&reference_, &frame_, 0).result, 0);
}

TEST_F(Protocol, FailedFrameStillHandsOutTheRun) {
  start();
  const Call good(&reference_, &frame_, 0);
  const Call failed(nullptr, nullptr, 1);
  EXPECT_EQ(failed.result, -1);
  EXPECT_EQ(failed.mosaic.data, good.mosaic.data);
  EXPECT_EQ(failed.topLeft, good.topLeft);
  EXPECT_EQ(failed.bottomRight, good.bottomRight);
  EXPECT_EQ(failed.record.position, good.record.position);
  EXPECT_EQ(failed.record.matchNum, good.record.matchNum);
  EXPECT_EQ(failed.record.stitch_flags, 1);
}

TEST_F(Protocol, FirstFrameTwiceStartsTheMosaicAnew) {
  start();
  EXPECT_EQ(Call(&reference_, &frame_, 0).bottomRight, (SPoint{3260, 3120}));
  const Call again(&frame_, &reference_, 0);
  EXPECT_EQ(again.result, 0);
  EXPECT_EQ(again.record.offsetX, -100);
  EXPECT_EQ(again.record.position, (SPoint{2840 - 100, 2880}));
  EXPECT_EQ(again.topLeft, (SPoint{2740, 2880}));
  EXPECT_EQ(again.bottomRight, (SPoint{3160, 3120}));
  // Of the 420 columns that the first pair had filled on the other side none is left.
  EXPECT_EQ(cv::countNonZero(again.mosaic), 420 * 240);
}

TEST_F(Protocol, ReferenceAndFrameAreTheSameBuffer) {
  start();
  Frame same = reference_;
  const Call call(&same, &same, 0);
  EXPECT_EQ(call.result, 0);
  EXPECT_EQ(call.record.offsetX, 0);
  EXPECT_EQ(call.record.offsetY, 0);
}

TEST_F(Protocol, StartTwiceTakesTheSecondShape) {
  start(100, 100);
  start();
  EXPECT_EQ(Call(&reference_, &frame_, 0).record.offsetX, 100);
  EXPECT_EQ(Call(nullptr, &frame_, 1).result, 0);
}

TEST_F(Protocol, RunsOfDifferentShapesFollowEachOther) {
  const Scene scene(900, 1200, 1, 3);
  for (const auto& [rows, cols] : {std::pair{480, 640}, {240, 320}, {300, 200}, {480, 640}}) {
    start(rows, cols);
    Frame first = scene.cut(100, 100, rows, cols);
    Frame second = scene.cut(180, 140, rows, cols);
    const Call call(&first, &second, 0);
    EXPECT_NEAR(call.record.offsetX, 80, 2);
    EXPECT_NEAR(call.record.offsetY, 40, 2);
    EXPECT_EQ(call.topLeft, (SPoint{3000 - cols / 2, 3000 - rows / 2}));
    EXPECT_EQ(call.bottomRight, call.record.position + (SPoint{cols, rows}));
    uinitJoint();
  }
}

TEST_F(Protocol, MosaicOutlivesTheRun) {
  start();
  const Call call(&reference_, &frame_, 0);
  uinitJoint();
  EXPECT_EQ(call.mosaic.rows, 6000);
  EXPECT_EQ(*call.mosaic.ptr(2880, 2840), reference_.at(0, 0));
}

TEST_F(Protocol, FrameTallerThanTheFirstMosaicIsNotPlaced) {
  start(6002, 24);
  Frame tall(6002, 24, 1, 9);
  const Call call(&tall, &tall, 0);
  EXPECT_EQ(call.result, -1);
  EXPECT_EQ(reports_.ofCaller().back(), "willSmallImgToBigImgAssignRowCol failed");
  EXPECT_EQ(call.record.position, (SPoint{3000 - 12, -1}));
  EXPECT_EQ(cv::countNonZero(call.mosaic), 0);
}

TEST_F(Protocol, FrameWiderThanTheFirstMosaicIsNotPlaced) {
  start(24, 6002);
  Frame wide(24, 6002, 1, 9);
  EXPECT_EQ(Call(&wide, &wide, 0).result, -1);
  EXPECT_EQ(Call(nullptr, &wide, 1).result, -1);
}

TEST_F(Protocol, FrameAsLargeAsTheFirstMosaicIsPlaced) {
  start(16, 6000);
  Frame wide(16, 6000, 1, 9);
  const Call call(&wide, &wide, 0);
  EXPECT_EQ(call.topLeft, (SPoint{0, 2992}));
  EXPECT_EQ(call.bottomRight, (SPoint{6000, 3008}));
  EXPECT_EQ(cv::countNonZero(call.mosaic), 16 * 6000);
}

}  // namespace
