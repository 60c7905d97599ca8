// SPDX-License-Identifier: Apache-2.0
/// \file
/// Where the source of the OpenCL kernels lies. Never looked for in the current folder.
#pragma once

#include <filesystem>
#include <string>

namespace framequilt {

/// Absolute path of the kernel file that belongs to a library in `libraryFolder`: where both are
/// installed, else in a build tree; empty where there is none.
std::string kernelFileFor(const std::filesystem::path& libraryFolder);

/// Absolute path of the kernel file that `wanted` (`SessionOptions::kernelFile`) asks for; empty
/// where it is no file that can be read.
std::string wantedKernelFile(const std::string& wanted);

}  // namespace framequilt
