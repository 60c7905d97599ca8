// SPDX-License-Identifier: Apache-2.0
// What is told of OpenCL's devices, and that it is what the engine does.
#include "framequilt/opencl_devices.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "opencl/OpenclJoint.h"
#include "tests/support/opencl_layer.h"
#include "tests/support/recorded_reports.h"

namespace layer = framequilt::opencl_layer;
using framequilt::OpenclDevice;
using framequilt::openclDevices;
using framequilt::openclObstacle;
using layer::FakeDevice;
using layer::FakePlatform;

namespace {

FakeDevice gpu(const std::string& name, cl_ulong memoryMegabytes = 8192) {
  FakeDevice made;
  made.name = name;
  made.globalMemoryBytes = memoryMegabytes * layer::kMegabyte;
  return made;
}

FakeDevice ofType(const std::string& name, cl_device_type type) {
  FakeDevice made = gpu(name);
  made.type = type;
  return made;
}

FakePlatform platform(const std::string& name, const std::vector<FakeDevice>& devices) {
  FakePlatform made;
  made.name = name;
  made.devices = devices;
  return made;
}

/// "NAME: REASON" of every device; a used one has the reason "used".
std::vector<std::string> reasons() {
  std::vector<std::string> lines;
  for (const OpenclDevice& found : openclDevices()) {
    EXPECT_EQ(found.used, found.reason.empty()) << found.name;
    lines.push_back(found.name + ": " + (found.used ? "used" : found.reason));
  }
  return lines;
}

class OpenclDevices : public testing::Test {
 protected:
  ~OpenclDevices() override {
    layer::presentDefault();
    EXPECT_EQ(layer::violations(), std::vector<std::string>());
    layer::resetRecords();
  }

  const RecordedReports quiet_;
};

using Lines = std::vector<std::string>;

}  // namespace

TEST_F(OpenclDevices, NoneWithoutAPlatform) {
  layer::present({});
  EXPECT_TRUE(openclDevices().empty());
  EXPECT_EQ(openclObstacle(),
            "no OpenCL platform is installed: install the driver of an AMD or NVIDIA GPU, or "
            "choose the host backend");
}

TEST_F(OpenclDevices, AreDescribed) {
  FakeDevice device = gpu("Card", 4097);
  device.globalMemoryBytes += layer::kMegabyte - 1;
  device.version = "OpenCL 1.2 card";
  layer::present({platform("AMD one", {device})});
  const std::vector<OpenclDevice> found = openclDevices();
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].platform, "AMD one");
  EXPECT_EQ(found[0].name, "Card");
  EXPECT_EQ(found[0].kind, "GPU");
  EXPECT_EQ(found[0].version, "OpenCL 1.2 card");
  EXPECT_EQ(found[0].memoryMegabytes, 4097);
  EXPECT_TRUE(found[0].used);
  EXPECT_EQ(openclObstacle(), "");
}

TEST_F(OpenclDevices, KindIsNamed) {
  layer::present({platform("AMD", {ofType("a", CL_DEVICE_TYPE_CPU), ofType("b", CL_DEVICE_TYPE_GPU),
                                   ofType("c", CL_DEVICE_TYPE_ACCELERATOR)})});
  Lines kinds;
  for (const OpenclDevice& found : openclDevices()) kinds.push_back(found.kind);
  EXPECT_EQ(kinds, (Lines{"CPU", "GPU", "accelerator"}));
  EXPECT_EQ(reasons(), (Lines{"a: it is no GPU", "b: used", "c: it is no GPU"}));
}

TEST_F(OpenclDevices, OfOtherPlatformsAreNotUsed) {
  layer::present({platform("Portable", {gpu("a")}), platform("amd", {})});
  EXPECT_EQ(reasons(),
            (Lines{"a: its platform is neither AMD's nor NVIDIA's", ": it has no devices"}));
  EXPECT_EQ(openclObstacle(),
            "no OpenCL platform of AMD or NVIDIA, only 'Portable', 'amd': install the driver of "
            "such a GPU, or choose the host backend");
}

TEST_F(OpenclDevices, OfAmdArePreferred) {
  layer::present({platform("NVIDIA CUDA", {gpu("n")}), platform("AMD", {gpu("a"), gpu("b")})});
  EXPECT_EQ(reasons(), (Lines{"n: a GPU of the AMD platform is preferred", "a: used",
                              "b: an earlier GPU of its platform is taken"}));
}

TEST_F(OpenclDevices, OfNvidiaAreUsedWhereAmdHasNoGpu) {
  layer::present({platform("AMD", {ofType("a", CL_DEVICE_TYPE_CPU)}), platform("NVI", {gpu("n")})});
  EXPECT_EQ(reasons(), (Lines{"a: it is no GPU", "n: used"}));
}

TEST_F(OpenclDevices, OfTheLastPlatformOfAVendorCount) {
  layer::present({platform("NVIDIA", {gpu("a")}), platform("NVIDIA", {gpu("b")})});
  EXPECT_EQ(reasons(),
            (Lines{"a: another platform of this vendor comes later and is taken", "b: used"}));
}

TEST_F(OpenclDevices, NeedMemory) {
  layer::present({platform("AMD", {gpu("small", 4095), gpu("large")})});
  EXPECT_EQ(reasons(), (Lines{"small: has 4095 MB of memory, OpenCL needs 4096 MB",
                              "large: an earlier GPU of its platform is taken"}));
  EXPECT_EQ(openclObstacle(),
            "the GPU 'small' has 4095 MB of memory, OpenCL needs 4096 MB: choose the host backend");
  layer::present({platform("AMD", {gpu("enough", 4096)})});
  EXPECT_EQ(reasons(), Lines{"enough: used"});
}

TEST_F(OpenclDevices, TellTheirVersion) {
  FakeDevice silent = gpu("silent");
  silent.failingInfos[CL_DEVICE_VERSION] = CL_OUT_OF_RESOURCES;
  layer::present({platform("AMD", {silent})});
  EXPECT_EQ(reasons(), Lines{"silent: does not tell its OpenCL version"});
}

TEST_F(OpenclDevices, NeedAGpu) {
  layer::present({platform("NVIDIA CUDA", {ofType("c", CL_DEVICE_TYPE_CPU)})});
  EXPECT_EQ(openclObstacle(),
            "the OpenCL platform 'NVIDIA CUDA' has no GPU: check its driver, or choose the host "
            "backend");
}

TEST_F(OpenclDevices, UsedOneIsThatOfTheEngine) {
  const std::vector<std::vector<FakePlatform>> machines = {
      {},
      {platform("Portable", {gpu("a")})},
      {platform("NVIDIA", {gpu("n")}), platform("AMD", {gpu("a")})},
      {platform("NVIDIA", {gpu("n")}), platform("AMD", {gpu("a", 100)})},
      {platform("NVIDIA", {gpu("n")}), platform("AMD", {})},
      {platform("AMD", {gpu("a")}), platform("AMD", {ofType("b", CL_DEVICE_TYPE_CPU)})},
      {platform("AMD", {ofType("c", CL_DEVICE_TYPE_CPU), gpu("a"), gpu("b")})}};
  for (const std::vector<FakePlatform>& machine : machines) {
    layer::present(machine);
    std::string told, taken;
    for (const OpenclDevice& found : openclDevices()) told += found.used ? found.name : "";
    cl_device_id dev = nullptr;
    const cl_context made = CreateContext(&dev);
    if (made != nullptr) {
      char name[16] = {};
      clGetDeviceInfo(dev, CL_DEVICE_NAME, sizeof(name), name, nullptr);
      taken = name;
      clReleaseContext(made);
    }
    EXPECT_EQ(told, taken);
    EXPECT_EQ(openclObstacle().empty(), !taken.empty());
  }
}

TEST_F(OpenclDevices, ObstacleNamesAKernelFileThatIsMissing) {
  layer::presentDefault();
  EXPECT_EQ(openclObstacle("/nowhere/cl.bin"),
            "the kernel file '/nowhere/cl.bin' cannot be read: name another, or choose the host "
            "backend");
}
