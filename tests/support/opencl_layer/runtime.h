// SPDX-License-Identifier: Apache-2.0
/// \file
/// The way down: to the loader's own entries, and so to the runtime.
#pragma once

#include <CL/cl_icd.h>

#include <mutex>

namespace framequilt::opencl_layer {

/// What the layer stands on. Valid once the loader has started the layer.
const cl_icd_dispatch& runtime();
void setRuntime(const cl_icd_dispatch& entries);

/// Held while a call is in the runtime, if serialise() says so.
std::unique_lock<std::recursive_mutex> serialLock();

/// Null when the machine has none.
cl_platform_id realPlatform();
cl_device_id realDevice();

/// All calls to the runtime go through here. No lock of the layer's books is held meanwhile.
template <class Result, class... Parameters, class... Arguments>
Result callRuntime(Result(CL_API_CALL* entry)(Parameters...), Arguments... arguments) {
  const auto lock = serialLock();
  return entry(arguments...);
}

}  // namespace framequilt::opencl_layer
