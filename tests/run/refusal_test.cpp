// SPDX-License-Identifier: Apache-2.0
// Frames that cannot be placed leave the mosaic as it was, and the capture goes on.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <opencv2/core.hpp>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "cpu/run_state.h"
#include "framequilt/tuning.h"
#include "imaging/imaging_state.h"
#include "tests/run/captures.h"
#include "tests/support/scoped_value.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr int kRows = 240;
constexpr int kCols = 320;
constexpr SPoint kBeforeLast = {320, 150};
constexpr SPoint kLast = {320, 230};

/// A frame that does not continue one at kBeforeLast.
struct BadFrame {
  const char* name;
  Frame (*of)(const Scene& scene);
  int result;
};

const BadFrame kBadFrames[] = {
    // It has an offset, only one too small to be worth blending.
    {"Still",
     [](const Scene& scene) { return scene.cut(kBeforeLast.x, kBeforeLast.y, kRows, kCols); }, 0},
    {"Jump", [](const Scene&) { return Scene(kRows, kCols, 3, 99).picture(); }, -1},
    {"Blank", [](const Scene&) { return Frame(kRows, kCols, 3, 128); }, -1},
    {"Black", [](const Scene&) { return Frame(kRows, kCols, 3, 0); }, -1},
    {"Noise", [](const Scene&) { return noiseFrame(kRows, kCols, 3, 5); }, -1},
};

void PrintTo(const BadFrame& bad, std::ostream* out) { *out << bad.name; }

/// A bad frame and the stitch mode.
class Refusals : public testing::TestWithParam<std::tuple<BadFrame, int>> {};

INSTANTIATE_TEST_SUITE_P(, Refusals,
                         testing::Combine(testing::ValuesIn(kBadFrames), testing::Values(1, 0)),
                         [](const auto& instance) {
                           return std::get<0>(instance.param).name +
                                  std::string(std::get<1>(instance.param) == 0 ? "Overlap"
                                                                               : "Motion");
                         });

TEST_P(Refusals, LeaveTheMosaicAloneAndTheNextFrameGoesOn) {
  const auto& [bad, stitchMode] = GetParam();
  const Scene scene(560, 700, 3, 11);
  const auto frameAt = [&](SPoint at) { return scene.cut(at.x, at.y, kRows, kCols); };
  RunSettings settings;
  settings.channels = 3;
  settings.stitchMode = stitchMode;
  CaptureRun run(settings);
  const FrameOutcome before = run.first(frameAt({200, 150}), frameAt(kBeforeLast));
  ASSERT_TRUE(before.joined());
  const cv::Mat mosaicBefore = before.mosaic.clone();

  const FrameOutcome refused = run.next(bad.of(scene));
  EXPECT_FALSE(refused.joined());
  EXPECT_EQ(refused.result, bad.result);
  EXPECT_EQ(refused.flags.position, before.flags.position);
  EXPECT_EQ(refused.topLeft, before.topLeft);
  EXPECT_EQ(refused.bottomRight, before.bottomRight);
  ASSERT_EQ(refused.mosaic.size(), mosaicBefore.size());
  EXPECT_EQ(cv::norm(refused.mosaic, mosaicBefore, cv::NORM_INF), 0.0);

  const FrameOutcome next = run.next(frameAt(kLast));
  EXPECT_EQ(next.result, 0);
  EXPECT_TRUE(next.joined());
  EXPECT_EQ(next.flags.position, before.flags.position + (kLast - kBeforeLast));
}

Bytes referenceOfRun() { return {theSorImageTemp, theSorImageTemp + kRows * kCols}; }

TEST(Reference, IsTheFusedRegionAfterABlend) {
  const Scene scene(560, 700, 1, 11);
  CaptureRun run(RunSettings{});
  const FrameOutcome outcome =
      run.first(scene.cut(200, 150, kRows, kCols), scene.cut(300, 150, kRows, kCols));
  ASSERT_TRUE(outcome.joined());
  const SPoint at = outcome.flags.position;
  Bytes region;
  for (int r = 0; r < kRows; ++r) {
    const unsigned char* row = outcome.mosaic.ptr(at.y + r, at.x);
    region.insert(region.end(), row, row + kCols);
  }
  EXPECT_EQ(referenceOfRun(), region);
}

TEST(Reference, StaysTheOldOneWhereAFrameQualifiedButWasNotBlended) {
  const Scene scene(560, 700, 1, 11);
  CaptureRun run(RunSettings{});
  const Frame reference = scene.cut(200, 150, kRows, kCols);
  // A tenth of the width is too little.
  const FrameOutcome outcome = run.first(reference, scene.cut(232, 150, kRows, kCols));
  ASSERT_EQ(outcome.flags.stitch_flags, 1);
  ASSERT_FALSE(outcome.joined());
  EXPECT_EQ(referenceOfRun(), reference.bytes);
  // Small steps add up.
  const FrameOutcome next = run.next(scene.cut(264, 150, kRows, kCols));
  EXPECT_TRUE(next.joined());
  EXPECT_EQ(next.flags.offsetX, 64);
}

TEST(Reference, IsNotKeptUntilAFirstPairQualifies) {
  const Scene scene(560, 700, 1, 11);
  CaptureRun run(RunSettings{});
  const Frame reference = scene.cut(200, 150, kRows, kCols);
  EXPECT_EQ(run.first(reference, Frame(kRows, kCols, 1, 128)).result, -1);
  EXPECT_EQ(referenceOfRun(), Bytes(reference.bytes.size(), 0));
  // Good by itself, but there is nothing to hold it against.
  EXPECT_EQ(run.next(scene.cut(300, 150, kRows, kCols)).result, -1);
  EXPECT_TRUE(run.first(reference, scene.cut(300, 150, kRows, kCols)).joined());
}

TEST(Reference, HoldsTheOverlapOfAFrameThatDidNotQualifyByIt) {
  const ScopedValue<float> never(brightThCpu0, 0.0F);
  const Scene scene(560, 700, 1, 11);
  RunSettings settings;
  settings.stitchMode = 0;
  settings.staticDynamicFlag = 1;
  CaptureRun run(settings);
  const Frame reference = scene.cut(200, 150, kRows, kCols);
  run.first(reference, scene.cut(300, 150, kRows, kCols));
  ASSERT_EQ(referenceOfRun(), Bytes(reference.bytes.size(), 0));

  // As a host does that keeps its own copy.
  std::memcpy(theSorImageTemp, reference.bytes.data(), reference.bytes.size());
  const FrameOutcome refused = run.next(scene.cut(300, 150, kRows, kCols));
  ASSERT_EQ(refused.result, 0);
  ASSERT_EQ(refused.flags.stitch_flags, 0);
  Bytes expected = reference.bytes;
  // The mosaic's 220 columns of the overlap lie packed at the start.
  std::size_t out = 0;
  for (int r = 0; r < kRows; ++r) {
    for (int c = 100; c < kCols; ++c) expected[out++] = reference.at(r, c);
  }
  EXPECT_EQ(referenceOfRun(), expected);
}

TEST(LastFrameSeen, FollowsEveryFrameThatIsJudgedByMotion) {
  const Scene scene(560, 700, 1, 11);
  const Frame reference = scene.cut(200, 150, kRows, kCols);
  const Frame frame = scene.cut(300, 150, kRows, kCols);
  const auto lastSeen = [] { return Bytes(thedestImage_pre, thedestImage_pre + kRows * kCols); };
  {
    CaptureRun run(RunSettings{});
    run.first(reference, frame);
    EXPECT_EQ(lastSeen(), frame.bytes);
    // A frame without an offset is not judged.
    run.next(Frame(kRows, kCols, 1, 128));
    EXPECT_EQ(lastSeen(), frame.bytes);
  }
  RunSettings settings;
  settings.stitchMode = 0;
  CaptureRun run(settings);
  run.first(reference, frame);
  EXPECT_EQ(lastSeen(), reference.bytes);
}

}  // namespace
