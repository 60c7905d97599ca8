// SPDX-License-Identifier: Apache-2.0
/// \file
/// Buffers, and copies between them and the host.
#include "tests/support/opencl_layer/call.h"
#include "tests/support/opencl_layer/card_memory.h"
#include "tests/support/opencl_layer/entries.h"
#include "tests/support/opencl_layer/references.h"

namespace framequilt::opencl_layer {
namespace {

bool argumentsInOrder(cl_mem_flags flags, size_t bytes, const void* host) {
  const bool takesHost = (flags & (CL_MEM_USE_HOST_PTR | CL_MEM_COPY_HOST_PTR)) != 0;
  return bytes > 0 && takesHost == (host != nullptr);
}

cl_mem CL_API_CALL createBuffer(cl_context context, cl_mem_flags flags, size_t bytes, void* host,
                                cl_int* status) {
  Call call("clCreateBuffer");
  if (!call.mayPass(context)) return call.noObject(status);
  // What is out of order is the runtime's to refuse.
  const bool ontoCard = cardIsOn() && argumentsInOrder(flags, bytes, host);
  const cl_mem buffer =
      ontoCard ? createOnCard(context, flags, bytes, host, status)
               : callRuntime(runtime().clCreateBuffer, context, flags, bytes, host, status);
  if (buffer == nullptr) return nullptr;
  noteCreated(ObjectKind::kBuffer, buffer, {}, bytes);
  record({.kind = TraceKind::kCreate,
          .object = ObjectKind::kBuffer,
          .handle = buffer,
          .bytes = bytes,
          .flags = flags,
          .pointer = host});
  return buffer;
}

cl_int CL_API_CALL getMemObjectInfo(cl_mem buffer, cl_mem_info name, size_t room, void* value,
                                    size_t* bytesOut) {
  Call call("clGetMemObjectInfo");
  if (!call.mayPass(buffer)) return call.status();
  if (isOnCard(buffer)) {
    if (name == CL_MEM_FLAGS) return answerInfo(flagsOnCard(buffer), room, value, bytesOut);
    if (name == CL_MEM_HOST_PTR) {
      return answerInfo(hostPointerOnCard(buffer), room, value, bytesOut);
    }
  }
  return callRuntime(runtime().clGetMemObjectInfo, buffer, name, room, value, bytesOut);
}

cl_int CL_API_CALL retainMemObject(cl_mem buffer) {
  return retainObject("clRetainMemObject", buffer, &cl_icd_dispatch::clRetainMemObject);
}

cl_int CL_API_CALL releaseMemObject(cl_mem buffer) {
  return releaseObject("clReleaseMemObject", buffer, &cl_icd_dispatch::clReleaseMemObject);
}

cl_int CL_API_CALL enqueueReadBuffer(cl_command_queue queue, cl_mem buffer, cl_bool blocking,
                                     size_t offset, size_t bytes, void* host, cl_uint waitCount,
                                     const cl_event* wait, cl_event* event) {
  Call call("clEnqueueReadBuffer");
  if (!call.mayPass(queue, buffer, Handles<cl_event>{waitCount, wait})) return call.status();
  const cl_int status = callRuntime(runtime().clEnqueueReadBuffer, queue, buffer, blocking, offset,
                                    bytes, host, waitCount, wait, event);
  if (status != CL_SUCCESS) return status;
  noteEvent(event);
  record({.kind = TraceKind::kRead,
          .object = ObjectKind::kBuffer,
          .handle = buffer,
          .queue = queue,
          .bytes = bytes,
          .offset = offset,
          .blocking = blocking != CL_FALSE,
          .pointer = host});
  return status;
}

cl_int CL_API_CALL enqueueWriteBuffer(cl_command_queue queue, cl_mem buffer, cl_bool blocking,
                                      size_t offset, size_t bytes, const void* host,
                                      cl_uint waitCount, const cl_event* wait, cl_event* event) {
  Call call("clEnqueueWriteBuffer");
  if (!call.mayPass(queue, buffer, Handles<cl_event>{waitCount, wait})) return call.status();
  const cl_int status = callRuntime(runtime().clEnqueueWriteBuffer, queue, buffer, blocking, offset,
                                    bytes, host, waitCount, wait, event);
  if (status != CL_SUCCESS) return status;
  noteEvent(event);
  record({.kind = TraceKind::kWrite,
          .object = ObjectKind::kBuffer,
          .handle = buffer,
          .queue = queue,
          .bytes = bytes,
          .offset = offset,
          .blocking = blocking != CL_FALSE,
          .pointer = const_cast<void*>(host)});
  return status;
}

cl_int CL_API_CALL enqueueCopyBuffer(cl_command_queue queue, cl_mem from, cl_mem to,
                                     size_t fromOffset, size_t toOffset, size_t bytes,
                                     cl_uint waitCount, const cl_event* wait, cl_event* event) {
  Call call("clEnqueueCopyBuffer");
  if (!call.mayPass(queue, from, to, Handles<cl_event>{waitCount, wait})) return call.status();
  const cl_int status = callRuntime(runtime().clEnqueueCopyBuffer, queue, from, to, fromOffset,
                                    toOffset, bytes, waitCount, wait, event);
  if (status != CL_SUCCESS) return status;
  noteEvent(event);
  record({.kind = TraceKind::kCopy,
          .object = ObjectKind::kBuffer,
          .handle = to,
          .queue = queue,
          .bytes = bytes,
          .offset = toOffset,
          .buffers = {from, to}});
  return status;
}

cl_int CL_API_CALL enqueueFillBuffer(cl_command_queue queue, cl_mem buffer, const void* pattern,
                                     size_t patternBytes, size_t offset, size_t bytes,
                                     cl_uint waitCount, const cl_event* wait, cl_event* event) {
  Call call("clEnqueueFillBuffer");
  if (!call.mayPass(queue, buffer, Handles<cl_event>{waitCount, wait})) return call.status();
  const cl_int status = callRuntime(runtime().clEnqueueFillBuffer, queue, buffer, pattern,
                                    patternBytes, offset, bytes, waitCount, wait, event);
  if (status != CL_SUCCESS) return status;
  noteEvent(event);
  record({.kind = TraceKind::kFill,
          .object = ObjectKind::kBuffer,
          .handle = buffer,
          .queue = queue,
          .bytes = bytes,
          .offset = offset});
  return status;
}

}  // namespace

void replaceBufferEntries(cl_icd_dispatch& entries) {
  entries.clCreateBuffer = createBuffer;
  entries.clGetMemObjectInfo = getMemObjectInfo;
  entries.clRetainMemObject = retainMemObject;
  entries.clReleaseMemObject = releaseMemObject;
  entries.clEnqueueReadBuffer = enqueueReadBuffer;
  entries.clEnqueueWriteBuffer = enqueueWriteBuffer;
  entries.clEnqueueCopyBuffer = enqueueCopyBuffer;
  entries.clEnqueueFillBuffer = enqueueFillBuffer;
}

}  // namespace framequilt::opencl_layer
