// SPDX-License-Identifier: Apache-2.0
#include <array>

#include "tests/opencl/layer_fixture.h"

namespace {

constexpr cl_int kPlatformNotFound = -1001;

std::vector<cl_platform_id> platforms() {
  std::array<cl_platform_id, 8> found{};
  cl_uint count = 0;
  EXPECT_EQ(clGetPlatformIDs(8, found.data(), &count), CL_SUCCESS);
  return {found.begin(), found.begin() + count};
}

std::vector<cl_device_id> devices(cl_platform_id platform, cl_device_type type) {
  std::array<cl_device_id, 8> found{};
  cl_uint count = 0;
  EXPECT_EQ(clGetDeviceIDs(platform, type, 8, found.data(), &count), CL_SUCCESS);
  return {found.begin(), found.begin() + count};
}

std::string nameOf(cl_platform_id platform) {
  std::array<char, 100> text{};
  EXPECT_EQ(clGetPlatformInfo(platform, CL_PLATFORM_NAME, text.size(), text.data(), nullptr),
            CL_SUCCESS);
  return text.data();
}

std::string textOf(cl_device_id device, cl_device_info name) {
  std::array<char, 100> text{};
  EXPECT_EQ(clGetDeviceInfo(device, name, text.size(), text.data(), nullptr), CL_SUCCESS);
  return text.data();
}

template <class T>
T valueOf(cl_device_id device, cl_device_info name) {
  T value{};
  // NOLINTNEXTLINE(bugprone-sizeof-expression): also for handles, which point to structures.
  EXPECT_EQ(clGetDeviceInfo(device, name, sizeof(T), &value, nullptr), CL_SUCCESS);
  return value;
}

}  // namespace

using LayerPresentation = LayerTest;
using LayerPresentationInUse = LayerRunTest;

TEST_F(LayerPresentation, DefaultIsOnePlatformWithALargeGpu) {
  ASSERT_EQ(platforms().size(), 1u);
  EXPECT_EQ(nameOf(platforms()[0]), "NVIDIA test platform");
  const auto found = devices(platforms()[0], CL_DEVICE_TYPE_GPU);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(valueOf<cl_ulong>(found[0], CL_DEVICE_GLOBAL_MEM_SIZE), 8192 * layer::kMegabyte);
  EXPECT_EQ(layer::violations(), std::vector<std::string>{});
}

TEST_F(LayerPresentation, PlatformsAndTheirDevicesAreTheListedOnes) {
  layer::FakeDevice small;
  small.name = "Small";
  small.globalMemoryBytes = 4095 * layer::kMegabyte;
  small.version = "OpenCL 1.1 small";
  small.computeUnits = 3;
  small.clockMHz = 700;
  small.cacheLineBytes = 32;
  small.preferredFloatWidth = 4;
  layer::FakeDevice processor;
  processor.name = "Processor";
  processor.type = CL_DEVICE_TYPE_CPU;
  layer::present({{.name = "AMD one", .devices = {processor}},
                  {.name = "NVIDIA two", .devices = {processor, small, {}}}});

  const auto all = platforms();
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(nameOf(all[0]), "AMD one");
  EXPECT_EQ(nameOf(all[1]), "NVIDIA two");
  EXPECT_EQ(clGetDeviceIDs(all[0], CL_DEVICE_TYPE_GPU, 0, nullptr, nullptr), CL_INVALID_VALUE);
  cl_uint count = 7;
  EXPECT_EQ(clGetDeviceIDs(all[0], CL_DEVICE_TYPE_GPU, 0, nullptr, &count), CL_DEVICE_NOT_FOUND);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(devices(all[1], CL_DEVICE_TYPE_ALL).size(), 3u);
  const auto cards = devices(all[1], CL_DEVICE_TYPE_GPU);
  ASSERT_EQ(cards.size(), 2u);
  EXPECT_EQ(textOf(cards[0], CL_DEVICE_NAME), "Small");
  EXPECT_EQ(textOf(cards[0], CL_DEVICE_VERSION), "OpenCL 1.1 small");
  EXPECT_EQ(valueOf<cl_ulong>(cards[0], CL_DEVICE_GLOBAL_MEM_SIZE), 4095 * layer::kMegabyte);
  EXPECT_EQ(valueOf<cl_uint>(cards[0], CL_DEVICE_MAX_COMPUTE_UNITS), 3u);
  EXPECT_EQ(valueOf<cl_uint>(cards[0], CL_DEVICE_MAX_CLOCK_FREQUENCY), 700u);
  EXPECT_EQ(valueOf<cl_uint>(cards[0], CL_DEVICE_GLOBAL_MEM_CACHELINE_SIZE), 32u);
  EXPECT_EQ(valueOf<cl_uint>(cards[0], CL_DEVICE_PREFERRED_VECTOR_WIDTH_FLOAT), 4u);
  EXPECT_EQ(valueOf<cl_platform_id>(cards[0], CL_DEVICE_PLATFORM), all[1]);
  EXPECT_EQ(valueOf<cl_device_type>(cards[0], CL_DEVICE_TYPE), cl_device_type{CL_DEVICE_TYPE_GPU});
}

TEST_F(LayerPresentation, OneSlotReceivesOneHandle) {
  layer::present({{.devices = {{}, {}}}});
  std::array<cl_device_id, 2> slots{};
  cl_uint count = 0;
  ASSERT_EQ(clGetDeviceIDs(platforms()[0], CL_DEVICE_TYPE_GPU, 1, slots.data(), &count),
            CL_SUCCESS);
  EXPECT_EQ(count, 2u);
  EXPECT_NE(slots[0], nullptr);
  EXPECT_EQ(slots[1], nullptr);
}

TEST_F(LayerPresentation, NoPlatformsIsWhatAMachineWithoutRuntimeSays) {
  layer::present({});
  cl_uint count = 7;
  EXPECT_EQ(clGetPlatformIDs(0, nullptr, &count), kPlatformNotFound);
  EXPECT_EQ(count, 0u);
}

TEST_F(LayerPresentation, ScriptedQueriesFail) {
  layer::FakeDevice device;
  device.failingInfos = {{CL_DEVICE_VERSION, CL_OUT_OF_RESOURCES}};
  layer::present({{.name = "one", .devices = {device}},
                  {.name = "two", .devices = {}, .infoError = CL_OUT_OF_HOST_MEMORY},
                  {.name = "three", .devices = {{}}, .devicesError = CL_OUT_OF_RESOURCES}});
  const auto all = platforms();
  const cl_device_id found = devices(all[0], CL_DEVICE_TYPE_GPU).at(0);
  std::size_t bytes = 0;
  EXPECT_EQ(clGetDeviceInfo(found, CL_DEVICE_VERSION, 0, nullptr, &bytes), CL_OUT_OF_RESOURCES);
  EXPECT_EQ(clGetDeviceInfo(found, CL_DEVICE_NAME, 0, nullptr, &bytes), CL_SUCCESS);
  EXPECT_EQ(clGetPlatformInfo(all[1], CL_PLATFORM_NAME, 0, nullptr, &bytes), CL_OUT_OF_HOST_MEMORY);
  cl_uint count = 0;
  EXPECT_EQ(clGetDeviceIDs(all[2], CL_DEVICE_TYPE_ALL, 0, nullptr, &count), CL_OUT_OF_RESOURCES);
}

TEST_F(LayerPresentation, InventedHandlesAreRefused) {
  int something = 0;
  const auto invented = reinterpret_cast<cl_device_id>(&something);
  cl_int status = CL_SUCCESS;
  EXPECT_EQ(clCreateContext(nullptr, 1, &invented, nullptr, nullptr, &status), nullptr);
  EXPECT_EQ(status, CL_INVALID_DEVICE);
  EXPECT_EQ(clGetPlatformInfo(nullptr, CL_PLATFORM_NAME, 0, nullptr, nullptr), CL_INVALID_PLATFORM);
  EXPECT_EQ(layer::violations(), (std::vector<std::string>{"clCreateContext: unknown device",
                                                           "clGetPlatformInfo: null platform"}));
}

TEST_F(LayerPresentationInUse, ObjectsNameThePresentedDevice) {
  cl_device_id device = nullptr;
  EXPECT_EQ(clGetContextInfo(context_, CL_CONTEXT_DEVICES, sizeof(cl_device_id), &device, nullptr),
            CL_SUCCESS);
  EXPECT_EQ(device, device_);
  device = nullptr;
  EXPECT_EQ(clGetCommandQueueInfo(queue_, CL_QUEUE_DEVICE, sizeof(cl_device_id), &device, nullptr),
            CL_SUCCESS);
  EXPECT_EQ(device, device_);
  device = nullptr;
  EXPECT_EQ(clGetProgramInfo(program_, CL_PROGRAM_DEVICES, sizeof(cl_device_id), &device, nullptr),
            CL_SUCCESS);
  EXPECT_EQ(device, device_);
  cl_uint count = 0;
  EXPECT_EQ(clGetProgramInfo(program_, CL_PROGRAM_NUM_DEVICES, sizeof count, &count, nullptr),
            CL_SUCCESS);
  EXPECT_EQ(count, 1u);
}

TEST_F(LayerPresentationInUse, DeviceIsTranslatedWhereverItIsTaken) {
  const std::array<cl_context_properties, 3> properties{
      CL_CONTEXT_PLATFORM, reinterpret_cast<cl_context_properties>(platform_), 0};
  const cl_context other =
      clCreateContext(properties.data(), 1, &device_, nullptr, nullptr, &status_);
  ASSERT_EQ(status_, CL_SUCCESS);
  std::array<cl_context_properties, 3> answered{};
  EXPECT_EQ(
      clGetContextInfo(other, CL_CONTEXT_PROPERTIES, sizeof answered, answered.data(), nullptr),
      CL_SUCCESS);
  EXPECT_EQ(answered, properties);
  EXPECT_EQ(clReleaseContext(other), CL_SUCCESS);

  const cl_context byType =
      clCreateContextFromType(properties.data(), CL_DEVICE_TYPE_GPU, nullptr, nullptr, &status_);
  EXPECT_EQ(status_, CL_SUCCESS);
  EXPECT_EQ(clReleaseContext(byType), CL_SUCCESS);

  const char* source = kSource;
  const cl_program unbuilt = clCreateProgramWithSource(context_, 1, &source, nullptr, &status_);
  EXPECT_EQ(clBuildProgram(unbuilt, 1, &device_, "", nullptr, nullptr), CL_SUCCESS);
  EXPECT_EQ(clReleaseProgram(unbuilt), CL_SUCCESS);
  std::size_t bytes = 0;
  EXPECT_EQ(clGetProgramBuildInfo(program_, device_, CL_PROGRAM_BUILD_LOG, 0, nullptr, &bytes),
            CL_SUCCESS);
  std::size_t items = 0;
  EXPECT_EQ(clGetKernelWorkGroupInfo(addOne_, device_, CL_KERNEL_WORK_GROUP_SIZE, sizeof items,
                                     &items, nullptr),
            CL_SUCCESS);
  EXPECT_GT(items, 0u);
  EXPECT_EQ(clRetainDevice(device_), CL_SUCCESS);
  EXPECT_EQ(clReleaseDevice(device_), CL_SUCCESS);
  EXPECT_EQ(layer::violations(), std::vector<std::string>{});
}
