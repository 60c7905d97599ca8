// SPDX-License-Identifier: Apache-2.0
// Noise-free captures: every frame has to land exactly where the camera was.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "framequilt/tuning.h"
#include "tests/run/captures.h"
#include "tests/support/scoped_value.h"

namespace {

class RoundTripCapture : public testing::TestWithParam<CaptureKind> {};

INSTANTIATE_TEST_SUITE_P(, RoundTripCapture, testing::ValuesIn(everyKind()),
                         [](const auto& instance) { return instance.param.name(); });

TEST_P(RoundTripCapture, LandsWhereTheCameraWasAndShowsTheScene) {
  const CaptureKind& kind = GetParam();
  const ScopedValue<int> scaleOfRun(scale, kind.scale);
  const RoundTrip capture(kind);
  CaptureRun run(kind.settings());
  const std::vector<FrameOutcome> outcomes = capture.play(run);

  const SPoint origin = firstPosition(kind.settings(), kind.scale) - RoundTrip::corner(0);
  for (int i = 1; i < RoundTrip::kFrames; ++i) {
    SCOPED_TRACE("frame " + std::to_string(i));
    const FrameOutcome& outcome = outcomes[static_cast<std::size_t>(i - 1)];
    const SPoint step = RoundTrip::corner(i) - RoundTrip::corner(i - 1);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.flags.stitch_flags, 1);
    EXPECT_EQ(outcome.flags.offsetX, step.x);
    EXPECT_EQ(outcome.flags.offsetY, step.y);
    EXPECT_GE(outcome.flags.matchNum, 11);
    EXPECT_EQ(outcome.flags.position, origin + RoundTrip::corner(i));
  }

  const FrameOutcome& last = outcomes.back();
  EXPECT_EQ(last.mosaic.rows, 6000);
  EXPECT_EQ(last.mosaic.cols, 6000);
  EXPECT_EQ(last.topLeft, origin + (SPoint{104, 150}));
  EXPECT_EQ(last.bottomRight, origin + (SPoint{640, 480}));
  std::vector<Placement> frames;
  for (int i = 0; i < RoundTrip::kFrames; ++i) {
    frames.push_back({RoundTrip::corner(i), 240, 320});
  }
  expectMosaicShows(last.mosaic, capture.workingPicture(), origin, frames);
}

TEST(RunPlacement, TheRecordKeepsEachFramesNumbers) {
  const CaptureKind kind = {1, 1, 1, 0};
  const RoundTrip capture(kind);
  CaptureRun run(kind.settings());
  for (const FrameOutcome& outcome : capture.play(run)) {
    // No overlap is measured in this mode.
    EXPECT_EQ(outcome.flags.brightOne, 0.0F);
    EXPECT_EQ(outcome.flags.brightTwo, 0.0F);
    EXPECT_EQ(outcome.flags.definitionOne, 0.0F);
    EXPECT_EQ(outcome.flags.definitionTwo, 0.0F);
  }
}

TEST(RunPlacement, FramesAreLeftAloneUnlessTheOverlapIsMeasured) {
  const RoundTrip capture({3, 1, 1, 0});
  CaptureRun run(CaptureKind{3, 1, 1, 0}.settings());
  const FrameOutcome outcome = run.first(capture.frame(0), capture.frame(1));
  EXPECT_EQ(outcome.frame, capture.frame(1).bytes);
  EXPECT_EQ(outcome.reference, capture.frame(0).bytes);
}

TEST(RunPlacement, MeasuringTheOverlapLeavesItsTwoPartsInTheFrames) {
  const RoundTrip capture({3, 1, 0, 0});
  CaptureRun run(CaptureKind{3, 1, 0, 0}.settings());
  const FrameOutcome outcome = run.first(capture.frame(0), capture.frame(1));
  ASSERT_EQ(outcome.flags.offsetX, 120);
  // Both parts show the same 200 columns of the scene, packed.
  const Frame frame = capture.frame(1);
  Frame overlap(240, 200, 3);
  for (int r = 0; r < 240; ++r) {
    for (int c = 0; c < 200; ++c) {
      for (int k = 0; k < 3; ++k) overlap.at(r, c, k) = frame.at(r, c, k);
    }
  }
  const auto packed = static_cast<std::ptrdiff_t>(overlap.bytes.size());
  EXPECT_EQ(std::vector<unsigned char>(outcome.frame.begin(), outcome.frame.begin() + packed),
            overlap.bytes);
  EXPECT_EQ(
      std::vector<unsigned char>(outcome.reference.begin(), outcome.reference.begin() + packed),
      overlap.bytes);
  // Behind them the frames are untouched.
  EXPECT_TRUE(std::equal(outcome.frame.begin() + packed, outcome.frame.end(),
                         frame.bytes.begin() + packed));
}

TEST(RunPlacement, BlackBytesOfTheFirstReferenceBecomeOne) {
  Frame reference = RoundTrip({3, 1, 1, 0}).frame(0);
  reference.at(5, 7, 1) = 0;
  reference.at(239, 319, 2) = 0;
  const Frame frame = RoundTrip({3, 1, 1, 0}).frame(1);
  CaptureRun run(RunSettings::forFrame(frame));
  const FrameOutcome outcome = run.first(reference, frame);
  EXPECT_EQ(outcome.mosaic.ptr(2880 + 5, 2840 + 7)[1], 1);
  EXPECT_EQ(outcome.reference[(5 * 320 + 7) * 3 + 1], 1);
  EXPECT_EQ(outcome.reference[(239 * 320 + 319) * 3 + 2], 1);
}

TEST(RunPlacement, FramesWithNoiseLandWithinTheToleranceOfTheConsensus) {
  const RoundTrip capture({1, 1, 1, 0});
  CaptureRun run(CaptureKind{1, 1, 1, 0}.settings());
  const auto noisy = [&](int i) {
    return withNoise(capture.frame(i), 4, static_cast<std::uint64_t>(100 + i));
  };
  SPoint former = RoundTrip::corner(0);
  for (int i = 1; i < RoundTrip::kFrames; ++i) {
    SCOPED_TRACE("frame " + std::to_string(i));
    const FrameOutcome outcome = i == 1 ? run.first(noisy(0), noisy(1)) : run.next(noisy(i));
    ASSERT_TRUE(outcome.joined());
    const SPoint step = RoundTrip::corner(i) - former;
    EXPECT_NEAR(outcome.flags.offsetX, step.x, 4);
    EXPECT_NEAR(outcome.flags.offsetY, step.y, 4);
    former = RoundTrip::corner(i);
  }
}

}  // namespace
