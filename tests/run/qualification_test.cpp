// SPDX-License-Identifier: Apache-2.0
// When a frame whose offset is known qualifies to be blended.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "framequilt/tuning.h"
#include "tests/run/captures.h"
#include "tests/run/scripted_offset.h"
#include "tests/support/random_images.h"
#include "tests/support/scoped_value.h"

namespace {

constexpr int kSide = 200;
/// The overlap at this offset is 132 x 132: its brightness is a mean of 64 x 64 samples, and so a
/// sum divided without rounding.
constexpr ScriptedOffset kOffset = {68, 68};

RunSettings settingsFor(int stitchMode, int staticDynamicFlag) {
  RunSettings settings;
  settings.rows = kSide;
  settings.cols = kSide;
  settings.stitchMode = stitchMode;
  settings.staticDynamicFlag = staticDynamicFlag;
  return settings;
}

Frame flat(int value) { return Frame(kSide, kSide, 1, value); }

/// Gray values 1..100 with enough structure to have a sharpness.
Frame texture() {
  Frame frame = flat(0);
  frame.bytes = Random(5).bytes(frame.bytes.size(), 1, 100);
  return frame;
}

/// `texture` as a camera sees it kOffset further on: the overlap shows the same.
Frame movedTexture() {
  const Frame from = texture();
  Frame frame = texture();
  for (int r = 0; r < kSide - kOffset.dy; ++r) {
    for (int c = 0; c < kSide - kOffset.dx; ++c) {
      frame.at(r, c) = from.at(r + kOffset.dy, c + kOffset.dx);
    }
  }
  return frame;
}

Frame brighter(int offset) { return withGain(movedTexture(), 256, offset); }

int flagByMotion(int staticDynamicFlag, int difference) {
  CaptureRun run(settingsFor(1, staticDynamicFlag));
  scriptOffset(kOffset);
  const FrameOutcome outcome = run.first(flat(100), flat(100 + difference));
  EXPECT_EQ(motionValueThCpu, staticDynamicFlag != 0 ? motionValueThCpu0 : 255);
  EXPECT_EQ(outcome.joined(), outcome.flags.stitch_flags == 1);
  return outcome.flags.stitch_flags;
}

stitchflags recordOfOverlap(int staticDynamicFlag, const Frame& frame) {
  CaptureRun run(settingsFor(0, staticDynamicFlag));
  scriptOffset(kOffset);
  return run.first(texture(), frame).flags;
}

TEST(Qualification, ADynamicSceneMayMoveByLessThanFiveGrayValues) {
  EXPECT_EQ(flagByMotion(1, 0), 1);
  EXPECT_EQ(flagByMotion(1, 4), 1);
  EXPECT_EQ(flagByMotion(1, 5), 0);
  EXPECT_EQ(flagByMotion(1, -5), 0);
  EXPECT_EQ(flagByMotion(-1, 5), 0);
}

TEST(Qualification, TheMotionLimitIsTheHostsToSet) {
  const ScopedValue<int> limit(motionValueThCpu0, 20);
  EXPECT_EQ(flagByMotion(1, 19), 1);
  EXPECT_EQ(flagByMotion(1, 20), 0);
}

TEST(Qualification, AStaticSceneMayMoveByAnythingButTheWholeRange) {
  CaptureRun run(settingsFor(1, 0));
  scriptOffset(kOffset);
  // Black becomes 1 in the reference, so that 254 is the difference here, and 255 in the next step.
  EXPECT_EQ(run.first(flat(0), flat(255)).flags.stitch_flags, 1);
  EXPECT_EQ(run.next(flat(0)).flags.stitch_flags, 0);
  EXPECT_EQ(run.next(flat(0)).flags.stitch_flags, 1);
}

TEST(Qualification, MotionClearsTheFlagAgain) {
  CaptureRun run(settingsFor(1, 1));
  scriptOffset(kOffset);
  EXPECT_EQ(run.first(flat(100), flat(100)).flags.stitch_flags, 1);
  EXPECT_EQ(run.next(flat(120)).flags.stitch_flags, 0);
  EXPECT_EQ(run.next(flat(120)).flags.stitch_flags, 1);
}

TEST(Qualification, AFrameWithoutOffsetKeepsTheFlagOfTheFrameBefore) {
  CaptureRun run(settingsFor(1, 1));
  scriptOffset(kOffset);
  run.first(flat(100), flat(100));
  scriptOffset({.dx = 1, .dy = 1, .matchNum = 3, .found = false});
  const FrameOutcome outcome = run.next(flat(200));
  EXPECT_EQ(outcome.result, -1);
  EXPECT_FALSE(outcome.joined());
  EXPECT_EQ(outcome.flags.stitch_flags, 1);
  EXPECT_EQ(outcome.flags.offsetX, kOffset.dx);
  EXPECT_EQ(outcome.flags.matchNum, 3);
}

TEST(Qualification, ADynamicSceneMayBrightenByLessThanForty) {
  const stitchflags below = recordOfOverlap(1, brighter(39));
  EXPECT_EQ(below.brightTwo - below.brightOne, 39.0F);
  EXPECT_LT(std::fabs(below.definitionOne - below.definitionTwo), 30.0F);
  EXPECT_EQ(below.stitch_flags, 1);
  EXPECT_EQ(brightThCpu, 40.0F);
  EXPECT_EQ(defintThCpu, 30.0F);

  const stitchflags at = recordOfOverlap(1, brighter(40));
  EXPECT_EQ(at.brightTwo - at.brightOne, 40.0F);
  EXPECT_EQ(at.stitch_flags, 0);
}

TEST(Qualification, AStaticSceneMayBrightenByLessThanHalfTheRange) {
  EXPECT_EQ(recordOfOverlap(0, brighter(127)).stitch_flags, 1);
  EXPECT_EQ(brightThCpu, 128.0F);
  EXPECT_EQ(defintThCpu, 128.0F);
  EXPECT_EQ(recordOfOverlap(0, brighter(128)).stitch_flags, 0);
}

TEST(Qualification, TheBrightnessLimitIsTheHostsToSet) {
  const ScopedValue<float> limit(brightThCpu0, 12.0F);
  EXPECT_EQ(recordOfOverlap(1, brighter(11)).stitch_flags, 1);
  EXPECT_EQ(recordOfOverlap(1, brighter(12)).stitch_flags, 0);
}

TEST(Qualification, TheSharpnessLimitIsTheHostsToSet) {
  // The same overlap with its contrast halved is less sharp.
  const Frame blurred = withGain(movedTexture(), 128, 20);
  const stitchflags record = recordOfOverlap(0, blurred);
  const float difference = std::fabs(record.definitionOne - record.definitionTwo);
  ASSERT_GT(difference, 1.0F);
  ASSERT_LT(std::fabs(record.brightOne - record.brightTwo), 40.0F);
  {
    const ScopedValue<float> limit(defintThCpu0, difference);
    EXPECT_EQ(recordOfOverlap(1, blurred).stitch_flags, 0);
  }
  const ScopedValue<float> limit(
      defintThCpu0, std::nextafter(difference, std::numeric_limits<float>::infinity()));
  EXPECT_EQ(recordOfOverlap(1, blurred).stitch_flags, 1);
}

TEST(Qualification, ALimitThatIsNoNumberRefusesEverything) {
  const ScopedValue<float> limit(brightThCpu0, std::numeric_limits<float>::quiet_NaN());
  EXPECT_EQ(recordOfOverlap(1, brighter(0)).stitch_flags, 0);
}

TEST(Qualification, AnOverlapTooNarrowForItsSharpnessDoesNotQualify) {
  // 40 columns are sampled to 20, and 21 are blanked at the edges.
  CaptureRun run(settingsFor(0, 0));
  scriptOffset({kSide - 40, 0});
  const stitchflags record = run.first(texture(), texture()).flags;
  EXPECT_TRUE(std::isnan(record.definitionOne));
  EXPECT_TRUE(std::isnan(record.definitionTwo));
  EXPECT_EQ(record.stitch_flags, 0);

  scriptOffset({kSide - 44, 0});
  EXPECT_FALSE(std::isnan(run.next(texture()).flags.definitionOne));
}

TEST(Qualification, FlatOverlapsAreEquallyBrightAndSharp) {
  CaptureRun run(settingsFor(0, 1));
  scriptOffset(kOffset);
  const stitchflags record = run.first(flat(100), flat(100)).flags;
  EXPECT_EQ(record.brightOne, 100.0F);
  EXPECT_EQ(record.brightTwo, 100.0F);
  // The sample ends in the middle of its plane: that edge is all there is.
  EXPECT_GT(record.definitionOne, 10.0F);
  EXPECT_EQ(record.definitionOne, record.definitionTwo);
  EXPECT_EQ(record.stitch_flags, 1);
}

TEST(Qualification, TheOverlapOnlyEverRaisesTheFlag) {
  CaptureRun run(settingsFor(0, 1));
  scriptOffset(kOffset);
  EXPECT_EQ(run.first(texture(), brighter(0)).flags.stitch_flags, 1);
  // Far too bright, and flat: by itself it would not qualify, but it is blended now.
  const FrameOutcome outcome = run.next(flat(250));
  EXPECT_GT(outcome.flags.brightTwo - outcome.flags.brightOne, 40.0F);
  EXPECT_EQ(outcome.flags.stitch_flags, 1);
  EXPECT_TRUE(outcome.joined());
}

TEST(Qualification, ARunStartClearsTheFlagOfTheOverlap) {
  EXPECT_EQ(recordOfOverlap(1, brighter(0)).stitch_flags, 1);
  EXPECT_EQ(recordOfOverlap(1, brighter(100)).stitch_flags, 0);
}

TEST(Qualification, AnOffsetOfAWholeFrameNeverRaisesTheFlagOfTheOverlap) {
  for (const ScriptedOffset offset : {ScriptedOffset{kSide, 0}, ScriptedOffset{0, kSide}}) {
    CaptureRun run(settingsFor(0, 0));
    scriptOffset(offset);
    EXPECT_EQ(run.first(texture(), texture()).flags.stitch_flags, 0);
    scriptOffset({0, 0});
    EXPECT_EQ(run.first(texture(), texture()).flags.stitch_flags, 1);
    scriptOffset(offset);
    const FrameOutcome outcome = run.next(texture());
    EXPECT_EQ(outcome.flags.stitch_flags, 1);
    EXPECT_FALSE(outcome.joined());
  }
}

TEST(Qualification, ANegativeOffsetQualifiesByItsOverlap) {
  CaptureRun run(settingsFor(0, 0));
  scriptOffset({-kOffset.dx, -kOffset.dy});
  EXPECT_EQ(run.first(movedTexture(), texture()).flags.stitch_flags, 1);
}

}  // namespace
