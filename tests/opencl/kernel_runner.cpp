// SPDX-License-Identifier: Apache-2.0
#include "tests/opencl/kernel_runner.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <utility>

#include "opencl/OpenclJointDevices.h"

namespace {

constexpr std::size_t kSide = 16;

/// A multiple of what any device wants the start of a sub-buffer aligned to.
constexpr std::size_t kMargin = 4096;
constexpr unsigned char kUntouched = 171;

std::size_t roundedUp(int side) { return static_cast<std::size_t>(side) / kSide * kSide + kSide; }

std::unique_ptr<Device> device;
std::unique_ptr<KernelProgram> program;

/// Buffers of the emulator. It forgets the length of one that takes the place of another, and
/// would report what was written there as unwritten: none is released before the end.
std::vector<OwnedHandle<cl_mem, clReleaseMemObject>> retired;

/// Releases them before the process ends: a platform may have gone when statics are destroyed.
class ReleaseAtEnd : public testing::Environment {
 public:
  void TearDown() override {
    retired.clear();
    program.reset();
    device.reset();
  }
};
[[maybe_unused]] const auto* const releaseAtEnd =
    testing::AddGlobalTestEnvironment(new ReleaseAtEnd);  // NOLINT: it becomes the owner

}  // namespace

void requireSuccess(cl_int status, const std::string& call) {
  if (status != CL_SUCCESS) {
    throw std::runtime_error(call + " gave " + std::to_string(status));
  }
}

bool isEmulated() { return std::getenv("FRAMEQUILT_KERNELS_EMULATED") != nullptr; }

const Device& Device::get() {
  if (device == nullptr) device.reset(new Device);
  return *device;
}

namespace {

cl_device_id firstDevice() {
  cl_platform_id platform = nullptr;
  cl_uint count = 0;
  if (clGetPlatformIDs(1, &platform, &count) != CL_SUCCESS || count == 0) {
    throw std::runtime_error("OpenCL tests need PoCL: run scripts/setup");
  }
  cl_device_id found = nullptr;
  requireSuccess(clGetDeviceIDs(platform, CL_DEVICE_TYPE_ALL, 1, &found, nullptr),
                 "clGetDeviceIDs");
  return found;
}

/// The one that the library would use.
cl_device_id card() {
  const std::vector<cl_platform_id> platforms = framequilt::openclPlatforms();
  const framequilt::DeviceChoice choice =
      framequilt::chooseDevice(platforms, framequilt::vendorPlatforms(platforms));
  if (choice.platform < 0) throw std::runtime_error("there is no card that the library uses");
  return choice.gpu;
}

}  // namespace

Device::Device() {
  id_ = std::getenv("FRAMEQUILT_TEST_ON_CARD") != nullptr ? card() : firstDevice();
  cl_int status = CL_SUCCESS;
  context_.reset(clCreateContext(nullptr, 1, &id_, nullptr, nullptr, &status));
  requireSuccess(status, "clCreateContext");
  queue_.reset(clCreateCommandQueue(context(), id_, 0, &status));
  requireSuccess(status, "clCreateCommandQueue");
}

DeviceMemory::DeviceMemory(const void* contents, std::size_t bytes)
    : bytes_(bytes), margin_(isEmulated() ? 0 : kMargin) {
  const Device& used = Device::get();
  cl_int status = CL_SUCCESS;
  const std::size_t all = bytes_ + 2 * margin_;
  whole_.reset(clCreateBuffer(used.context(), CL_MEM_READ_WRITE, all, nullptr, &status));
  requireSuccess(status, "clCreateBuffer");

  if (margin_ > 0) {
    std::vector<unsigned char> initial(all, kUntouched);
    if (contents != nullptr) std::memcpy(initial.data() + margin_, contents, bytes_);
    requireSuccess(clEnqueueWriteBuffer(used.queue(), whole_.get(), CL_TRUE, 0, all, initial.data(),
                                        0, nullptr, nullptr),
                   "clEnqueueWriteBuffer");
    const cl_buffer_region region = {margin_, bytes_};
    inner_.reset(clCreateSubBuffer(whole_.get(), CL_MEM_READ_WRITE, CL_BUFFER_CREATE_TYPE_REGION,
                                   &region, &status));
    requireSuccess(status, "clCreateSubBuffer");
  } else if (contents != nullptr) {
    requireSuccess(clEnqueueWriteBuffer(used.queue(), whole_.get(), CL_TRUE, 0, bytes_, contents, 0,
                                        nullptr, nullptr),
                   "clEnqueueWriteBuffer");
  }
}

DeviceMemory::~DeviceMemory() {
  if (isEmulated()) retired.push_back(std::move(whole_));
}

void DeviceMemory::read(void* contents) const {
  std::vector<unsigned char> all(bytes_ + 2 * margin_);
  requireSuccess(clEnqueueReadBuffer(Device::get().queue(), whole_.get(), CL_TRUE, 0, all.size(),
                                     all.data(), 0, nullptr, nullptr),
                 "clEnqueueReadBuffer");
  const std::string untouched(margin_, static_cast<char>(kUntouched));
  EXPECT_EQ(std::memcmp(all.data(), untouched.data(), margin_), 0) << "written in front";
  EXPECT_EQ(std::memcmp(all.data() + margin_ + bytes_, untouched.data(), margin_), 0)
      << "written behind";
  std::memcpy(contents, all.data() + margin_, bytes_);
}

Grid gridOver(int rows, int cols) { return {{roundedUp(cols), roundedUp(rows)}, {kSide, kSide}}; }

Grid borderGrid(int paddedRows, int border) {
  return {{static_cast<std::size_t>(border), roundedUp(paddedRows)}, {1, 1}};
}

std::string kernelSource() {
  std::ifstream file(FRAMEQUILT_KERNELS, std::ios::binary);
  if (!file) throw std::runtime_error("no " FRAMEQUILT_KERNELS);
  return {std::istreambuf_iterator<char>(file), {}};
}

KernelProgram::KernelProgram(const std::string& source) {
  const Device& used = Device::get();
  const char* text = source.c_str();
  cl_int status = CL_SUCCESS;
  program_.reset(clCreateProgramWithSource(used.context(), 1, &text, nullptr, &status));
  requireSuccess(status, "clCreateProgramWithSource");
  requireSuccess(clBuildProgram(program_.get(), 0, nullptr, nullptr, nullptr, nullptr),
                 "clBuildProgram");
}

const KernelProgram& KernelProgram::get() {
  if (program == nullptr) program = std::make_unique<KernelProgram>(kernelSource());
  return *program;
}

void KernelProgram::launch(cl_kernel kernel, const Grid& grid) {
  const cl_command_queue queue = Device::get().queue();
  requireSuccess(clEnqueueNDRangeKernel(queue, kernel, 2, nullptr, grid.global.data(),
                                        grid.local.data(), 0, nullptr, nullptr),
                 "clEnqueueNDRangeKernel");
  requireSuccess(clFinish(queue), "clFinish");
}
