// SPDX-License-Identifier: Apache-2.0
// Where a card differs from the host, on purpose.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "cpu/run_state.h"
#include "framequilt/framequilt.h"
#include "framequilt/tuning.h"
#include "opencl/OpenclJointState.h"
#include "tests/opencl/frame_rules.h"

namespace {

using namespace frame_rules;

class HostDifferences : public Fixture {};
FRAMEQUILT_IN_EITHER_MEMORY(HostDifferences);

/// The overlaps at `kStep` show the same texture, the second `offset` brighter.
std::pair<Frame, Frame> texturesApart(int offset) {
  const Frame reference = noise(5, 1, 1, 100);
  Frame frame = reference;
  for (int r = 0; r < kRows - kStep.dy; ++r) {
    for (int c = 0; c < kCols - kStep.dx; ++c) {
      frame.at(r, c) = reference.at(r + kStep.dy, c + kStep.dx);
    }
  }
  return {reference, withGain(frame, 256, offset)};
}

TEST_P(HostDifferences, OverlapLimitsOnACardAreThoseOfAStaticSceneForEveryScene) {
  const auto [reference, brighter] = texturesApart(60);
  for (const int scene : {kStatic, kDynamic}) {
    {
      const auto run = openRun(On::kCard, settingsFor(kOverlap, scene));
      EXPECT_EQ(run->first(reference, brighter).flags.stitch_flags, 1);
      EXPECT_EQ(brightThCL, 128.0F);
      EXPECT_EQ(defintThCL, 128.0F);
      EXPECT_EQ(brightThCL0, 40.0F);
      EXPECT_EQ(defintThCL0, 30.0F);
    }
    const auto run = openRun(On::kHost, settingsFor(kOverlap, scene));
    EXPECT_EQ(run->first(reference, brighter).flags.stitch_flags, scene == kStatic ? 1 : 0);
  }
  const auto [dark, atLimit] = texturesApart(128);
  const auto run = openRun(On::kCard, settingsFor(kOverlap, kStatic));
  const stitchflags flags = run->first(dark, atLimit).flags;
  EXPECT_EQ(flags.brightTwo - flags.brightOne, 128.0F);
  EXPECT_EQ(flags.stitch_flags, 0);
}

TEST_P(HostDifferences, FlagOnACardIsClearedByAFrameWhoseOverlapDoesNotQualify) {
  const Frame dark = noise(5, 1, 1, 60);
  const Frame bright = noise(6, 1, 200, 255);
  for (const On backend : {On::kCard, On::kHost}) {
    const auto run = openRun(backend, settingsFor(kOverlap, kStatic));
    EXPECT_EQ(run->first(dark, dark).flags.stitch_flags, 1);
    const FrameOutcome outcome = run->next(bright);
    ASSERT_GT(outcome.flags.brightTwo - outcome.flags.brightOne, 128.0F);
    EXPECT_EQ(outcome.flags.stitch_flags, backend == On::kCard ? 0 : 1);
    EXPECT_EQ(outcome.joined(), backend == On::kHost);
  }
}

TEST_P(HostDifferences, SharpnessOnACardIsTakenFromTheWholeOverlap) {
  // Texture on the right only, where the host does not look.
  Frame frame = noise(8, 1, 1, 255);
  for (int r = 0; r < kRows; ++r) {
    for (int c = 0; c < kCols - 120; ++c) frame.at(r, c) = 100;
  }
  float sharpness[2];
  for (const On backend : {On::kCard, On::kHost}) {
    const auto run = openRun(backend, settingsFor(kOverlap, kStatic));
    sharpness[backend == On::kCard ? 0 : 1] = run->first(frame, frame).flags.definitionOne;
  }
  EXPECT_GT(sharpness[0], 10.0F);
  EXPECT_GT(std::fabs(sharpness[0] - sharpness[1]), 2.0F);
}

TEST_P(HostDifferences, CallersFrameItselfIsFusedOnACard) {
  for (const On backend : {On::kCard, On::kHost}) {
    const auto run = openRun(backend, settingsFor(kMotion, kStatic, 3));
    const Frame changed = noise(9, 3, 1, 255);
    Frame reference = flat(90, 3);
    Frame frame = reference;
    // The host has taken its copy by then.
    whileEstimating([&](unsigned char*, unsigned char*) {
      std::copy(changed.bytes.begin(), changed.bytes.end(), frame.bytes.begin());
    });
    Call outcome = {};
    EXPECT_EQ(stichingImagedJoint(reference.bytes.data(), frame.bytes.data(), 0, 1, 0, 0, false,
                                  outcome.left, outcome.right, outcome.mosaic, outcome.flags),
              0);
    ASSERT_EQ(outcome.flags.position,
              firstPosition(settingsFor(kMotion, kStatic)) + (SPoint{kStep.dx, kStep.dy}));
    // Where only the new frame lies.
    const int row = kRows - 1;
    const int col = kCols - 1;
    const unsigned char* const pixel =
        outcome.mosaic.ptr(outcome.flags.position.y + row, outcome.flags.position.x + col);
    const unsigned char seen[3] = {pixel[0], pixel[1], pixel[2]};
    for (int k = 0; k < 3; ++k) {
      EXPECT_EQ(seen[k], backend == On::kCard ? changed.at(row, col, k) : 90);
    }
    EXPECT_EQ(frame.bytes, changed.bytes);
  }
}

TEST_P(HostDifferences, EveryNewFrameIsPreJudgedOnACardWhereItLies) {
  for (const int channels : {1, 3}) {
    for (const On backend : {On::kCard, On::kHost}) {
      const auto run = openRun(backend, settingsFor(kMotion, kStatic, channels));
      const Frame reference = noise(11, channels);
      const FrameOutcome first = run->first(reference, noise(12, channels));
      EXPECT_EQ(first.reference, withoutZeros(reference.bytes));
      const auto expectFrame = [&](const FrameOutcome& outcome, const Frame& given) {
        EXPECT_EQ(outcome.frame, backend == On::kCard ? withoutZeros(given.bytes) : given.bytes);
        EXPECT_NE(withoutZeros(given.bytes), given.bytes);
      };
      expectFrame(first, noise(12, channels));
      expectFrame(run->next(noise(13, channels)), noise(13, channels));
      // Also one that is then refused.
      scriptOffset({.found = false});
      expectFrame(run->next(noise(14, channels)), noise(14, channels));
      scriptOffset(kStep);
    }
  }
}

TEST_P(HostDifferences, FramesAreNotOverwrittenByTheirOverlapOnACard) {
  for (const int channels : {1, 3}) {
    for (const On backend : {On::kCard, On::kHost}) {
      const auto run = openRun(backend, settingsFor(kOverlap, kStatic, channels));
      const Frame reference = noise(15, channels, 1, 255);
      const Frame frame = noise(16, channels, 1, 255);
      const FrameOutcome outcome = run->first(reference, frame);
      EXPECT_EQ(outcome.reference == reference.bytes, backend == On::kCard);
      EXPECT_EQ(outcome.frame == frame.bytes, backend == On::kCard);
    }
  }
}

TEST_P(HostDifferences, ReferenceSurvivesAFrameThatIsRefusedByItsOverlapOnACard) {
  const Frame dark = noise(5, 1, 1, 60);
  const Frame bright = noise(6, 1, 200, 255);
  {
    const auto run = openRun(On::kCard, settingsFor(kOverlap, kStatic));
    run->first(dark, dark);
    const Bytes reference = referenceOnCard();
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(run->next(bright).flags.stitch_flags, 0);
      EXPECT_EQ(referenceOnCard(), reference);
    }
  }
  // The host's flag must not have been raised before.
  const auto run = openRun(On::kHost, settingsFor(kOverlap, kStatic));
  const auto reference = [] { return Bytes(theSorImageTemp, theSorImageTemp + kRows * kCols); };
  EXPECT_EQ(run->first(dark, bright).flags.stitch_flags, 0);
  const Bytes former = reference();
  EXPECT_EQ(run->next(bright).flags.stitch_flags, 0);
  EXPECT_NE(reference(), former);
}

}  // namespace
