// SPDX-License-Identifier: Apache-2.0
#include "opencl/OpenclJointDevices.h"

#include <algorithm>
#include <cstddef>

#include "opencl/OpenclJoint.h"

namespace framequilt {
namespace {

/// The first GPU of a platform.
cl_int firstGpu(cl_platform_id platform, cl_device_id& gpu) {
  cl_uint count = 0;
  clGetDeviceIDs(platform, CL_DEVICE_TYPE_GPU, 0, nullptr, &count);
  return clGetDeviceIDs(platform, CL_DEVICE_TYPE_GPU, std::min(count, 1U), &gpu, nullptr);
}

}  // namespace

std::vector<cl_platform_id> openclPlatforms() {
  cl_uint count = 0;
  clGetPlatformIDs(0, nullptr, &count);
  std::vector<cl_platform_id> ids(count);
  // Without their handles there is none.
  if (count > 0 && clGetPlatformIDs(count, ids.data(), nullptr) != CL_SUCCESS) return {};
  return ids;
}

bool isAmd(const std::string& platformName) { return platformName.compare(0, 3, "AMD") == 0; }
bool isNvidia(const std::string& platformName) { return platformName.compare(0, 3, "NVI") == 0; }

VendorPlatforms vendorPlatforms(const std::vector<cl_platform_id>& ids) {
  VendorPlatforms vendors;
  for (std::size_t i = 0; i < ids.size(); ++i) {
    const std::string name = getPlatformName(ids[i]);
    if (isAmd(name)) vendors.amd = static_cast<int>(i);
    if (isNvidia(name)) vendors.nvidia = static_cast<int>(i);
  }
  return vendors;
}

DeviceChoice chooseDevice(const std::vector<cl_platform_id>& ids, VendorPlatforms vendors) {
  DeviceChoice choice;
  for (const int index : {vendors.amd, vendors.nvidia}) {
    if (index < 0) continue;
    choice.status = firstGpu(ids[static_cast<std::size_t>(index)], choice.gpu);
    if (choice.status != CL_SUCCESS) continue;
    choice.platform = index;
    return choice;
  }
  return choice;
}

float megabytes(cl_ulong bytes) {
  constexpr float kPerKilo = 0.0009765625F;
  return static_cast<float>(bytes) * kPerKilo * kPerKilo;
}

}  // namespace framequilt
