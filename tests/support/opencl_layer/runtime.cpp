// SPDX-License-Identifier: Apache-2.0
#include "tests/support/opencl_layer/runtime.h"

#include <atomic>

#include "tests/support/opencl_layer.h"

namespace framequilt::opencl_layer {
namespace {

std::atomic<const cl_icd_dispatch*> entriesBelow{nullptr};
std::atomic<bool> oneAtATime{false};

struct RealDevice {
  cl_platform_id platform = nullptr;
  cl_device_id device = nullptr;
};

RealDevice findRealDevice() {
  RealDevice found;
  if (!loaded()) return found;
  cl_platform_id platform = nullptr;
  if (callRuntime(runtime().clGetPlatformIDs, 1u, &platform, nullptr) != CL_SUCCESS) return found;
  cl_device_id device = nullptr;
  if (callRuntime(runtime().clGetDeviceIDs, platform, cl_device_type{CL_DEVICE_TYPE_ALL}, 1u,
                  &device, nullptr) != CL_SUCCESS) {
    return found;
  }
  return {platform, device};
}

const RealDevice& real() {
  static const RealDevice& found = *new RealDevice(findRealDevice());
  return found;
}

}  // namespace

const cl_icd_dispatch& runtime() { return *entriesBelow.load(); }
void setRuntime(const cl_icd_dispatch& entries) { entriesBelow = &entries; }
bool loaded() { return entriesBelow.load() != nullptr; }

// Recursive: a runtime may call back from inside a call.
std::unique_lock<std::recursive_mutex> serialLock() {
  static std::recursive_mutex& mutex = *new std::recursive_mutex;
  std::unique_lock lock(mutex, std::defer_lock);
  if (oneAtATime) lock.lock();
  return lock;
}

void serialise(bool on) { oneAtATime = on; }

cl_platform_id realPlatform() { return loaded() ? real().platform : nullptr; }
cl_device_id realDevice() { return loaded() ? real().device : nullptr; }
bool runtimeFound() { return realDevice() != nullptr; }

}  // namespace framequilt::opencl_layer
