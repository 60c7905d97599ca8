// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "framequilt/session.h"

namespace framequilt {

/// Side of the mosaic that a run begins with; the first frame lies in its middle.
constexpr int kNewMosaicSide = 6000;

/// What the OpenCL backend cannot do of options with the scale decided, and what to do; empty:
/// nothing.
std::string missingInOpencl(const SessionOptions& options);

/// The options with the scale decided. \throws Error for the first one that is out of its range.
SessionOptions checked(const SessionOptions& options);

}  // namespace framequilt
