// SPDX-License-Identifier: Apache-2.0
/// \file
/// Retaining and releasing, the same for every kind of object.
#pragma once

#include <CL/cl_icd.h>

#include "tests/support/opencl_layer/call.h"
#include "tests/support/opencl_layer/card_memory.h"
#include "tests/support/opencl_layer/ledger.h"
#include "tests/support/opencl_layer/records.h"

namespace framequilt::opencl_layer {

template <class Handle, class Entry>
cl_int retainObject(const char* entryPoint, Handle handle, Entry cl_icd_dispatch::*entry) {
  Call call(entryPoint);
  if (!call.mayPass(handle)) return call.status();
  const cl_int status = callRuntime(runtime().*entry, handle);
  if (status != CL_SUCCESS) return status;
  noteRetained(entryPoint, KindOf<Handle>::kind, handle);
  record({.kind = TraceKind::kRetain, .object = KindOf<Handle>::kind, .handle = handle});
  return status;
}

/// One that shall fail has released all the same.
template <class Handle, class Entry>
cl_int releaseObject(const char* entryPoint, Handle handle, Entry cl_icd_dispatch::*entry) {
  const Call call(entryPoint);
  const Released released = noteReleased(entryPoint, KindOf<Handle>::kind, handle);
  if (released == Released::kRefused) return KindOf<Handle>::error;
  if constexpr (KindOf<Handle>::kind == ObjectKind::kBuffer) {
    if (released == Released::kGone) takeOffCard(handle);
  }
  record({.kind = TraceKind::kRelease, .object = KindOf<Handle>::kind, .handle = handle});
  const cl_int status = callRuntime(runtime().*entry, handle);
  return call.fault() != CL_SUCCESS ? call.fault() : status;
}

}  // namespace framequilt::opencl_layer
