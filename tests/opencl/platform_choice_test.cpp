// SPDX-License-Identifier: Apache-2.0
// Which device a context is created on, and what is said about it.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "framequilt/tuning.h"
#include "opencl/OpenclJoint.h"
#include "tests/opencl/device_fixture.h"
#include "tests/opencl/journal.h"
#include "tests/support/captured_output.h"

namespace layer = framequilt::opencl_layer;

namespace {

using layer::FakeDevice;
using layer::FakePlatform;
using layer::kMegabyte;
using Platforms = std::vector<FakePlatform>;

FakeDevice gpu(const std::string& name) { return {.name = name}; }
FakeDevice gpuOf(cl_ulong bytes) { return {.name = "sized", .globalMemoryBytes = bytes}; }
FakeDevice processor() { return {.name = "processor", .type = CL_DEVICE_TYPE_CPU}; }
FakeDevice accelerator() { return {.name = "accelerator", .type = CL_DEVICE_TYPE_ACCELERATOR}; }

FakePlatform platform(const std::string& name) { return {.name = name}; }
FakePlatform platform(const std::string& name, std::vector<FakeDevice> devices) {
  return {.name = name, .devices = std::move(devices)};
}

/// The lines about the layer's device with these megabytes, up to them.
Entries linesUpToMemory(const std::string& megabytes) {
  return {"Compute Units Number:16", "Device Frequency:1500(MHz)",
          "Device Frequency:" + megabytes + "(MB)"};
}

/// All lines about the layer's default device.
Entries linesOfDevice() {
  Entries lines = linesUpToMemory("8192");
  lines.insert(lines.end(), {"Device Frequency:128(Byte)", "Device DeviceVersion:OpenCL 1.2 test"});
  return lines;
}

class PlatformChoice : public DeviceFixture {
 protected:
  PlatformChoice() { AMDidx = NVIDIAidx = 77; }
  ~PlatformChoice() override {
    if (created_ != nullptr) clReleaseContext(created_);
    EXPECT_EQ(layer::live().count(), 0);
    AMDidx = NVIDIAidx = -1;
  }

  /// The name of the device that the context is created on; empty when there is none.
  std::string choose(const Platforms& platforms) {
    layer::present(platforms);
    return choose();
  }

  std::string choose() {
    if (created_ != nullptr) clReleaseContext(created_);
    layer::resetRecords();
    // A device behind the one that is meant, as an array of the caller would have it.
    const auto untouched = reinterpret_cast<cl_device_id>(&slots_);
    slots_ = {nullptr, untouched};
    created_ = CreateContext(slots_.data());
    EXPECT_EQ(slots_[1], untouched);
    messages_ = journal_.take();
    return created_ == nullptr ? std::string() : nameOfDevice(slots_[0]);
  }

  static std::string nameOfDevice(cl_device_id device) {
    std::array<char, 64> name{};
    clGetDeviceInfo(device, CL_DEVICE_NAME, name.size(), name.data(), nullptr);
    return name.data();
  }

  Journal journal_;
  std::array<cl_device_id, 2> slots_{};
  cl_context created_ = nullptr;
  Entries messages_;
};

TEST_F(PlatformChoice, NoPlatformNoContext) {
  EXPECT_EQ(choose({}), "");
  EXPECT_EQ(messages_, Entries{});
  EXPECT_EQ(AMDidx, 77) << "nothing was looked at";
  EXPECT_EQ(NVIDIAidx, 77);
}

TEST_F(PlatformChoice, PlatformsOfOtherNamesAreNotLookedAt) {
  EXPECT_EQ(
      choose({platform("Intel(R) OpenCL"), platform("amd"), platform("Nvidia"), platform("nVIDIA"),
              platform(" AMD"), platform("AM"), platform("NV"), platform("")}),
      "");
  EXPECT_EQ(messages_, Entries{});
  EXPECT_EQ(AMDidx, -1);
  EXPECT_EQ(NVIDIAidx, -1);
  EXPECT_EQ(layer::callCount("clGetDeviceIDs"), 0);
}

TEST_F(PlatformChoice, ThreeLettersDecide) {
  for (const char* name : {"AMD", "AMDx", "AMD Accelerated Parallel Processing"}) {
    EXPECT_EQ(choose({platform("POCL"), platform(name)}), "Test GPU") << name;
    EXPECT_EQ(AMDidx, 1);
    EXPECT_EQ(NVIDIAidx, -1);
  }
  for (const char* name : {"NVI", "NVIxyz", "NVIDIA CUDA"}) {
    EXPECT_EQ(choose({platform(name), platform("POCL")}), "Test GPU") << name;
    EXPECT_EQ(AMDidx, -1);
    EXPECT_EQ(NVIDIAidx, 0);
  }
}

TEST_F(PlatformChoice, LastPlatformOfAVendorCounts) {
  EXPECT_EQ(choose({platform("NVIDIA", {gpu("a")}), platform("AMD", {gpu("b")}), platform("other"),
                    platform("AMD 2", {gpu("c")}), platform("NVIDIA 2", {gpu("d")})}),
            "c");
  EXPECT_EQ(AMDidx, 3);
  EXPECT_EQ(NVIDIAidx, 4);
  EXPECT_EQ(choose({platform("NVIDIA", {gpu("a")}), platform("NVIDIA 2", {gpu("b")})}), "b");
  EXPECT_EQ(AMDidx, -1) << "of the last choice only";
}

TEST_F(PlatformChoice, AmdComesBeforeNvidia) {
  const FakePlatform amd = platform("AMD", {gpu("of AMD")});
  const FakePlatform nvidia = platform("NVIDIA", {gpu("of NVIDIA")});
  EXPECT_EQ(choose({amd, nvidia}), "of AMD");
  EXPECT_EQ(choose({nvidia, amd}), "of AMD");
}

TEST_F(PlatformChoice, NvidiaServesWhereAmdHasNoGpu) {
  const FakePlatform nvidia = platform("NVIDIA", {gpu("of NVIDIA")});
  FakePlatform broken = platform("AMD");
  broken.devicesError = CL_INVALID_PLATFORM;
  for (const FakePlatform& amd : {platform("AMD", {}), platform("AMD", {processor()}), broken}) {
    EXPECT_EQ(choose({amd, nvidia}), "of NVIDIA");
    EXPECT_EQ(messages_, linesOfDevice());
    EXPECT_EQ(choose({nvidia, amd}), "of NVIDIA");
  }
}

TEST_F(PlatformChoice, NvidiaServesWhereTheHandlesOfAmdCannotBeHad) {
  const Platforms both = {platform("AMD", {gpu("of AMD")}), platform("NVIDIA", {gpu("of NVIDIA")})};
  layer::failCall("clGetDeviceIDs", 2, CL_OUT_OF_HOST_MEMORY);
  EXPECT_EQ(choose(both), "of NVIDIA");
  // The count of one vendor, the handles of the other.
  layer::failCall("clGetDeviceIDs", 2, CL_OUT_OF_HOST_MEMORY);
  layer::failCall("clGetDeviceIDs", 4, CL_OUT_OF_HOST_MEMORY);
  EXPECT_EQ(choose(both), "");
}

TEST_F(PlatformChoice, OnlyGpusServe) {
  for (const char* name : {"AMD", "NVIDIA"}) {
    EXPECT_EQ(choose({platform(name, {})}), "");
    EXPECT_EQ(choose({platform(name, {processor(), accelerator()})}), "");
    EXPECT_EQ(messages_, Entries{});
    EXPECT_EQ(choose({platform(name, {processor(), accelerator(), gpu("third")})}), "third");
  }
  EXPECT_EQ(choose({platform("AMD", {processor()}), platform("NVIDIA", {accelerator()})}), "");
}

TEST_F(PlatformChoice, StatusOfTheHandlesDecides) {
  for (const char* name : {"AMD", "NVIDIA"}) {
    layer::failCall("clGetDeviceIDs", 2, CL_OUT_OF_RESOURCES);
    EXPECT_EQ(choose({platform(name)}), "");
    EXPECT_EQ(messages_, Entries{});
  }
}

TEST_F(PlatformChoice, FirstOfTwoGpusIsTheOnlyOneHandedOut) {
  EXPECT_EQ(choose({platform("NVIDIA", {gpu("first"), gpu("second")})}), "first");
  cl_uint devices = 0;
  clGetContextInfo(created_, CL_CONTEXT_NUM_DEVICES, sizeof(devices), &devices, nullptr);
  EXPECT_EQ(devices, 1U);
  cl_device_id inside = nullptr;
  clGetContextInfo(created_, CL_CONTEXT_DEVICES, sizeof(void*), static_cast<void*>(&inside),
                   nullptr);
  EXPECT_EQ(inside, slots_[0]);
  std::size_t properties = 99;
  clGetContextInfo(created_, CL_CONTEXT_PROPERTIES, 0, nullptr, &properties);
  EXPECT_EQ(properties, 0U);
}

TEST_F(PlatformChoice, DeviceIsDescribed) {
  EXPECT_EQ(choose({platform("NVIDIA", {{.name = "x",
                                         .globalMemoryBytes = 81559 * kMegabyte,
                                         .version = "OpenCL 3.0 CUDA",
                                         .computeUnits = 132,
                                         .clockMHz = 1980,
                                         .cacheLineBytes = 64}})}),
            "x");
  EXPECT_EQ(messages_, (Entries{"Compute Units Number:132", "Device Frequency:1980(MHz)",
                                "Device Frequency:81559(MB)", "Device Frequency:64(Byte)",
                                "Device DeviceVersion:OpenCL 3.0 CUDA"}));
}

TEST_F(PlatformChoice, MegabytesAreRounded) {
  const auto linesFor = [this](cl_ulong bytes) {
    choose({platform("AMD", {gpuOf(bytes)})});
    return messages_.at(2);
  };
  EXPECT_EQ(linesFor(6000 * kMegabyte + kMegabyte / 4), "Device Frequency:6000(MB)");
  EXPECT_EQ(linesFor(6000 * kMegabyte + 3 * kMegabyte / 4), "Device Frequency:6001(MB)");
  EXPECT_EQ(linesFor(1000000 * kMegabyte), "Device Frequency:1000000(MB)");
}

TEST_F(PlatformChoice, LessThan4096MegabytesAreRefusedWithoutAWord) {
  EXPECT_EQ(choose({platform("NVIDIA", {gpuOf(4095 * kMegabyte)})}), "");
  EXPECT_EQ(messages_, linesUpToMemory("4095"));
  EXPECT_EQ(layer::callCount("clCreateContext"), 0);
  EXPECT_EQ(choose({platform("NVIDIA", {gpuOf(kMegabyte)})}), "");
  EXPECT_EQ(messages_, linesUpToMemory("1"));
}

TEST_F(PlatformChoice, Exactly4096MegabytesSuffice) {
  EXPECT_EQ(choose({platform("NVIDIA", {gpuOf(4096 * kMegabyte)})}), "sized");
  EXPECT_EQ(messages_.at(2), "Device Frequency:4096(MB)");
  // Single precision does not tell one byte less from it.
  EXPECT_EQ(choose({platform("NVIDIA", {gpuOf(4096 * kMegabyte - 1)})}), "sized");
  // But this much less, printed alike.
  EXPECT_EQ(choose({platform("NVIDIA", {gpuOf(4096 * kMegabyte - 1024)})}), "");
  EXPECT_EQ(messages_, linesUpToMemory("4096"));
}

TEST_F(PlatformChoice, SmallAmdCardIsNotReplacedByALargerOne) {
  EXPECT_EQ(choose({platform("AMD", {gpuOf(2048 * kMegabyte), gpu("second")}), platform("NVIDIA")}),
            "");
  EXPECT_EQ(messages_, linesUpToMemory("2048"));
}

TEST_F(PlatformChoice, DeviceWithoutAVersionIsRefused) {
  FakeDevice nameless;
  nameless.failingInfos[CL_DEVICE_VERSION] = CL_INVALID_VALUE;
  EXPECT_EQ(choose({platform("NVIDIA", {nameless})}), "");
  Entries expected = linesOfDevice();
  expected.back() = "Device DeviceVersion:";
  expected.emplace_back("There is NO GPU or CPU");
  EXPECT_EQ(messages_, expected);
}

TEST_F(PlatformChoice, VersionHasOneHundredBytesWithItsZero) {
  FakeDevice device = gpu("long version");
  device.version = std::string(99, 'v');
  EXPECT_EQ(choose({platform("NVIDIA", {device})}), "long version");
  EXPECT_EQ(messages_.back(), "Device DeviceVersion:" + device.version);
  device.version += 'v';
  EXPECT_EQ(choose({platform("NVIDIA", {device})}), "");
  EXPECT_EQ(messages_.back(), "There is NO GPU or CPU");
}

TEST_F(PlatformChoice, OtherQueriesMayFail) {
  FakeDevice device;
  for (const int query :
       {CL_DEVICE_NAME, CL_DEVICE_MAX_COMPUTE_UNITS, CL_DEVICE_MAX_CLOCK_FREQUENCY,
        CL_DEVICE_GLOBAL_MEM_CACHELINE_SIZE, CL_DEVICE_PREFERRED_VECTOR_WIDTH_FLOAT}) {
    device.failingInfos[static_cast<cl_device_info>(query)] = CL_INVALID_VALUE;
  }
  choose({platform("NVIDIA", {device})});
  EXPECT_NE(created_, nullptr);
  EXPECT_EQ(messages_.size(), linesOfDevice().size());
}

TEST_F(PlatformChoice, ContextThatCannotBeCreated) {
  layer::failCall("clCreateContext", 1, CL_DEVICE_NOT_AVAILABLE);
  EXPECT_EQ(choose(), "");
  Entries expected = linesOfDevice();
  expected.emplace_back("create context error ");
  EXPECT_EQ(messages_, expected);
}

TEST_F(PlatformChoice, PlatformThatDoesNotTellItsNameIsSkipped) {
  FakePlatform nameless = platform("AMD", {gpu("nameless")});
  nameless.infoError = CL_OUT_OF_HOST_MEMORY;
  EXPECT_EQ(choose({nameless, platform("NVIDIA", {gpu("named")})}), "named");
  EXPECT_EQ(AMDidx, -1);
  EXPECT_EQ(NVIDIAidx, 1);
}

TEST_F(PlatformChoice, NameOfAPlatformIsWhole) {
  const std::string name = "AMD " + std::string(1000, 'n') + " end";
  layer::present({platform(name)});
  cl_platform_id id = nullptr;
  ASSERT_EQ(clGetPlatformIDs(1, &id, nullptr), CL_SUCCESS);
  EXPECT_EQ(getPlatformName(id), name);
}

class PlatformOutput : public DeviceFixture {
 protected:
  ~PlatformOutput() override { AMDidx = NVIDIAidx = -1; }

  static std::string outputOfCreation() {
    return standardOutputOf([] {
      cl_device_id chosen = nullptr;
      const cl_context created = CreateContext(&chosen);
      if (created != nullptr) clReleaseContext(created);
    });
  }

  const std::string device_ =
      "Compute Units Number:16\nDevice Frequency:1500(MHz)\nDevice Frequency:8192(MB)\n"
      "Device Frequency:128(Byte)\n";
};

TEST_F(PlatformOutput, LinesOfADevice) {
  EXPECT_EQ(outputOfCreation(), device_ + "Device DeviceVersion:OpenCL 1.2 test\n");
}

TEST_F(PlatformOutput, TextAboutTheVersionHasNoLineEnd) {
  FakeDevice nameless;
  nameless.failingInfos[CL_DEVICE_VERSION] = CL_INVALID_VALUE;
  layer::present({platform("NVIDIA", {nameless})});
  EXPECT_EQ(outputOfCreation(), device_ + "Device DeviceVersion:\nThere is NO GPU or CPU");
}

TEST_F(PlatformOutput, TextAboutTheContextEndsWithABlank) {
  layer::failCall("clCreateContext", 1, CL_OUT_OF_HOST_MEMORY);
  EXPECT_EQ(outputOfCreation(),
            device_ + "Device DeviceVersion:OpenCL 1.2 test\ncreate context error \n");
}

}  // namespace
