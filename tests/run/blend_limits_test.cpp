// SPDX-License-Identifier: Apache-2.0
// When a frame that qualified is blended.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "framequilt/tuning.h"
#include "tests/run/captures.h"
#include "tests/run/scripted_offset.h"
#include "tests/support/scoped_value.h"

namespace {

constexpr char kMarker[] = "kkkkkkkkkkkkkkkkkkkkkkk";

RunSettings settingsFor(int rows, int cols) {
  RunSettings settings;
  settings.rows = rows;
  settings.cols = cols;
  settings.frameScale = scale;
  return settings;
}

/// The outcome of the first frame of a run of rows x cols frames that is found at `offset`.
FrameOutcome outcomeAt(int rows, int cols, ScriptedOffset offset) {
  CaptureRun run(settingsFor(rows, cols));
  const Frame frame(rows, cols, 1, 100);
  scriptOffset(offset);
  FrameOutcome outcome = run.first(frame, frame);
  EXPECT_EQ(outcome.flags.stitch_flags, 1);
  EXPECT_EQ(outcome.result, 0);
  return outcome;
}

bool isBlended(int rows, int cols, int dx, int dy) {
  const FrameOutcome outcome = outcomeAt(rows, cols, {dx, dy});
  const SPoint start = firstPosition(settingsFor(rows, cols), scale);
  EXPECT_EQ(outcome.flags.position, outcome.joined() ? start + (SPoint{dx, dy}) : start);
  return outcome.joined();
}

TEST(BlendLimits, ATenthOfTheWidthIsTooLittle) {
  EXPECT_FALSE(isBlended(240, 320, 32, 0));
  EXPECT_FALSE(isBlended(240, 320, -32, 0));
  EXPECT_TRUE(isBlended(240, 320, 33, 0));
  EXPECT_TRUE(isBlended(240, 320, -33, 0));
}

TEST(BlendLimits, NineTenthsOfTheWidthAreTooMuch) {
  EXPECT_FALSE(isBlended(240, 320, 288, 0));
  EXPECT_FALSE(isBlended(240, 320, -288, 0));
  EXPECT_TRUE(isBlended(240, 320, 287, 0));
  EXPECT_TRUE(isBlended(240, 320, -287, 0));
}

TEST(BlendLimits, ATenthOfTheHeightIsTooLittle) {
  EXPECT_FALSE(isBlended(240, 320, 0, 24));
  EXPECT_FALSE(isBlended(240, 320, 0, -24));
  EXPECT_TRUE(isBlended(240, 320, 0, 25));
  EXPECT_TRUE(isBlended(240, 320, 0, -25));
}

TEST(BlendLimits, NineTenthsOfTheHeightAreTooMuch) {
  EXPECT_FALSE(isBlended(240, 320, 0, 216));
  EXPECT_FALSE(isBlended(240, 320, 0, -216));
  EXPECT_TRUE(isBlended(240, 320, 0, 215));
  EXPECT_TRUE(isBlended(240, 320, 0, -215));
}

TEST(BlendLimits, OnlyTheLargerOffsetCounts) {
  EXPECT_TRUE(isBlended(240, 320, 33, 1));
  EXPECT_TRUE(isBlended(240, 320, 1, 25));
  // 26 rows would do, but 27 columns are less than a tenth of the width.
  EXPECT_FALSE(isBlended(240, 320, 27, 26));
}

TEST(BlendLimits, EqualOffsetsAreHeldAgainstTheHeight) {
  EXPECT_TRUE(isBlended(240, 320, 25, 25));
  EXPECT_TRUE(isBlended(240, 320, -25, 25));
  EXPECT_FALSE(isBlended(320, 240, 25, 25));
  EXPECT_FALSE(isBlended(240, 320, 216, 216));
}

TEST(BlendLimits, AStillFrameIsNotBlended) { EXPECT_FALSE(isBlended(240, 320, 0, 0)); }

TEST(BlendLimits, TenPairsAreTooFew) {
  EXPECT_FALSE(outcomeAt(240, 320, {100, 0, 10}).joined());
  EXPECT_TRUE(outcomeAt(240, 320, {100, 0, 11}).joined());
}

TEST(BlendLimits, TheSmallestOverlapIsTheHostsToSet) {
  const ScopedValue<float> least(ImageOverlap_minCpu, 0.5F);
  EXPECT_TRUE(isBlended(240, 320, 159, 0));
  EXPECT_FALSE(isBlended(240, 320, 160, 0));
}

TEST(BlendLimits, TheLargestOverlapIsTheHostsToSet) {
  const ScopedValue<float> most(ImageOverlap_maxCpu, 0.75F);
  EXPECT_FALSE(isBlended(240, 320, 80, 0));
  EXPECT_TRUE(isBlended(240, 320, 81, 0));
}

TEST(BlendLimits, ABlendIsMarkedByOneLineWithTheLargerOffset) {
  const auto markers = [](const FrameOutcome& outcome) {
    return std::count_if(outcome.lines.begin(), outcome.lines.end(), [](const std::string& line) {
      return line.compare(0, 1, kMarker, 1) == 0;
    });
  };
  const FrameOutcome across = outcomeAt(240, 320, {-150, 40});
  EXPECT_EQ(markers(across), 1);
  EXPECT_EQ(across.lines.back(), std::string(kMarker) + "150");
  const FrameOutcome down = outcomeAt(240, 320, {40, -99});
  EXPECT_EQ(markers(down), 1);
  EXPECT_EQ(down.lines.back(), std::string(kMarker) + "99");
  EXPECT_EQ(markers(outcomeAt(240, 320, {32, 0})), 0);
}

TEST(BlendLimits, TheWorkingSizeIsTheMeasure) {
  const ScopedValue<int> half(scale, 2);
  EXPECT_FALSE(isBlended(480, 640, 32, 0));
  EXPECT_TRUE(isBlended(480, 640, 33, 0));
}

}  // namespace
