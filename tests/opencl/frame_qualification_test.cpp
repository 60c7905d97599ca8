// SPDX-License-Identifier: Apache-2.0
// Which frames a card takes, and which it refuses.
#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <string>

#include "framequilt/tuning.h"
#include "opencl/OpenclJointState.h"
#include "tests/opencl/frame_rules.h"
#include "tests/opencl/journal.h"
#include "tests/support/scoped_value.h"

namespace {

using namespace frame_rules;

namespace layer = framequilt::opencl_layer;

class FrameQualification : public Fixture {};
FRAMEQUILT_IN_EITHER_MEMORY(FrameQualification);

// --- Qualification ---

TEST_P(FrameQualification, FrameThatMovesTooMuchLeavesMosaicAndReference) {
  const auto run = openRun(On::kCard, settingsFor(kMotion, kDynamic));
  const FrameOutcome first = run->first(flat(100), flat(104));
  EXPECT_EQ(motionValueThCL, motionValueThCL0);
  EXPECT_TRUE(first.joined());
  const cv::Mat mosaic = boxOf(first).clone();
  const Bytes reference = referenceOnCard();

  const FrameOutcome refused = run->next(flat(109));
  EXPECT_EQ(refused.result, 0);
  EXPECT_EQ(refused.flags.stitch_flags, 0);
  EXPECT_FALSE(refused.joined());
  EXPECT_EQ(refused.topLeft, first.topLeft);
  EXPECT_EQ(refused.bottomRight, first.bottomRight);
  EXPECT_TRUE(equal(boxOf(refused), mosaic));
  EXPECT_EQ(referenceOnCard(), reference);

  // The motion is measured from frame to frame.
  EXPECT_EQ(run->next(flat(113)).flags.stitch_flags, 1);
}

TEST_P(FrameQualification, StaticSceneMayMoveByAnythingButTheWholeRange) {
  const auto run = openRun(On::kCard, settingsFor(kMotion, kStatic));
  EXPECT_EQ(run->first(flat(1), flat(255)).flags.stitch_flags, 1);
  EXPECT_EQ(motionValueThCL, 255);
}

TEST_P(FrameQualification, MotionLimitIsTheHostsToSet) {
  const auto run = openRun(On::kCard, settingsFor(kMotion, kDynamic));
  const ScopedValue<int> limit(motionValueThCL0, 20);
  EXPECT_EQ(run->first(flat(100), flat(119)).flags.stitch_flags, 1);
  EXPECT_EQ(run->next(flat(139)).flags.stitch_flags, 0);
}

TEST_P(FrameQualification, UnmeasuredMotionQualifiesUnderNoLimit) {
  const auto run = openRun(On::kCard, settingsFor(kMotion, kDynamic));
  const ScopedValue<int> limit(motionValueThCL0, 1000);
  EXPECT_EQ(run->first(flat(100), flat(100)).flags.stitch_flags, 1);
  // After the pre-judgement come the measure's launches.
  layer::failCall("clEnqueueNDRangeKernel", 2, CL_OUT_OF_RESOURCES);
  const FrameOutcome unmeasured = run->next(flat(100));
  EXPECT_EQ(unmeasured.result, 0);
  EXPECT_EQ(unmeasured.flags.stitch_flags, 0);
  layer::clearFaults();
  EXPECT_EQ(run->next(flat(100)).flags.stitch_flags, 1);
}

TEST_P(FrameQualification, FrameWithoutOffsetKeepsTheFlagAndTheLastFrame) {
  const auto run = openRun(On::kCard, settingsFor(kMotion, kDynamic));
  run->first(flat(100), flat(100));
  const Bytes reference = referenceOnCard();
  scriptOffset({.dx = 1, .dy = 1, .matchNum = 3, .found = false});
  const FrameOutcome lost = run->next(flat(200));
  EXPECT_EQ(lost.result, -1);
  EXPECT_EQ(lost.flags.stitch_flags, 1);
  EXPECT_EQ(lost.flags.offsetX, kStep.dx);
  EXPECT_EQ(lost.flags.matchNum, 3);
  EXPECT_FALSE(lost.joined());
  EXPECT_EQ(referenceOnCard(), reference);
  scriptOffset(kStep);
  EXPECT_EQ(run->next(flat(100)).flags.stitch_flags, 1);
}

TEST_P(FrameQualification, OffsetOfTheWholeFrameDoesNotQualifyByItsOverlap) {
  const auto run = openRun(On::kCard, settingsFor(kOverlap, kStatic));
  const Frame texture = noise(5, 1, 1, 100);
  EXPECT_EQ(run->first(texture, texture).flags.stitch_flags, 1);
  for (const ScriptedOffset& offset : {ScriptedOffset{kCols, 0}, {0, kRows}, {kCols, kRows}}) {
    scriptOffset(offset);
    const FrameOutcome outcome = run->next(texture);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.flags.stitch_flags, 0);
  }
  scriptOffset(kStep);
  EXPECT_EQ(run->next(texture).flags.stitch_flags, 1);
}

// --- The hint ---

TEST_P(FrameQualification, HintIsStoredBeforeTheOffsetIsEstimated) {
  const auto run = openRun(On::kCard, settingsFor(kMotion, kStatic));
  int seen = 0;
  const auto expectHint = [&](int dx, int dy, bool holds) {
    whileEstimating([&seen, dx, dy, holds](unsigned char*, unsigned char*) {
      ++seen;
      EXPECT_EQ(clMotordx, dx);
      EXPECT_EQ(clMotordy, dy);
      EXPECT_EQ(clMotorflage, holds);
    });
  };
  expectHint(-7, 8, true);
  run->first(flat(9), flat(9), {-7, 8, true});
  expectHint(5, -6, false);
  run->next(flat(9), {5, -6, false});
  EXPECT_EQ(seen, 2);
}

// --- Null and out of order ---

TEST_P(FrameQualification, NullIsRefusedWithItsLines) {
  const auto run = openRun(On::kCard, settingsFor(kMotion, kStatic));
  const FrameOutcome first = run->first(flat(70), flat(70));
  Journal journal;
  Frame frame = flat(60);
  unsigned char* const some = frame.bytes.data();
  const std::string refused = "stitchingImageOffset ptr is null";
  const std::string isNull = "thedestImage is NULL";
  const std::string startText = Journal::debug("stitchingImageOffsetCL 0");
  const auto expectRunState = [&](const Call& call) {
    EXPECT_EQ(call.result, -1);
    EXPECT_EQ(call.left, first.topLeft);
    EXPECT_EQ(call.right, first.bottomRight);
    EXPECT_EQ(call.mosaic.data, first.mosaic.data);
    EXPECT_EQ(call.flags.position, first.flags.position);
  };
  layer::resetRecords();
  expectRunState(callCard(some, nullptr, 0));
  EXPECT_EQ(journal.take(), (Entries{isNull, startText, refused}));
  expectRunState(callCard(nullptr, some, 0));
  EXPECT_EQ(journal.take(), (Entries{startText, refused}));
  expectRunState(callCard(nullptr, nullptr, 1));
  EXPECT_EQ(journal.take(), (Entries{isNull, Journal::debug("stitchingImageOffsetCL 1"), refused}));
  EXPECT_EQ(layer::callCount(), 0);
  EXPECT_EQ(frame.bytes, flat(60).bytes);
  // A later frame needs no reference from the caller.
  EXPECT_EQ(callCard(nullptr, some, 1).result, 0);
}

TEST_P(FrameQualification, NoFrameIsTakenBeforeAStartNorAfterAStop) {
  Frame frame = flat(0);
  const auto expectRefused = [&](int frameIndex) {
    Journal journal;
    layer::resetRecords();
    const Call call = callCard(frame.bytes.data(), frame.bytes.data(), frameIndex);
    EXPECT_EQ(call.result, -1);
    EXPECT_TRUE(call.mosaic.empty());
    EXPECT_EQ(journal.take().back(), "stitchingImageOffset ptr is null");
    EXPECT_EQ(layer::callCount(), 0);
    EXPECT_EQ(frame.bytes, flat(0).bytes);
  };
  expectRefused(0);
  expectRefused(1);
  {
    const auto run = openRun(On::kCard, settingsFor(kMotion, kStatic));
    EXPECT_EQ(run->first(flat(9), flat(9)).result, 0);
  }
  expectRefused(0);
  expectRefused(1);
}

TEST_P(FrameQualification, LaterFrameWithoutAFirstOneIsPlacedNowhereAsOnTheHost) {
  for (const int mode : {kMotion, kOverlap}) {
    for (const On backend : {On::kCard, On::kHost}) {
      const auto run = openRun(backend, settingsFor(mode, kStatic));
      const FrameOutcome outcome = run->next(noise(4, 1, 1, 255));
      EXPECT_EQ(outcome.result, 0);
      EXPECT_TRUE(outcome.mosaic.empty());
      EXPECT_EQ(outcome.topLeft, (SPoint{0, 0}));
      EXPECT_EQ(outcome.bottomRight, (SPoint{0, 0}));
      EXPECT_EQ(outcome.flags.position, (SPoint{0, 0}));
    }
  }
}

}  // namespace
