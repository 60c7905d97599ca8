// SPDX-License-Identifier: Apache-2.0
/// \file
/// What stands against using OpenCL, in one line each that says what to do; empty: nothing.
#pragma once

#include <string>

namespace framequilt {

/// How every such line can end.
constexpr const char* kChooseHost = "choose the host backend";

std::string deviceObstacle();
std::string kernelFileObstacle(const std::string& kernelFile);

}  // namespace framequilt
