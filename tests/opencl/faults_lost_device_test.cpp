// SPDX-License-Identifier: Apache-2.0
// From some call on every OpenCL call fails. The run can be stopped, the host serves the next one,
// and the one after that has the card again if it is back.
#include <gtest/gtest.h>

#include "framequilt/framequilt.h"
#include "tests/opencl/device_fixture.h"
#include "tests/opencl/fault_run.h"

namespace layer = framequilt::opencl_layer;

namespace {

constexpr SmallCapture kCapture = {1, 1, true};

class LostDevice : public DeviceFixture {
 protected:
  explicit LostDevice(Memory memory = Memory::kUnified) : DeviceFixture(memory) {
    DrivenRun run(kCapture);
    EXPECT_TRUE(run.start());
    device_.keep();
    first_ = digestOf(run.first());
    later_ = digestOf(run.next(2));
  }
  ~LostDevice() override { releaseKeptBuffer(); }

  static void lose(int nth) {
    layer::resetRecords();
    layer::failEveryCallFrom(nth, CL_DEVICE_NOT_AVAILABLE);
  }

  /// The run is stopped; the card stays lost for a while.
  void expectRecovery() {
    device_.expectAlone();
    EXPECT_EQ(layer::faultsWaiting(), 0) << "the device was not lost";
    EXPECT_EQ(digestOfWholeRun(kCapture, false), first_);
    layer::clearFaults();
    EXPECT_EQ(layer::violations(), std::vector<std::string>{});
  }

  SpokenTexts texts_;
  KeptDevice device_;
  std::uint64_t first_ = 0, later_ = 0;
};

TEST_F(LostDevice, DuringStart) {
  for (int nth = 1; nth <= 18 + 34 + 36; nth += nth < 20 ? 2 : 11) {
    SCOPED_TRACE("from call " + std::to_string(nth));
    releaseKeptBuffer();
    {
      DrivenRun run(kCapture);
      lose(nth);
      EXPECT_FALSE(run.start());
      EXPECT_EQ(digestOf(run.first()), first_);
    }
    expectRecovery();
  }
  EXPECT_EQ(digestOfWholeRun(kCapture, true), first_);
}

class LostDeviceInEitherMemory : public LostDevice, public testing::WithParamInterface<Memory> {
 protected:
  LostDeviceInEitherMemory() : LostDevice(GetParam()) {}
};

TEST_P(LostDeviceInEitherMemory, DuringFrame) {
  int stride = 1;
  for (int nth = 1; stride > 0; nth += stride) {
    SCOPED_TRACE("from call " + std::to_string(nth));
    device_.handOver();
    DrivenRun run(kCapture);
    ASSERT_TRUE(run.start());
    ASSERT_EQ(digestOf(run.first()), first_);
    lose(nth);
    const FrameOutcome outcome = run.next(2);
    stride = layer::faultsWaiting() == 0 ? 23 : 0;
    if (outcome.joined()) {
      EXPECT_EQ(digestOf(outcome), later_);
    }
    if (stride == 0) {
      EXPECT_GT(nth, 250) << "there are not so few calls";
      layer::clearFaults();
      continue;
    }
    // More of the same.
    EXPECT_FALSE(run.next(2).joined());
    run.stop();
    expectRecovery();
  }
}

TEST_F(LostDevice, DuringStop) {
  for (int nth = 1; nth <= 72; nth += 10) {
    SCOPED_TRACE("from call " + std::to_string(nth));
    device_.handOver();
    DrivenRun run(kCapture);
    ASSERT_TRUE(run.start());
    ASSERT_EQ(digestOf(run.first()), first_);
    lose(nth);
    run.stop();
    expectRecovery();
  }
}

FRAMEQUILT_IN_EITHER_MEMORY(LostDeviceInEitherMemory);

}  // namespace
