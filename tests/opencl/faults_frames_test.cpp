// SPDX-License-Identifier: Apache-2.0
// Every OpenCL call of a frame fails once.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "framequilt/framequilt.h"
#include "opencl/OpenclJointState.h"
#include "tests/opencl/device_fixture.h"
#include "tests/opencl/fault_run.h"
#include "tests/opencl/fault_steps.h"

namespace layer = framequilt::opencl_layer;

namespace {

using Lanes = std::set<Lane>;
const Lanes kCallerOnly = {Lane::kCaller};
const Lanes kEveryLane = {Lane::kCaller, Lane::kCornersOfReference, Lane::kCornersOfNewFrame};

/// The frame that fails: of the call that begins the mosaic, or the next one.
enum class Offered { kFirst, kLater };

/// One run on the card whose state before the frame can be brought about again and again.
class FrameWalk {
 public:
  FrameWalk(const SmallCapture& capture, Offered offered)
      : capture_(capture), offered_(offered), run_(capture) {
    begin();
    device_.keep();
  }

  /// Without a fault; the walk's measure.
  void offerUnfailed() {
    layer::resetRecords();
    texts_.take();
    const FrameOutcome outcome = offer();
    ASSERT_TRUE(outcome.joined());
    usualTexts_ = texts_.take();
    unfailed_ = digestOf(outcome);
    steps_ = stepsOf(layer::trace(), layer::threadNumber(), capture_.stitchMode);
    ASSERT_EQ(static_cast<long>(steps_.size()), layer::callCount());
    objects_ = layer::live().count();
  }

  const std::vector<Step>& steps() const { return steps_; }

  void fail(const Step& step) {
    putBackState();
    layer::resetRecords();
    texts_.take();
    layer::failCallOf(threadOf(step.lane), step.nth, CL_OUT_OF_RESOURCES);
    const FrameOutcome outcome = offer();
    EXPECT_EQ(layer::faultsWaiting(), 0) << "the call was not reached";

    const Consequence expected = consequenceOf(step);
    expectConsequence(expected, outcome);
    EXPECT_EQ(layer::live().count(), objects_);
    EXPECT_EQ(layer::live().mappings(), 0);
    if (expected.outcome != Outcome::kJoined) offerAgain(step, expected.outcome);
    EXPECT_EQ(layer::violations(), std::vector<std::string>{});
    layer::clearFaults();
  }

  /// Nothing stays behind, neither on the card nor for a run on the host.
  void stop() {
    run_.stop();
    device_.expectAlone();
  }

 private:
  void begin() {
    ASSERT_TRUE(run_.start());
    threads_ = {one_pidCL, two_pidCL};
    ASSERT_TRUE(run_.first().joined());
    if (offered_ == Offered::kLater) before_ = RunState::ofRun(capture_);
  }

  void putBackState() {
    if (offered_ == Offered::kLater) {
      before_.putBack();
    } else {
      flagsCL = {};
      flagsCL.position = firstPosition(capture_.settings());
    }
  }

  FrameOutcome offer() { return offered_ == Offered::kFirst ? run_.first() : run_.next(2); }

  pthread_t threadOf(Lane lane) const {
    if (lane == Lane::kCaller) return pthread_self();
    return lane == Lane::kCornersOfReference ? threads_.first : threads_.second;
  }

  void expectConsequence(const Consequence& expected, const FrameOutcome& outcome) {
    EXPECT_EQ(beyond(usualTexts_, texts_.take()), expected.texts);
    switch (expected.outcome) {
      case Outcome::kThreadEnds:
      case Outcome::kFails:
        EXPECT_EQ(outcome.result, -1);
        break;
      case Outcome::kRefused:
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.flags.stitch_flags, 0);
        break;
      case Outcome::kJoined:
        EXPECT_EQ(digestOf(outcome), unfailed_);
        return;
    }
    EXPECT_FALSE(outcome.joined());
    if (offered_ == Offered::kLater) {
      expectSameMosaicAndReference(RunState::ofRun(capture_), before_);
    }
  }

  /// The same frame is joined as if it came for the first time.
  void offerAgain(const Step& step, Outcome outcome) {
    if (outcome == Outcome::kThreadEnds) {
      const bool first = step.lane == Lane::kCornersOfReference;
      EXPECT_TRUE(first ? threadOneCalcFlagCL : threadTwoCalcFlagCL);
      EXPECT_FALSE(first ? threadTwoCalcFlagCL : threadOneCalcFlagCL);
      run_.stop();
      device_.expectAlone();
      device_.handOver();
      begin();
    }
    // A mosaic that a refused blend has begun can be gone on with.
    const bool begun = offered_ == Offered::kFirst && step.stage == Stage::kBlend;
    const FrameOutcome again = begun ? run_.next(1) : offer();
    EXPECT_EQ(digestOf(again), unfailed_) << "offered again";
  }

  SmallCapture capture_;
  Offered offered_;
  SpokenTexts texts_;
  KeptDevice device_;
  DrivenRun run_;
  std::pair<pthread_t, pthread_t> threads_;
  RunState before_{};
  std::vector<Step> steps_;
  std::vector<std::string> usualTexts_;
  std::uint64_t unfailed_ = 0;
  int objects_ = 0;
};

class FrameFaults : public EitherMemory {
 protected:
  void walk(const SmallCapture& capture, Offered offered, const Lanes& lanes) {
    {
      FrameWalk walk(capture, offered);
      ASSERT_NO_FATAL_FAILURE(walk.offerUnfailed());
      for (const Step& step : walk.steps()) {
        if (lanes.count(step.lane) == 0) continue;
        SCOPED_TRACE(step.name());
        walk.fail(step);
      }
      walk.stop();
    }
    const SpokenTexts unheard;
    const std::uint64_t card = digestOfWholeRun(capture, true);
    withoutCard();
    EXPECT_EQ(digestOfWholeRun(capture, false), card);
    releaseKeptBuffer();
  }
};

constexpr SmallCapture kColourByMotion = {3, 1, false};
constexpr SmallCapture kGrayByMotion = {1, 1, false};
constexpr SmallCapture kColourByOverlap = {3, 0, false};
constexpr SmallCapture kGrayByOverlapHinted = {1, 0, true};

TEST_P(FrameFaults, FirstColourFrameByMotion) {
  walk(kColourByMotion, Offered::kFirst, kCallerOnly);
}
TEST_P(FrameFaults, FirstGrayFrameByMotion) { walk(kGrayByMotion, Offered::kFirst, kEveryLane); }
TEST_P(FrameFaults, LaterColourFrameByMotion) {
  walk(kColourByMotion, Offered::kLater, kEveryLane);
}
TEST_P(FrameFaults, LaterGrayFrameByMotion) { walk(kGrayByMotion, Offered::kLater, kCallerOnly); }
TEST_P(FrameFaults, LaterColourFrameByOverlap) {
  walk(kColourByOverlap, Offered::kLater, kCallerOnly);
}
TEST_P(FrameFaults, LaterHintedGrayFrameByOverlap) {
  walk(kGrayByOverlapHinted, Offered::kLater, kEveryLane);
}

FRAMEQUILT_IN_EITHER_MEMORY(FrameFaults);

}  // namespace
