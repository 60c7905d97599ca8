// SPDX-License-Identifier: Apache-2.0
/// \file
/// Which call fails, and which thread pauses.
#pragma once

#include "tests/support/opencl_layer.h"

namespace framequilt::opencl_layer {

/// Counts a call; CL_SUCCESS, or what it shall answer. `entryPoint` is a literal.
cl_int countCall(const char* entryPoint);
void forgetCalls();
/// As jitter() says.
void pauseMaybe();

}  // namespace framequilt::opencl_layer
