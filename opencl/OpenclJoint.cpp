// SPDX-License-Identifier: Apache-2.0
#include "opencl/OpenclJoint.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string_view>
#include <vector>

#include "framequilt/tuning.h"
#include "interface/report.h"
#include "opencl/OpenclJointDevices.h"
#include "opencl/OpenclJointReleased.h"
#include "opencl/OpenclJointState.h"

namespace {

using framequilt::report;
using framequilt::reportUnended;

constexpr std::size_t kVersionCapacity = 100;
constexpr std::size_t kBuildLogCapacity = 163840;

struct Free {
  void operator()(char* block) const { std::free(block); }
};
struct Close {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

struct KernelSource {
  std::unique_ptr<char, Free> text;
  std::size_t length = 0;
};

/// Where a message comes from: this file and the line that reports.
std::string at(const char* blanksBefore, int line) {
  return std::string(__FILE__) + " at" + blanksBefore + std::to_string(line);
}

KernelSource readKernelSource(const char* path) {
  const std::unique_ptr<std::FILE, Close> file(std::fopen(path, "rb"));
  if (!file) {
    report(at("  ", __LINE__) + " :Can't open " + path);
    return {};
  }
  std::fseek(file.get(), 0, SEEK_END);
  const long end = std::ftell(file.get());
  std::fseek(file.get(), 0, SEEK_SET);

  KernelSource source;
  // What ends beyond the largest file is a folder.
  const bool readable = end > 0 && end < std::numeric_limits<long>::max();
  source.length = readable ? static_cast<std::size_t>(end) : 0;
  if (readable) source.text.reset(static_cast<char*>(std::malloc(source.length)));
  if (!source.text || std::fread(source.text.get(), source.length, 1, file.get()) == 0) {
    report(at(" ", __LINE__) + ":can't read source " + path);
    return {};
  }
  return source;
}

template <class T>
T numberOf(cl_device_id dev, cl_device_info what) {
  T value{};
  errNum = clGetDeviceInfo(dev, what, sizeof(value), &value, nullptr);
  return value;
}

/// Read and not used.
void readName(cl_device_id dev) {
  std::size_t size = 0;
  if (clGetDeviceInfo(dev, CL_DEVICE_NAME, 0, nullptr, &size) != CL_SUCCESS) return;
  std::vector<char> name(size);
  clGetDeviceInfo(dev, CL_DEVICE_NAME, name.size(), name.data(), nullptr);
}

std::string wholeNumber(float value) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%0.0f", static_cast<double>(value));
  return text.data();
}

/// Prints what the device is. False when it is too small or does not tell its version.
bool describeDevice(cl_device_id dev) {
  readName(dev);
  report("Compute Units Number:" +
         std::to_string(numberOf<cl_int>(dev, CL_DEVICE_MAX_COMPUTE_UNITS)));
  report("Device Frequency:" +
         std::to_string(numberOf<cl_int>(dev, CL_DEVICE_MAX_CLOCK_FREQUENCY)) + "(MHz)");
  const float memory = framequilt::megabytes(numberOf<cl_ulong>(dev, CL_DEVICE_GLOBAL_MEM_SIZE));
  report("Device Frequency:" + wholeNumber(memory) + "(MB)");
  if (memory < framequilt::kLeastMegabytes) return false;
  report("Device Frequency:" +
         std::to_string(numberOf<cl_int>(dev, CL_DEVICE_GLOBAL_MEM_CACHELINE_SIZE)) + "(Byte)");

  std::array<char, kVersionCapacity + 1> version{};  // A zero behind whatever comes back.
  errNum = clGetDeviceInfo(dev, CL_DEVICE_VERSION, kVersionCapacity, version.data(), nullptr);
  report(std::string("Device DeviceVersion:") + version.data());
  if (errNum != CL_SUCCESS) {
    reportUnended("There is NO GPU or CPU");
    return false;
  }
  numberOf<cl_uint>(dev, CL_DEVICE_PREFERRED_VECTOR_WIDTH_FLOAT);
  return true;
}

std::string buildLog(cl_program prog, cl_device_id dev) {
  std::vector<char> log(kBuildLogCapacity + 1);
  clGetProgramBuildInfo(prog, dev, CL_PROGRAM_BUILD_LOG, kBuildLogCapacity, log.data(), nullptr);
  return log.data();
}

}  // namespace

std::string getPlatformName(cl_platform_id platform) {
  std::size_t size = 0;
  if (clGetPlatformInfo(platform, CL_PLATFORM_NAME, 0, nullptr, &size) != CL_SUCCESS) return {};
  std::vector<char> name(size + 1);  // A zero behind whatever comes back.
  clGetPlatformInfo(platform, CL_PLATFORM_NAME, size, name.data(), nullptr);
  return name.data();
}

char* ReadKernelSourceFileBin(const char* path, std::size_t* /*size*/) {
  return readKernelSource(path).text.release();
}

cl_context CreateContext(cl_device_id* dev) {
  const std::vector<cl_platform_id> ids = framequilt::openclPlatforms();
  if (ids.empty()) return nullptr;
  const framequilt::VendorPlatforms vendors = framequilt::vendorPlatforms(ids);
  AMDidx = vendors.amd;
  NVIDIAidx = vendors.nvidia;
  const framequilt::DeviceChoice choice = framequilt::chooseDevice(ids, vendors);
  errNum = choice.status;
  if (choice.platform < 0) return nullptr;
  *dev = choice.gpu;
  if (!describeDevice(*dev)) return nullptr;

  const cl_context created = clCreateContext(nullptr, 1, dev, nullptr, nullptr, &errNum);
  if (errNum != CL_SUCCESS) {
    report("create context error ");
    return nullptr;
  }
  framequilt::noteCreated(created);
  return created;
}

cl_command_queue CreateCommandQueue(cl_context ctx, cl_device_id dev) {
  const cl_command_queue queue = clCreateCommandQueue(ctx, dev, 0, nullptr);
  if (queue == nullptr) {
    reportUnended("Failed to create commandQueue for device 0");
    return nullptr;
  }
  framequilt::noteCreated(queue);
  return queue;
}

cl_program CreateProgram(cl_context ctx, cl_device_id dev, const char* path) {
  KernelSource source = readKernelSource(path);
  const char* text = source.text.get();
  const cl_program created =
      text != nullptr ? clCreateProgramWithSource(ctx, 1, &text, &source.length, &errNum) : nullptr;
  if (created == nullptr) {
    reportUnended("Failed to create CL program for source");
    return nullptr;
  }
  source.text.reset();

  errNum = clBuildProgram(created, 0, nullptr, nullptr, nullptr, nullptr);
  if (errNum != CL_SUCCESS) {
    reportUnended("Error in kernel:" + buildLog(created, dev));
    clReleaseProgram(created);
    return nullptr;
  }
  framequilt::noteCreated(created);
  return created;
}
