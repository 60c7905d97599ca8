// SPDX-License-Identifier: Apache-2.0
#include "interface/kernel_file.h"

#include <dlfcn.h>
#include <unistd.h>

#include <system_error>

#include "framequilt/opencl_devices.h"

namespace framequilt {
namespace {

namespace fs = std::filesystem;

/// Of the file that this code was loaded from, links resolved.
fs::path folderOfThisLibrary() noexcept {
  static const char ours = 0;
  Dl_info info{};
  if (dladdr(&ours, &info) == 0 || info.dli_fname == nullptr) return {};
  std::error_code failure;
  return fs::canonical(info.dli_fname, failure).parent_path();
}

/// Asked for while the library is loaded: the loader may know it by a relative path, and the host
/// may go to another folder later.
const fs::path libraryFolder = folderOfThisLibrary();

std::string ifReadable(const fs::path& file) {
  std::error_code failure;
  const fs::path path = fs::canonical(file, failure);
  // A pipe would wait for somebody to write.
  if (failure || !fs::is_regular_file(path, failure)) return {};
  return ::access(path.c_str(), R_OK) == 0 ? path.string() : std::string();
}

}  // namespace

std::string kernelFileFor(const fs::path& folder) {
  if (folder.empty()) return {};
  for (const char* place : {FRAMEQUILT_KERNEL_FILE_FROM_LIBRARY, "share/framequilt/cl.bin"}) {
    std::string found = ifReadable(folder / place);
    if (!found.empty()) return found;
  }
  return {};
}

std::string openclKernelFile() { return kernelFileFor(libraryFolder); }

std::string wantedKernelFile(const std::string& wanted) {
  return wanted.empty() ? openclKernelFile() : ifReadable(wanted);
}

}  // namespace framequilt
