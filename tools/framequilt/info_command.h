// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace framequilt::tool {

/// What `framequilt info` prints: version, what the program was built with, and each backend and
/// OpenCL device with whether it is used and, if not, why.
std::string infoText();

}  // namespace framequilt::tool
