// SPDX-License-Identifier: Apache-2.0
/// \file
/// What happened, for tests to read: the trace and the violations.
#pragma once

#include <string>

#include "tests/support/opencl_layer.h"

namespace framequilt::opencl_layer {

/// Adds the numbers of the object and of the calling thread.
void record(TraceEvent event);
void recordViolation(std::string sentence);
void forgetTraceAndViolations();

}  // namespace framequilt::opencl_layer
