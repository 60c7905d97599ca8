// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/info_command.h"

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
         processors() +
         ")\n"
         "  opencl: not used (this build has no OpenCL backend)\n";
}

}  // namespace framequilt::tool
