// SPDX-License-Identifier: Apache-2.0
#include "framequilt/opencl_devices.h"

#include <CL/cl.h>

#include <cstddef>

#include "interface/kernel_file.h"
#include "interface/opencl_obstacle.h"
#include "opencl/OpenclJoint.h"
#include "opencl/OpenclJointDevices.h"

namespace framequilt {
namespace {

/// The platforms and what the backend takes of them.
struct Survey {
  std::vector<cl_platform_id> platforms = openclPlatforms();
  VendorPlatforms vendors = vendorPlatforms(platforms);
  DeviceChoice choice = chooseDevice(platforms, vendors);
};

std::string textOf(cl_device_id dev, cl_device_info what) {
  std::size_t size = 0;
  if (clGetDeviceInfo(dev, what, 0, nullptr, &size) != CL_SUCCESS) return {};
  std::vector<char> text(size + 1);
  clGetDeviceInfo(dev, what, size, text.data(), nullptr);
  return text.data();
}

cl_ulong memoryOf(cl_device_id dev) {
  cl_ulong bytes = 0;
  clGetDeviceInfo(dev, CL_DEVICE_GLOBAL_MEM_SIZE, sizeof(bytes), &bytes, nullptr);
  return bytes;
}

std::int64_t megabytesOf(cl_device_id dev) {
  return static_cast<std::int64_t>(memoryOf(dev) / 1048576);
}

std::string kindOf(cl_device_id dev) {
  cl_device_type type = 0;
  clGetDeviceInfo(dev, CL_DEVICE_TYPE, sizeof(type), &type, nullptr);
  if ((type & CL_DEVICE_TYPE_GPU) != 0) return "GPU";
  if ((type & CL_DEVICE_TYPE_CPU) != 0) return "CPU";
  return (type & CL_DEVICE_TYPE_ACCELERATOR) != 0 ? "accelerator" : "other";
}

std::vector<cl_device_id> devicesOf(cl_platform_id platform) {
  cl_uint count = 0;
  if (clGetDeviceIDs(platform, CL_DEVICE_TYPE_ALL, 0, nullptr, &count) != CL_SUCCESS) return {};
  std::vector<cl_device_id> devices(count);
  if (count > 0) clGetDeviceIDs(platform, CL_DEVICE_TYPE_ALL, count, devices.data(), nullptr);
  return devices;
}

/// What is wrong with the chosen device; empty: nothing.
std::string shortcoming(cl_device_id dev) {
  if (megabytes(memoryOf(dev)) < kLeastMegabytes) {
    return "has " + std::to_string(megabytesOf(dev)) + " MB of memory, OpenCL needs " +
           std::to_string(static_cast<int>(kLeastMegabytes)) + " MB";
  }
  if (textOf(dev, CL_DEVICE_VERSION).empty()) return "does not tell its OpenCL version";
  return {};
}

/// Why the device at hand, of the platform with that index, is not the one that is used.
std::string reasonAgainst(const Survey& survey, int platform, const OpenclDevice& found,
                          cl_device_id dev) {
  if (!isAmd(found.platform) && !isNvidia(found.platform)) {
    return "its platform is neither AMD's nor NVIDIA's";
  }
  if (platform != survey.vendors.amd && platform != survey.vendors.nvidia) {
    return "another platform of this vendor comes later and is taken";
  }
  if (found.kind != "GPU") return "it is no GPU";
  if (platform != survey.choice.platform) return "a GPU of the AMD platform is preferred";
  return dev == survey.choice.gpu ? shortcoming(dev) : "an earlier GPU of its platform is taken";
}

OpenclDevice describe(const Survey& survey, int platform, const std::string& platformName,
                      cl_device_id dev) {
  OpenclDevice found;
  found.platform = platformName;
  found.name = textOf(dev, CL_DEVICE_NAME);
  found.kind = kindOf(dev);
  found.version = textOf(dev, CL_DEVICE_VERSION);
  found.memoryMegabytes = megabytesOf(dev);
  found.reason = reasonAgainst(survey, platform, found, dev);
  found.used = found.reason.empty();
  return found;
}

OpenclDevice withoutDevices(const std::string& platformName) {
  OpenclDevice none;
  none.platform = platformName;
  none.reason = "it has no devices";
  return none;
}

std::string namesOf(const std::vector<cl_platform_id>& platforms) {
  std::string names;
  for (const cl_platform_id platform : platforms) {
    names += (names.empty() ? "'" : ", '") + getPlatformName(platform) + "'";
  }
  return names;
}

std::string nameOfVendors(const Survey& survey) {
  const int index = survey.vendors.amd >= 0 ? survey.vendors.amd : survey.vendors.nvidia;
  return getPlatformName(survey.platforms[static_cast<std::size_t>(index)]);
}

}  // namespace

std::vector<OpenclDevice> openclDevices() {
  const Survey survey;
  std::vector<OpenclDevice> found;
  for (std::size_t i = 0; i < survey.platforms.size(); ++i) {
    const std::string name = getPlatformName(survey.platforms[i]);
    const std::vector<cl_device_id> devices = devicesOf(survey.platforms[i]);
    if (devices.empty()) found.push_back(withoutDevices(name));
    for (const cl_device_id dev : devices) {
      found.push_back(describe(survey, static_cast<int>(i), name, dev));
    }
  }
  return found;
}

std::string deviceObstacle() {
  const Survey survey;
  if (survey.platforms.empty()) {
    return "no OpenCL platform is installed: install the driver of an AMD or NVIDIA GPU, or " +
           std::string(kChooseHost);
  }
  if (survey.vendors.amd < 0 && survey.vendors.nvidia < 0) {
    return "no OpenCL platform of AMD or NVIDIA, only " + namesOf(survey.platforms) +
           ": install the driver of such a GPU, or " + kChooseHost;
  }
  if (survey.choice.platform < 0) {
    return "the OpenCL platform '" + nameOfVendors(survey) + "' has no GPU: check its driver, or " +
           kChooseHost;
  }
  const std::string fault = shortcoming(survey.choice.gpu);
  if (fault.empty()) return {};
  return "the GPU '" + textOf(survey.choice.gpu, CL_DEVICE_NAME) + "' " + fault + ": " +
         kChooseHost;
}

std::string kernelFileObstacle(const std::string& kernelFile) {
  if (!wantedKernelFile(kernelFile).empty()) return {};
  const std::string what =
      kernelFile.empty() ? "the kernel file cl.bin is not beside the library: install it again"
                         : "the kernel file '" + kernelFile + "' cannot be read: name another";
  return what + ", or " + kChooseHost;
}

std::string openclObstacle(const std::string& kernelFile) {
  const std::string ofDevice = deviceObstacle();
  return ofDevice.empty() ? kernelFileObstacle(kernelFile) : ofDevice;
}

}  // namespace framequilt
