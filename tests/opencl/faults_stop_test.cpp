// SPDX-License-Identifier: Apache-2.0
// Every OpenCL call of a stop fails once: a release that fails counts as one.
#include <gtest/gtest.h>

#include "tests/opencl/device_fixture.h"
#include "tests/opencl/fault_run.h"

namespace layer = framequilt::opencl_layer;

namespace {

constexpr SmallCapture kCapture = {};
/// All buffers but the one that outlives a stop, kernels, queue, program, context.
constexpr int kReleases = 33 + 36 + 3;

class StopFaults : public DeviceFixture {
 protected:
  StopFaults() {
    DrivenRun run(kCapture);
    EXPECT_TRUE(run.start());
    device_.keep();
    card_ = digestOf(run.first());
  }
  ~StopFaults() override { releaseKeptBuffer(); }

  /// What a stop says in which the `nth` call fails; 0: none.
  std::vector<std::string> stopFailing(int nth) {
    device_.handOver();
    DrivenRun run(kCapture);
    EXPECT_TRUE(run.start());
    layer::resetRecords();
    texts_.take();
    if (nth > 0) layer::failCall(nth, CL_OUT_OF_RESOURCES);
    run.stop();
    EXPECT_EQ(layer::faultsWaiting(), 0) << "the call was not reached";
    EXPECT_EQ(layer::callCount(), kReleases);
    EXPECT_EQ(layer::violations(), std::vector<std::string>{});
    return texts_.take();
  }

  SpokenTexts texts_;
  KeptDevice device_;
  std::uint64_t card_ = 0;
};

TEST_F(StopFaults, EveryCall) {
  const std::vector<std::string> usual = stopFailing(0);
  for (int nth = 1; nth <= kReleases; ++nth) {
    SCOPED_TRACE("call " + std::to_string(nth));
    EXPECT_EQ(stopFailing(nth), usual);
    device_.expectAlone();
    withoutCard();
    EXPECT_EQ(digestOfWholeRun(kCapture, false), card_);
    withCard();
  }
  device_.handOver();
  EXPECT_EQ(digestOfWholeRun(kCapture, true), card_);
}

}  // namespace
