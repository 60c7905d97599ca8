// SPDX-License-Identifier: Apache-2.0
/// \file
/// Platforms and devices: answered from what is presented.
#include <algorithm>

#include "tests/support/opencl_layer/call.h"
#include "tests/support/opencl_layer/entries.h"
#include "tests/support/opencl_layer/presentation.h"

namespace framequilt::opencl_layer {
namespace {

constexpr cl_int kPlatformNotFound = -1001;  // CL_PLATFORM_NOT_FOUND_KHR of cl_ext.h

// What calls that list handles do; `none` answers an empty list.
template <class Id>
cl_int answerList(const std::vector<Id>& found, cl_int none, cl_uint room, Id* ids,
                  cl_uint* count) {
  if (ids == nullptr && count == nullptr) return CL_INVALID_VALUE;
  if (ids != nullptr && room == 0) return CL_INVALID_VALUE;
  const auto all = static_cast<cl_uint>(found.size());
  if (count != nullptr) *count = all;
  if (all == 0) return none;
  if (ids != nullptr) std::copy_n(found.begin(), std::min(room, all), ids);
  return CL_SUCCESS;
}

cl_int CL_API_CALL getPlatformIds(cl_uint room, cl_platform_id* platforms, cl_uint* count) {
  Call call("clGetPlatformIDs");
  if (!call.mayPass()) return call.status();
  const auto found = realDevice() == nullptr ? std::vector<cl_platform_id>{} : presentedPlatforms();
  return answerList(found, kPlatformNotFound, room, platforms, count);
}

cl_int CL_API_CALL getPlatformInfo(cl_platform_id platform, cl_platform_info name, size_t room,
                                   void* value, size_t* bytesOut) {
  Call call("clGetPlatformInfo");
  if (!call.mayPass(platform)) return call.status();
  const FakePlatform& fake = *fakePlatform(call.name(), platform);
  if (fake.infoError) return *fake.infoError;
  if (name == CL_PLATFORM_NAME) return answerInfo(fake.name, room, value, bytesOut);
  return callRuntime(runtime().clGetPlatformInfo, realPlatform(), name, room, value, bytesOut);
}

cl_int CL_API_CALL getDeviceIds(cl_platform_id platform, cl_device_type type, cl_uint room,
                                cl_device_id* devices, cl_uint* count) {
  Call call("clGetDeviceIDs");
  if (!call.mayPass(platform)) return call.status();
  const FakePlatform& fake = *fakePlatform(call.name(), platform);
  if (fake.devicesError) return *fake.devicesError;
  return answerList(devicesOf(platform, type), CL_DEVICE_NOT_FOUND, room, devices, count);
}

cl_int CL_API_CALL getDeviceInfo(cl_device_id device, cl_device_info name, size_t room, void* value,
                                 size_t* bytesOut) {
  Call call("clGetDeviceInfo");
  if (!call.mayPass(device)) return call.status();
  const FakeDevice& fake = *fakeDevice(call.name(), device);
  const auto failing = fake.failingInfos.find(name);
  if (failing != fake.failingInfos.end()) return failing->second;
  switch (name) {
    case CL_DEVICE_NAME:
      return answerInfo(fake.name, room, value, bytesOut);
    case CL_DEVICE_TYPE:
      return answerInfo(fake.type, room, value, bytesOut);
    case CL_DEVICE_VERSION:
      return answerInfo(fake.version, room, value, bytesOut);
    case CL_DEVICE_PLATFORM:
      return answerInfo(platformOf(device), room, value, bytesOut);
    case CL_DEVICE_GLOBAL_MEM_SIZE:
      return answerInfo(fake.globalMemoryBytes, room, value, bytesOut);
    case CL_DEVICE_MAX_COMPUTE_UNITS:
      return answerInfo(fake.computeUnits, room, value, bytesOut);
    case CL_DEVICE_MAX_CLOCK_FREQUENCY:
      return answerInfo(fake.clockMHz, room, value, bytesOut);
    case CL_DEVICE_GLOBAL_MEM_CACHELINE_SIZE:
      return answerInfo(fake.cacheLineBytes, room, value, bytesOut);
    case CL_DEVICE_PREFERRED_VECTOR_WIDTH_FLOAT:
      return answerInfo(fake.preferredFloatWidth, room, value, bytesOut);
    default:
      return callRuntime(runtime().clGetDeviceInfo, realDevice(), name, room, value, bytesOut);
  }
}

// Root devices are not counted.
cl_int CL_API_CALL retainDevice(cl_device_id device) {
  Call call("clRetainDevice");
  return call.mayPass(device) ? CL_SUCCESS : call.status();
}

cl_int CL_API_CALL releaseDevice(cl_device_id device) {
  Call call("clReleaseDevice");
  return call.mayPass(device) ? CL_SUCCESS : call.status();
}

}  // namespace

void replacePlatformEntries(cl_icd_dispatch& entries) {
  entries.clGetPlatformIDs = getPlatformIds;
  entries.clGetPlatformInfo = getPlatformInfo;
  entries.clGetDeviceIDs = getDeviceIds;
  entries.clGetDeviceInfo = getDeviceInfo;
  entries.clRetainDevice = retainDevice;
  entries.clReleaseDevice = releaseDevice;
}

}  // namespace framequilt::opencl_layer
