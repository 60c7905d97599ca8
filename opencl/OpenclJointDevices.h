// SPDX-License-Identifier: Apache-2.0
/// \file
/// Which device of the machine the OpenCL backend takes. Writes no global; from any thread.
#pragma once

#include <CL/cl.h>

#include <string>
#include <vector>

namespace framequilt {

/// Smaller devices cannot hold the planes of large frames beside a desktop.
constexpr float kLeastMegabytes = 4096.0F;

/// Every platform that the loader knows.
std::vector<cl_platform_id> openclPlatforms();

/// By the first three letters of a platform's name.
bool isAmd(const std::string& platformName);
bool isNvidia(const std::string& platformName);

/// Index of the last platform of either vendor, -1 where there is none.
struct VendorPlatforms {
  int amd = -1;
  int nvidia = -1;
};
VendorPlatforms vendorPlatforms(const std::vector<cl_platform_id>& ids);

struct DeviceChoice {
  int platform = -1;  ///< -1: neither vendor's platform has a GPU.
  cl_device_id gpu = nullptr;
  cl_int status = CL_SUCCESS;  ///< Of the last query.
};
/// The first GPU of the AMD platform, else of the NVIDIA one. What it can do is not looked at.
DeviceChoice chooseDevice(const std::vector<cl_platform_id>& ids, VendorPlatforms vendors);

/// In the precision that `kLeastMegabytes` is compared in.
float megabytes(cl_ulong bytes);

}  // namespace framequilt
