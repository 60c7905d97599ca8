// SPDX-License-Identifier: Apache-2.0
// Start, frames and stop through the entry points, with a fault at every point.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <opencv2/core.hpp>

#include "cpu/run_state.h"
#include "framequilt/framequilt.h"
#include "framequilt/tuning.h"
#include "tests/faults/fault_captures.h"
#include "tests/faults/fault_sweep.h"
#include "tests/support/digest.h"
#include "tests/support/scoped_value.h"

namespace {

/// Start, the pair, each further frame, stop.
class Steps {
 public:
  explicit Steps(const FaultCapture& capture) : capture_(capture) {}

  int frames() const { return static_cast<int>(capture_.frames.size()); }

  bool start() const {
    const RunSettings& settings = capture_.settings;
    return initJoint(settings.rows, settings.cols, settings.channels, settings.cornerBudget,
                     settings.maxRow, settings.maxCol, settings.stitchMode,
                     settings.staticDynamicFlag);
  }

  /// The pair, for frame 1, or a later frame.
  void prepare(int frame) {
    reference_ = capture_.frames.front();
    frame_ = capture_.frames.at(static_cast<std::size_t>(frame));
  }
  void offer(int frame) {
    outcome_.result = stichingImagedJoint(
        frame == 1 ? reference_.bytes.data() : nullptr, frame_.bytes.data(), frame - 1, 1, 0, 0,
        false, outcome_.topLeft, outcome_.bottomRight, outcome_.mosaic, outcome_.flags);
  }
  int result() const { return outcome_.result; }
  /// What the caller of `offer` sees.
  std::uint64_t seen() const {
    Digest digest;
    addOutcome(digest, outcome_);
    return digest.value();
  }

 private:
  const FaultCapture& capture_;
  Frame reference_, frame_;
  FrameOutcome outcome_;
};

/// The mosaic as far as frames fill it.
cv::Mat filledNow() {
  const cv::Rect box(cv::Point(outbordLeftCpu.x, outbordLeftCpu.y),
                     cv::Point(outbordRightCpu.x, outbordRightCpu.y));
  return mosaicImgCpu(box).clone();
}

std::string words(int result) { return "result " + std::to_string(result); }

class EntryPointFaults : public testing::TestWithParam<FaultCapture> {
 protected:
  EntryPointFaults() {
    Steps steps(GetParam());
    EXPECT_TRUE(steps.start());
    for (int frame = 1; frame < steps.frames(); ++frame) {
      steps.prepare(frame);
      steps.offer(frame);
      usual_.push_back(steps.seen());
    }
    uinitJoint();
  }
  ~EntryPointFaults() override { uinitJoint(); }

  std::string name(const std::string& action) const { return GetParam().name + ", " + action; }

  /// From `begin` to the last frame, as in a run without faults.
  void expectUsual(Steps& steps, int begin, int end) const {
    for (int frame = begin; frame < end; ++frame) {
      steps.prepare(frame);
      steps.offer(frame);
      EXPECT_EQ(steps.seen(), usual(frame)) << "frame " << frame;
    }
  }

  void expectWholeRunAsUsual() const {
    Steps steps(GetParam());
    EXPECT_TRUE(steps.start());
    expectUsual(steps, 1, steps.frames());
    EXPECT_TRUE(uinitJoint());
  }

  /// Starts, beside a run or not, and stops; a run after that is as usual.
  FaultyCall startThatMayFail(const Steps& steps, long failing) const {
    FaultyCall call =
        callWithFault(failing, [&] { return steps.start() ? "as usual" : "not started"; });
    EXPECT_TRUE(call.outcome == "as usual" || call.outcome == "std::bad_alloc" ||
                (call.outcome == "not started" && call.passed.failed == "pthread_create"))
        << call.outcome;
    EXPECT_TRUE(uinitJoint());
    expectWholeRunAsUsual();
    return call;
  }

  std::uint64_t usual(int frame) const { return usual_.at(static_cast<std::size_t>(frame - 1)); }

 private:
  // A dynamic scene as large as the captures' steps.
  const ScopedValue<int> limit_{motionValueThCpu0, 200};
  std::vector<std::uint64_t> usual_;
};

INSTANTIATE_TEST_SUITE_P(, EntryPointFaults, testing::ValuesIn(allCaptures()),
                         [](const auto& instance) { return instance.param.name; });

TEST_P(EntryPointFaults, AreLookedForOnEveryRoad) {
  Steps steps(GetParam());
  ASSERT_TRUE(steps.start());
  const bool small = GetParam().frames.size() == 5;
  for (int frame = 1; frame < steps.frames(); ++frame) {
    steps.prepare(frame);
    const SPoint before = flagsCpu.position;
    steps.offer(frame);
    const SPoint after = flagsCpu.position;
    const bool joined = before.x != after.x || before.y != after.y;
    EXPECT_EQ(joined, !(small && frame == 3)) << "frame " << frame;
  }
  EXPECT_EQ(mosaicImgCpu.rows > 6000, GetParam().name == "Growing");
}

TEST_P(EntryPointFaults, OfTheStart) {
  sweepFaults(name("start"), [&](long failing) {
    const Steps steps(GetParam());
    return startThatMayFail(steps, failing);
  });
}

TEST_P(EntryPointFaults, OfEachFrame) {
  const int frames = Steps(GetParam()).frames();
  for (int frame = 1; frame < frames && !HasFailure(); ++frame) {
    sweepFaults(name(frame == 1 ? "pair" : "frame " + std::to_string(frame)), [&](long failing) {
      Steps steps(GetParam());
      EXPECT_TRUE(steps.start());
      expectUsual(steps, 1, frame);
      const cv::Mat before = frame > 1 ? filledNow() : cv::Mat();
      steps.prepare(frame);
      FaultyCall call = callWithFault(failing, [&] {
        steps.offer(frame);
        return "returned";
      });
      if (call.outcome == "returned") {
        call.outcome = steps.seen() == usual(frame) ? "as usual" : words(steps.result());
      }
      EXPECT_TRUE(call.outcome == "as usual" || call.outcome == "std::bad_alloc" ||
                  call.outcome == "cv::Exception" || call.outcome == words(-1))
          << call.outcome;
      if (call.outcome != "as usual" && frame > 1) {
        EXPECT_EQ(cv::norm(filledNow(), before, cv::NORM_INF), 0.0) << "what was there stays";
      }
      // By the overlap the reference is overwritten before a frame can fail; a session mends that.
      if (GetParam().settings.stitchMode != 0 || call.outcome == "as usual") {
        expectUsual(steps, call.outcome == "as usual" ? frame + 1 : frame, frames);
      }
      EXPECT_TRUE(uinitJoint());
      expectWholeRunAsUsual();
      return call;
    });
  }
}

TEST_P(EntryPointFaults, OfTheStop) {
  sweepFaults(name("stop"), [&](long failing) {
    Steps steps(GetParam());
    EXPECT_TRUE(steps.start());
    expectUsual(steps, 1, steps.frames());
    FaultyCall call =
        callWithFault(failing, [] { return uinitJoint() ? "as usual" : "result false"; });
    EXPECT_EQ(call.outcome, "as usual");
    if (failing != 0) {
      EXPECT_EQ(call.passed.failed, "pthread_join") << "nothing else is asked for";
    }
    expectWholeRunAsUsual();
    return call;
  });
}

TEST_P(EntryPointFaults, OfAStartBesideAnOpenRun) {
  sweepFaults(name("start beside an open run"), [&](long failing) {
    const Steps steps(GetParam());
    EXPECT_TRUE(steps.start());
    return startThatMayFail(steps, failing);
  });
}

}  // namespace
