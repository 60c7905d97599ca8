// SPDX-License-Identifier: Apache-2.0
#include "tests/support/opencl_layer/presentation.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "tests/support/opencl_layer/records.h"

namespace framequilt::opencl_layer {
namespace {

struct DeviceHandle {
  const cl_icd_dispatch* entries;
  FakeDevice device;
  cl_platform_id platform;
};

struct PlatformHandle {
  const cl_icd_dispatch* entries;
  FakePlatform platform;
  std::vector<cl_device_id> devices;
};

struct ContextOrigin {
  std::vector<cl_device_id> devices;
  std::vector<cl_context_properties> properties;
};

struct Presentation {
  std::mutex mutex;
  // Never shrink, so handles and references stay good.
  std::deque<PlatformHandle> platforms;
  std::deque<DeviceHandle> devices;
  std::vector<cl_platform_id> presented;
  // Addresses that are given out again overwrite what stood here.
  std::unordered_map<cl_context, ContextOrigin> contexts;
  std::unordered_map<cl_command_queue, cl_device_id> queues;
};

std::atomic<const cl_icd_dispatch*> layerEntries{nullptr};

template <class Handle, class Id>
Handle* ofId(std::deque<Handle>& all, Id id) {
  const auto found = std::find_if(all.begin(), all.end(), [id](const Handle& handle) {
    return static_cast<const void*>(&handle) == static_cast<const void*>(id);
  });
  return found == all.end() ? nullptr : &*found;
}

// With the lock held, or before anyone else can know of `to`.
void presentIn(Presentation& to, std::vector<FakePlatform> platforms) {
  to.presented.clear();
  for (FakePlatform& platform : platforms) {
    PlatformHandle& handle = to.platforms.emplace_back();
    handle.entries = layerEntries;
    const auto id = reinterpret_cast<cl_platform_id>(&handle);
    for (const FakeDevice& device : platform.devices) {
      DeviceHandle& added = to.devices.emplace_back(DeviceHandle{layerEntries, device, id});
      handle.devices.push_back(reinterpret_cast<cl_device_id>(&added));
    }
    handle.platform = std::move(platform);
    to.presented.push_back(id);
  }
}

Presentation& presentation() {
  static Presentation& all = *[] {
    auto* const made = new Presentation;
    presentIn(*made, {FakePlatform{}});
    return made;
  }();
  return all;
}

}  // namespace

void setLayerEntries(const cl_icd_dispatch& entries) {
  layerEntries = &entries;
  Presentation& all = presentation();
  const std::lock_guard lock(all.mutex);
  for (PlatformHandle& platform : all.platforms) platform.entries = &entries;
  for (DeviceHandle& device : all.devices) device.entries = &entries;
}

void present(std::vector<FakePlatform> platforms) {
  const std::lock_guard lock(presentation().mutex);
  presentIn(presentation(), std::move(platforms));
}

void presentDefault() { present({FakePlatform{}}); }

std::vector<cl_platform_id> presentedPlatforms() {
  const std::lock_guard lock(presentation().mutex);
  return presentation().presented;
}

const FakePlatform* fakePlatform(const char* entryPoint, cl_platform_id handle) {
  const std::lock_guard lock(presentation().mutex);
  const PlatformHandle* const known = ofId(presentation().platforms, handle);
  if (known != nullptr) return &known->platform;
  recordViolation(std::string(entryPoint) + (handle == nullptr ? ": null" : ": unknown") +
                  " platform");
  return nullptr;
}

const FakeDevice* fakeDevice(const char* entryPoint, cl_device_id handle) {
  const std::lock_guard lock(presentation().mutex);
  const DeviceHandle* const known = ofId(presentation().devices, handle);
  if (known != nullptr) return &known->device;
  recordViolation(std::string(entryPoint) + (handle == nullptr ? ": null" : ": unknown") +
                  " device");
  return nullptr;
}

std::vector<cl_device_id> devicesOf(cl_platform_id platform, cl_device_type type) {
  const std::lock_guard lock(presentation().mutex);
  const std::vector<cl_device_id>& all = ofId(presentation().platforms, platform)->devices;
  // The first device of a platform is its default one.
  if (type == CL_DEVICE_TYPE_DEFAULT) {
    return {all.begin(), all.begin() + (all.empty() ? 0 : 1)};
  }
  std::vector<cl_device_id> matching;
  std::copy_if(all.begin(), all.end(), std::back_inserter(matching), [type](cl_device_id id) {
    return (ofId(presentation().devices, id)->device.type & type) != 0;
  });
  return matching;
}

cl_platform_id platformOf(cl_device_id device) {
  const std::lock_guard lock(presentation().mutex);
  return ofId(presentation().devices, device)->platform;
}

void rememberContext(cl_context context, std::vector<cl_device_id> devices,
                     std::vector<cl_context_properties> properties) {
  const std::lock_guard lock(presentation().mutex);
  presentation().contexts[context] = {std::move(devices), std::move(properties)};
}

void rememberQueue(cl_command_queue queue, cl_device_id device) {
  const std::lock_guard lock(presentation().mutex);
  presentation().queues[queue] = device;
}

std::vector<cl_device_id> devicesOf(cl_context context) {
  const std::lock_guard lock(presentation().mutex);
  return presentation().contexts[context].devices;
}

std::vector<cl_context_properties> propertiesOf(cl_context context) {
  const std::lock_guard lock(presentation().mutex);
  return presentation().contexts[context].properties;
}

cl_device_id deviceOf(cl_command_queue queue) {
  const std::lock_guard lock(presentation().mutex);
  return presentation().queues[queue];
}

}  // namespace framequilt::opencl_layer
