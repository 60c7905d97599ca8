// SPDX-License-Identifier: Apache-2.0
/// \file
/// Maps and unmaps of buffers.
#include "tests/support/opencl_layer/call.h"
#include "tests/support/opencl_layer/card_memory.h"
#include "tests/support/opencl_layer/entries.h"
#include "tests/support/opencl_layer/faults.h"
#include "tests/support/opencl_layer/ledger.h"
#include "tests/support/opencl_layer/records.h"

namespace framequilt::opencl_layer {
namespace {

void* CL_API_CALL enqueueMapBuffer(cl_command_queue queue, cl_mem buffer, cl_bool blocking,
                                   cl_map_flags flags, size_t offset, size_t bytes,
                                   cl_uint waitCount, const cl_event* wait, cl_event* event,
                                   cl_int* statusOut) {
  Call call("clEnqueueMapBuffer");
  if (!call.mayPass(queue, buffer, Handles<cl_event>{waitCount, wait})) {
    return call.noObject(statusOut);
  }
  pauseMaybe();
  cl_int status = CL_SUCCESS;
  void* const pointer =
      isOnCard(buffer)
          ? mapFromCard(queue, buffer, flags, offset, bytes, {waitCount, wait}, event, &status)
          : callRuntime(runtime().clEnqueueMapBuffer, queue, buffer, blocking, flags, offset, bytes,
                        waitCount, wait, event, &status);
  if (statusOut != nullptr) *statusOut = status;
  if (status != CL_SUCCESS) return pointer;
  noteEvent(event);
  noteMapped(buffer, {pointer, offset, bytes, flags});
  record({.kind = TraceKind::kMap,
          .object = ObjectKind::kBuffer,
          .handle = buffer,
          .queue = queue,
          .bytes = bytes,
          .offset = offset,
          .mapFlags = flags,
          .blocking = blocking != CL_FALSE,
          .pointer = pointer});
  return pointer;
}

cl_int CL_API_CALL enqueueUnmapMemObject(cl_command_queue queue, cl_mem buffer, void* pointer,
                                         cl_uint waitCount, const cl_event* wait, cl_event* event) {
  Call call("clEnqueueUnmapMemObject");
  if (!call.mayPass(queue, buffer, Handles<cl_event>{waitCount, wait})) return call.status();
  Mapping mapping{};
  if (!noteUnmapped(call.name(), buffer, pointer, &mapping)) return CL_INVALID_VALUE;
  const cl_int status = isOnCard(buffer)
                            ? unmapToCard(queue, buffer, mapping, {waitCount, wait}, event)
                            : callRuntime(runtime().clEnqueueUnmapMemObject, queue, buffer, pointer,
                                          waitCount, wait, event);
  if (status != CL_SUCCESS) {
    noteMapped(buffer, mapping);
    return status;
  }
  noteEvent(event);
  record({.kind = TraceKind::kUnmap,
          .object = ObjectKind::kBuffer,
          .handle = buffer,
          .queue = queue,
          .bytes = mapping.bytes,
          .offset = mapping.offset,
          .mapFlags = mapping.flags,
          .pointer = pointer});
  return status;
}

}  // namespace

void replaceMappingEntries(cl_icd_dispatch& entries) {
  entries.clEnqueueMapBuffer = enqueueMapBuffer;
  entries.clEnqueueUnmapMemObject = enqueueUnmapMemObject;
}

}  // namespace framequilt::opencl_layer
