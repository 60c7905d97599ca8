// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "framequilt/tuning.h"
#include "opencl/OpenclJointRun.h"
#include "opencl/OpenclJointState.h"
#include "tests/cpu/thread_calls.h"
#include "tests/opencl/device_fixture.h"
#include "tests/opencl/journal.h"

/// What every start says first.
inline const Entries kStartBegins = {
    Journal::debug("stitchingImageOffsetCL in11111111111111111111111111111"),
    "44444444444444444444"};
/// The lines about the layer's default device.
inline const Entries kDeviceLines = {"Compute Units Number:16", "Device Frequency:1500(MHz)",
                                     "Device Frequency:8192(MB)", "Device Frequency:128(Byte)",
                                     "Device DeviceVersion:OpenCL 1.2 test"};
inline const Entries kStopped = {"pthread_join one_pidCL success", "pthread_join two_pidCL success",
                                 "mosaicImgCL"};

inline Entries operator+(Entries one, const Entries& two) {
  one.insert(one.end(), two.begin(), two.end());
  return one;
}

/// Starts of the OpenCL backend. Each test ends with a stop, after which nothing may be left.
class StartFixture : public DeviceFixture {
 protected:
  StartFixture() { watchThreads(); }
  ~StartFixture() override {
    framequilt::opencl_layer::clearFaults();
    uinitJointCL();
    EXPECT_EQ(threadCalls().running, 0);
    expectOnlyKeptBuffer();
    releaseKeptBuffer();
    EXPECT_EQ(framequilt::opencl_layer::live().count(), 0);
    MAXROWCL = MAXCOLCL = 30000;
    scaleCL = 1;
    watchThreads();
  }

  static bool start(int channels = 3) { return initJointCL(24, 32, channels, 1, 40000, 40000); }

  static int live(framequilt::opencl_layer::ObjectKind kind) {
    return framequilt::opencl_layer::live().count(kind);
  }
  static long calls(const std::string& entryPoint) {
    return framequilt::opencl_layer::callCount(entryPoint);
  }

  Journal journal_;
};
