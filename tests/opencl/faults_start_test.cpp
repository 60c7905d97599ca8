// SPDX-License-Identifier: Apache-2.0
// Every OpenCL call of a start fails once. The run then goes to the host, or does without what is
// missing; the next start has the card.
#include <gtest/gtest.h>

#include <optional>

#include "cpu/stitching_run.h"
#include "framequilt/framequilt.h"
#include "tests/opencl/device_fixture.h"
#include "tests/opencl/fault_run.h"

namespace layer = framequilt::opencl_layer;

namespace {

using Texts = std::vector<std::string>;

/// A call of a start, in order: who serves the run when it fails, what is said then.
struct StartCall {
  const char* name;
  bool onCard;
  Texts texts;
};

const std::vector<StartCall> kOpening = {
    {"clGetPlatformIDs", false, {"commandQueue failed"}},
    {"clGetPlatformIDs", false, {"commandQueue failed"}},
    {"clGetPlatformInfo", false, {"commandQueue failed"}},
    {"clGetPlatformInfo", false, {"commandQueue failed"}},
    {"clGetDeviceIDs", false, {"commandQueue failed"}},
    {"clGetDeviceIDs", false, {"commandQueue failed"}},
    {"clGetDeviceInfo", true, {}},
    {"clGetDeviceInfo", true, {}},
    {"clGetDeviceInfo", true, {"Compute Units Number:0"}},
    {"clGetDeviceInfo", true, {"Device Frequency:0(MHz)"}},
    {"clGetDeviceInfo", false, {"Device Frequency:0(MB)", "commandQueue failed"}},
    {"clGetDeviceInfo", true, {"Device Frequency:0(Byte)"}},
    {"clGetDeviceInfo",
     false,
     {"Device DeviceVersion:", "There is NO GPU or CPU", "commandQueue failed"}},
    {"clGetDeviceInfo", true, {}},
    {"clCreateContext", false, {"create context error ", "commandQueue failed"}},
    {"clCreateCommandQueue",
     false,
     {"Failed to create commandQueue for device 0", "commandQueue failed"}},
    {"clCreateProgramWithSource", false, {"Failed to create CL program for source"}},
    {"clBuildProgram", false, {"Error in kernel:"}},
};

/// With context, queue and program at hand these are all.
constexpr int kBuffers = 34;
constexpr int kKernels = 36;

/// Of the nth buffer, from 1.
Texts textsWithoutBuffer(int nth) {
  static const char* const kNamed[] = {"PreFrameImageGrayCL",
                                       "CurFrameImageGrayCL",
                                       "PreFrameImageGrayBoundTempCL",
                                       "CurFrameImageGrayBoundTempCL",
                                       "PreFrameImageGrayBoundCL",
                                       "CurFrameImageGrayBoundCL",
                                       "gray_pointdownscalClOne",
                                       "grad_x2ClOne",
                                       "grad_y2ClOne",
                                       "grad_xyClOne",
                                       "grad_x2ClTwo",
                                       "grad_y2ClTwo",
                                       "grad_xyClTwo"};
  if (nth == kBuffers) return {"DestTempImageCL failed"};
  if (nth > static_cast<int>(std::size(kNamed))) return {};
  return {std::string(kNamed[nth - 1]) + " failed"};
}

class StartFaults : public DeviceFixture {
 protected:
  StartFaults() {
    withoutCard();
    host_ = digestOfWholeRun(kCapture, false);
    withCard();
    texts_.take();
    initJointCpu(240, 320, 1, 1, 20000, 20000);
    uninitJointCpu();
    usual_ = texts_.take();
  }
  ~StartFaults() override { releaseKeptBuffer(); }

  static constexpr SmallCapture kCapture = {};

  /// A start that nothing fails in, and the names of its calls. `device` is handed to it.
  std::vector<std::string> callsOfStart(const KeptDevice* device) {
    releaseKeptBuffer();
    if (device != nullptr) device->handOver();
    layer::resetRecords();
    texts_.take();
    DrivenRun run(kCapture);
    EXPECT_TRUE(run.start());
    const Texts said = texts_.take();
    usual_.insert(usual_.end(), said.begin(), said.end());
    return layer::callLog();
  }

  /// A run in whose start the `nth` call fails. Who serves it?
  bool startFailing(DrivenRun& run, const KeptDevice* device, int nth) {
    releaseKeptBuffer();
    if (device != nullptr) device->handOver();
    layer::resetRecords();
    texts_.take();
    layer::failCall(nth, CL_OUT_OF_RESOURCES);
    const bool onCard = run.start();
    EXPECT_EQ(layer::faultsWaiting(), 0) << "the call was not reached";
    said_ = beyond(usual_, texts_.take());
    return onCard;
  }

  /// The next run has the card again.
  void expectNextOnCard(const KeptDevice* device) {
    if (device != nullptr) device->handOver();
    EXPECT_EQ(digestOfWholeRun(kCapture, true), host_);
    EXPECT_EQ(layer::violations(), Texts{});
  }

  SpokenTexts texts_;
  Texts usual_, said_;
  std::uint64_t host_ = 0;
};

TEST_F(StartFaults, OpeningOfTheDevice) {
  const std::vector<std::string> calls = callsOfStart(nullptr);
  ASSERT_EQ(calls.size(), kOpening.size() + kBuffers + kKernels);
  const KeptDevice none;
  for (std::size_t i = 0; i < kOpening.size(); ++i) {
    const StartCall& expected = kOpening[i];
    SCOPED_TRACE("call " + std::to_string(i + 1) + ": " + expected.name);
    EXPECT_EQ(calls[i], expected.name);
    {
      DrivenRun run(kCapture);
      EXPECT_EQ(startFailing(run, nullptr, static_cast<int>(i) + 1), expected.onCard);
      EXPECT_EQ(said_, expected.texts);
      if (!expected.onCard) none.expectAlone();
      EXPECT_EQ(digestOf(run.first()), host_);
    }
    none.expectAlone();
    expectNextOnCard(nullptr);
  }
}

class StartFaultsOnKeptDevice : public StartFaults {
 protected:
  StartFaultsOnKeptDevice() {
    DrivenRun run(kCapture);
    EXPECT_TRUE(run.start());
    device_.keep();
  }

  KeptDevice device_;
};

// Frames that need the buffer are refused, the others are as ever.
TEST_F(StartFaultsOnKeptDevice, Buffers) {
  const std::vector<std::string> calls = callsOfStart(&device_);
  int joined = 0;
  for (int nth = 1; nth <= kBuffers; ++nth) {
    SCOPED_TRACE("buffer " + std::to_string(nth));
    EXPECT_EQ(calls.at(static_cast<std::size_t>(nth) - 1), "clCreateBuffer");
    {
      DrivenRun run(kCapture);
      EXPECT_TRUE(startFailing(run, &device_, nth));
      EXPECT_EQ(said_, textsWithoutBuffer(nth));
      const FrameOutcome outcome = run.first();
      if (outcome.joined()) {
        EXPECT_EQ(digestOf(outcome), host_);
        ++joined;
      }
    }
    device_.expectAlone();
    expectNextOnCard(&device_);
  }
  // Those of colour frames, of motion's gray images, of the overlap, of hints.
  EXPECT_EQ(joined, 14);
}

TEST_F(StartFaultsOnKeptDevice, Kernels) {
  const std::vector<std::string> calls = callsOfStart(&device_);
  ASSERT_EQ(calls.size(), std::size_t{kBuffers + kKernels});
  for (int nth = kBuffers + 1; nth <= kBuffers + kKernels; ++nth) {
    SCOPED_TRACE("kernel " + std::to_string(nth - kBuffers));
    EXPECT_EQ(calls[static_cast<std::size_t>(nth) - 1], "clCreateKernel");
    {
      DrivenRun run(kCapture);
      EXPECT_FALSE(startFailing(run, &device_, nth));
      ASSERT_EQ(said_.size(), 2U);
      EXPECT_NE(said_[0].find(" failed"), std::string::npos) << said_[0];
      EXPECT_EQ(said_[1], "clCreateKernel createKernel failed");
      device_.expectAlone();
      EXPECT_EQ(digestOf(run.first()), host_);
    }
    expectNextOnCard(&device_);
  }
}

// A start looks whether the buffer that an earlier run has left fits; where it can't tell, it makes
// a new one.
TEST_F(StartFaultsOnKeptDevice, KeptBuffer) {
  for (int nth = 1; nth <= 2; ++nth) {
    SCOPED_TRACE(nth);
    expectNextOnCard(&device_);
    device_.handOver();
    layer::failCall("clGetMemObjectInfo", nth, CL_OUT_OF_RESOURCES);
    EXPECT_EQ(digestOfWholeRun(kCapture, true), host_);
    EXPECT_EQ(layer::faultsWaiting(), 0);
    device_.expectAlone();
  }
}

}  // namespace
