// SPDX-License-Identifier: Apache-2.0
// Every allocation of the library's in a run on the card, and each start and join of its threads,
// fails once. What the driver and its compiler ask for is theirs: it does not count.
#include <gtest/gtest.h>

#include "framequilt/framequilt.h"
#include "framequilt/session.h"
#include "opencl/OpenclJointState.h"
#include "tests/faults/fault_sweep.h"
#include "tests/opencl/device_fixture.h"
#include "tests/opencl/fault_run.h"
#include "tests/support/recorded_reports.h"
#include "tests/support/session_frames.h"

namespace {

class OpenclMemoryFaults : public DeviceFixture, public testing::WithParamInterface<SmallCapture> {
 protected:
  OpenclMemoryFaults() {
    framequilt::setReportSink([](const char*, std::size_t, void*) {}, nullptr);
    withCard();
    DrivenRun run(GetParam());
    EXPECT_TRUE(run.start());
    device_.keep();
    pair_ = digestOf(run.first());
    later_ = digestOf(run.next(2));
    run.stop();
  }
  ~OpenclMemoryFaults() override { framequilt::setReportSink(nullptr, nullptr); }

  std::string name(const char* action) const {
    return std::string("OpenCL, ") + (GetParam().stitchMode != 0 ? "motion, " : "overlap, ") +
           action;
  }

  bool start(DrivenRun& run) const {
    device_.handOver();
    return run.start();
  }
  void expectPair(DrivenRun& run) const { EXPECT_EQ(digestOf(run.first()), pair_); }
  void expectLater(DrivenRun& run) const { EXPECT_EQ(digestOf(run.next(2)), later_); }
  void expectWholeRunAsUsual() const {
    DrivenRun run(GetParam());
    EXPECT_TRUE(start(run));
    expectPair(run);
    expectLater(run);
  }

  static void expectAllowed(const FaultyCall& call) {
    EXPECT_TRUE(call.outcome == "as usual" || call.outcome == "std::bad_alloc" ||
                call.outcome == "cv::Exception" || call.outcome == "result -1")
        << call.outcome;
  }

  std::uint64_t pair_ = 0, later_ = 0;
  KeptDevice device_;
};

INSTANTIATE_TEST_SUITE_P(, OpenclMemoryFaults,
                         testing::Values(SmallCapture{1, 1, false}, SmallCapture{3, 0, true}),
                         [](const auto& instance) {
                           return instance.param.stitchMode != 0 ? "Motion" : "Overlap";
                         });

TEST_P(OpenclMemoryFaults, OfTheStart) {
  sweepFaults(
      name("start"),
      [&](long failing) {
        DrivenRun run(GetParam());
        device_.handOver();
        FaultyCall call =
            callWithFault(failing, [&] { return run.start() ? "as usual" : "on the host"; });
        EXPECT_TRUE(call.outcome == "as usual" || call.outcome == "std::bad_alloc" ||
                    (call.outcome == "on the host" && call.passed.failed == "pthread_create"))
            << call.outcome;
        run.stop();
        expectWholeRunAsUsual();
        return call;
      },
      Beside::kDriver);
}

TEST_P(OpenclMemoryFaults, OfAPair) {
  sweepFaults(
      name("pair"),
      [&](long failing) {
        DrivenRun run(GetParam());
        EXPECT_TRUE(start(run));
        FrameOutcome outcome;
        FaultyCall call = callWithFault(failing, [&] {
          outcome = run.first();
          return "as usual";
        });
        if (call.outcome == "as usual" && digestOf(outcome) != pair_) {
          call.outcome = "result " + std::to_string(outcome.result);
        }
        expectAllowed(call);
        if (call.outcome != "as usual") expectPair(run);
        expectLater(run);
        run.stop();
        expectWholeRunAsUsual();
        return call;
      },
      Beside::kDriver);
}

TEST_P(OpenclMemoryFaults, OfALaterFrame) {
  sweepFaults(
      name("later frame"),
      [&](long failing) {
        DrivenRun run(GetParam());
        EXPECT_TRUE(start(run));
        expectPair(run);
        const RunState before = RunState::ofRun(GetParam());
        FrameOutcome outcome;
        FaultyCall call = callWithFault(failing, [&] {
          outcome = run.next(2);
          return "as usual";
        });
        if (call.outcome == "as usual" && digestOf(outcome) != later_) {
          call.outcome = "result " + std::to_string(outcome.result);
        }
        expectAllowed(call);
        if (call.outcome != "as usual") {
          expectSameMosaicAndReference(RunState::ofRun(GetParam()), before);
          expectLater(run);
        }
        run.stop();
        expectWholeRunAsUsual();
        return call;
      },
      Beside::kDriver);
}

TEST_P(OpenclMemoryFaults, OfTheStop) {
  sweepFaults(
      name("stop"),
      [&](long failing) {
        DrivenRun run(GetParam());
        EXPECT_TRUE(start(run));
        expectPair(run);
        FaultyCall call =
            callWithFault(failing, [] { return uinitJoint() ? "as usual" : "result false"; });
        EXPECT_EQ(call.outcome, "as usual");
        expectWholeRunAsUsual();
        return call;
      },
      Beside::kDriver);
}

}  // namespace
