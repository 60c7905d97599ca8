// SPDX-License-Identifier: Apache-2.0
// A short run on an emulator that watches every access of every kernel, in the order and with the
// buffers of a real run. The frames are as small as frames with enough corners can be.
#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <vector>

#include "framequilt/framequilt.h"
#include "tests/opencl/device_fixture.h"
#include "tests/support/capture_run.h"
#include "tests/support/points.h"
#include "tests/support/scene.h"

namespace {

namespace layer = framequilt::opencl_layer;

constexpr int kRows = 144;
constexpr int kCols = 176;

class EmulatedRun : public DeviceFixture, public testing::WithParamInterface<int> {
 protected:
  // The emulator ends the process when two threads are inside it.
  EmulatedRun() { layer::serialise(true); }

  static std::vector<FrameOutcome> play(const RunSettings& settings, bool onCard) {
    onCard ? withCard() : withoutCard();
    const Scene scene(kRows + 60, kCols + 80, settings.channels, 8);
    CaptureRun run(settings);
    EXPECT_EQ(openclDeviceFlag, onCard);
    std::vector<FrameOutcome> outcomes;
    outcomes.push_back(run.first(scene.cut(0, 0, kRows, kCols), scene.cut(30, 16, kRows, kCols)));
    outcomes.push_back(run.next(scene.cut(62, 40, kRows, kCols), {32, 24, true}));
    return outcomes;
  }

  static void expectHostsMosaic(const RunSettings& settings) {
    const std::vector<FrameOutcome> card = play(settings, true);
    const std::vector<FrameOutcome> host = play(settings, false);
    ASSERT_EQ(card.size(), host.size());
    for (std::size_t i = 0; i < card.size(); ++i) {
      SCOPED_TRACE("frame " + std::to_string(i + 1));
      EXPECT_TRUE(host[i].joined());
      EXPECT_EQ(card[i].flags.position, host[i].flags.position);
      EXPECT_EQ(card[i].flags.matchNum, host[i].flags.matchNum);
    }
    EXPECT_EQ(cv::norm(card.back().mosaic, host.back().mosaic, cv::NORM_INF), 0.0);
  }
};

RunSettings settingsFor(int channels, int stitchMode) {
  RunSettings settings;
  settings.rows = kRows;
  settings.cols = kCols;
  settings.channels = channels;
  settings.stitchMode = stitchMode;
  return settings;
}

TEST_P(EmulatedRun, ByMotionMakesTheHostsMosaic) { expectHostsMosaic(settingsFor(GetParam(), 1)); }
TEST_P(EmulatedRun, ByOverlapMakesTheHostsMosaic) { expectHostsMosaic(settingsFor(GetParam(), 0)); }

INSTANTIATE_TEST_SUITE_P(Channels, EmulatedRun, testing::Values(1, 3));

}  // namespace
