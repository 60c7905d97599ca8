// SPDX-License-Identifier: Apache-2.0
// The mosaic is full once it has as many pixels as the host allowed.
#include <gtest/gtest.h>

#include "framequilt/tuning.h"
#include "tests/run/captures.h"

namespace {

class FullMosaic : public testing::Test {
 protected:
  static constexpr int kRows = 240, kCols = 320;

  static RunSettings limitedTo(int maxRow, int maxCol) {
    RunSettings settings;
    settings.maxRow = maxRow;
    settings.maxCol = maxCol;
    return settings;
  }

  Frame frameAt(int x) const { return scene_.cut(x, 150, kRows, kCols); }

  int resultWithin(int maxRow, int maxCol) const {
    CaptureRun run(limitedTo(maxRow, maxCol));
    return run.first(frameAt(200), frameAt(300)).result;
  }

 private:
  Scene scene_{560, 700, 1, 11};
};

TEST_F(FullMosaic, AtTheNumberOfPixelsThatItStartsWith) {
  EXPECT_EQ(resultWithin(6000, 6000), 1);
  EXPECT_EQ(resultWithin(6000, 6001), 0);
  EXPECT_EQ(resultWithin(20000, 20000), 0);
}

TEST_F(FullMosaic, CountsPixelsRatherThanSides) {
  EXPECT_EQ(resultWithin(1, 36000000), 1);
  EXPECT_EQ(resultWithin(1, 36000001), 0);
  EXPECT_EQ(resultWithin(0, 0), 1);
}

TEST_F(FullMosaic, LimitWrapsAtThirtyTwoBits) {
  EXPECT_EQ(resultWithin(65536, 65536), 1);
  EXPECT_EQ(resultWithin(50000, 50000), 1);  // -1794967296
  EXPECT_EQ(resultWithin(46340, 46340), 0);
}

TEST_F(FullMosaic, StillTakesFrames) {
  CaptureRun run(limitedTo(6000, 6000));
  EXPECT_TRUE(run.first(frameAt(200), frameAt(300)).joined());
  const FrameOutcome next = run.next(frameAt(380));
  EXPECT_EQ(next.result, 1);
  EXPECT_TRUE(next.joined());
}

TEST_F(FullMosaic, DoesNotHideAFailedFrame) {
  CaptureRun run(limitedTo(6000, 6000));
  run.first(frameAt(200), frameAt(300));
  EXPECT_EQ(run.next(Frame(kRows, kCols, 1, 128)).result, -1);
}

TEST(WideFrames, FillTheMosaicByGrowingIt) {
  constexpr int kRows = 240, kCols = 4000;
  const Scene scene(kRows, 5000, 1, 12);
  RunSettings settings;
  settings.cols = kCols;
  settings.maxRow = 6000;
  settings.maxCol = 10000;
  const auto outcomeOfStep = [&](int dx) {
    CaptureRun run(settings);
    FrameOutcome outcome = run.first(scene.cut(0, 0, kRows, kCols), scene.cut(dx, 0, kRows, kCols));
    EXPECT_TRUE(outcome.joined());
    return outcome;
  };
  const FrameOutcome inside = outcomeOfStep(999);
  EXPECT_EQ(inside.mosaic.cols, 6000);
  EXPECT_EQ(inside.result, 0);
  // The frame's last column is the mosaic's last.
  const FrameOutcome touching = outcomeOfStep(1000);
  EXPECT_EQ(touching.mosaic.cols, 10000);
  EXPECT_EQ(touching.mosaic.rows, 6000);
  EXPECT_EQ(touching.result, 1);
  EXPECT_EQ(touching.bottomRight.x, 6000);
}

}  // namespace
