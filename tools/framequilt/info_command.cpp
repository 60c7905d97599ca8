// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/info_command.h"

#include <framequilt/opencl_devices.h>
#include <vips/vips.h>

#include <opencv2/core/version.hpp>
#include <string>
#include <thread>

namespace framequilt::tool {
namespace {

std::string compiler() {
#if defined(__clang__)
  return "clang " __clang_version__;
#else
  return "g++ " __VERSION__;
#endif
}

std::string processors() {
  const unsigned count = std::thread::hardware_concurrency();
  return count == 1 ? "1 processor" : std::to_string(count) + " processors";
}

/// What `why` says against it; empty: it is used.
std::string useText(const std::string& why) {
  return why.empty() ? "used" : "not used (" + why + ")";
}

std::string deviceText(const OpenclDevice& device) {
  if (device.name.empty()) return device.platform;
  return device.platform + ", " + device.name + " (" + device.kind + ", " +
         std::to_string(device.memoryMegabytes) + " MB, " + device.version + ")";
}

std::string openclText() {
  std::string lines = "  opencl: " + useText(openclObstacle()) + "\n";
  for (const OpenclDevice& device : openclDevices()) {
    lines += "    " + deviceText(device) + ": " + useText(device.reason) + "\n";
  }
  const std::string kernels = openclKernelFile();
  return lines + "    kernels: " + (kernels.empty() ? "missing" : kernels) + "\n";
}

}  // namespace

std::string infoText() {
  return "framequilt " FRAMEQUILT_VERSION
         "\n"
         "build: " FRAMEQUILT_BUILD_TYPE ", " +
         compiler() +
         "\n"
         "libraries: OpenCV " CV_VERSION ", libvips " +
         vips_version_string() +
         "\n"
         "backends:\n"
         "  host: used (" +
         processors() + ")\n" + openclText();
}

}  // namespace framequilt::tool
