// SPDX-License-Identifier: Apache-2.0
/// \file
/// What OpenCL offers on this machine, and why a session would not use it. From any thread; nothing
/// is started.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "export.h"

namespace framequilt {

/// A device of one of the platforms.
struct OpenclDevice {
  std::string platform;              ///< The platform's name.
  std::string name;                  ///< Empty: the platform has no device, the rest is empty too.
  std::string kind;                  ///< "GPU", "CPU", "accelerator" or "other".
  std::string version;               ///< As the device tells it: "OpenCL 2.0 ...".
  std::int64_t memoryMegabytes = 0;  ///< Of 1048576 bytes.
  bool used = false;                 ///< A session takes this one; at most one of all.
  std::string reason;                ///< Why it is not used; empty where it is.
};

/// Every device of every platform, and the platforms without one, in the order of the OpenCL
/// loader. Empty: there is no platform.
///
/// The first GPU of the platform whose name starts with "AMD" is used, else that of the one whose
/// name starts with "NVI" (the last one, where several do), if it has at least 4096 MB of memory.
FRAMEQUILT_EXPORT std::vector<OpenclDevice> openclDevices();

/// Absolute path of the kernel file that lies beside the library; empty where it is missing.
FRAMEQUILT_EXPORT std::string openclKernelFile();

/// Why no session can use OpenCL, and what to do, in one line; empty where there are a device and a
/// kernel file. Whether the device takes the kernels shows when a session is opened.
/// \param kernelFile  As `SessionOptions::kernelFile`.
FRAMEQUILT_EXPORT std::string openclObstacle(const std::string& kernelFile = {});

}  // namespace framequilt
