// SPDX-License-Identifier: Apache-2.0
/// \file
/// Waiting: queues that run dry, and events.
#include "tests/support/opencl_layer/call.h"
#include "tests/support/opencl_layer/entries.h"
#include "tests/support/opencl_layer/references.h"

namespace framequilt::opencl_layer {
namespace {

cl_int CL_API_CALL flush(cl_command_queue queue) {
  Call call("clFlush");
  if (!call.mayPass(queue)) return call.status();
  const cl_int status = callRuntime(runtime().clFlush, queue);
  if (status != CL_SUCCESS) return status;
  record({.kind = TraceKind::kFlush, .object = ObjectKind::kQueue, .handle = queue});
  return status;
}

cl_int CL_API_CALL finish(cl_command_queue queue) {
  Call call("clFinish");
  const bool passes = call.mayPass(queue);
  if (!passes && call.status() != call.fault()) return call.status();
  // One that shall fail has waited all the same.
  const cl_int status = callRuntime(runtime().clFinish, queue);
  if (!passes) return call.fault();
  if (status != CL_SUCCESS) return status;
  record({.kind = TraceKind::kFinish, .object = ObjectKind::kQueue, .handle = queue});
  return status;
}

cl_int CL_API_CALL enqueueMarker(cl_command_queue queue, cl_uint waitCount, const cl_event* wait,
                                 cl_event* event) {
  Call call("clEnqueueMarkerWithWaitList");
  if (!call.mayPass(queue, Handles<cl_event>{waitCount, wait})) return call.status();
  const cl_int status =
      callRuntime(runtime().clEnqueueMarkerWithWaitList, queue, waitCount, wait, event);
  if (status == CL_SUCCESS) noteEvent(event);
  return status;
}

cl_int CL_API_CALL enqueueBarrier(cl_command_queue queue, cl_uint waitCount, const cl_event* wait,
                                  cl_event* event) {
  Call call("clEnqueueBarrierWithWaitList");
  if (!call.mayPass(queue, Handles<cl_event>{waitCount, wait})) return call.status();
  const cl_int status =
      callRuntime(runtime().clEnqueueBarrierWithWaitList, queue, waitCount, wait, event);
  if (status == CL_SUCCESS) noteEvent(event);
  return status;
}

cl_int CL_API_CALL waitForEvents(cl_uint count, const cl_event* events) {
  Call call("clWaitForEvents");
  if (!call.mayPass(Handles<cl_event>{count, events})) return call.status();
  return callRuntime(runtime().clWaitForEvents, count, events);
}

cl_int CL_API_CALL getEventInfo(cl_event event, cl_event_info name, size_t room, void* value,
                                size_t* bytesOut) {
  Call call("clGetEventInfo");
  if (!call.mayPass(event)) return call.status();
  return callRuntime(runtime().clGetEventInfo, event, name, room, value, bytesOut);
}

cl_int CL_API_CALL getEventProfilingInfo(cl_event event, cl_profiling_info name, size_t room,
                                         void* value, size_t* bytesOut) {
  Call call("clGetEventProfilingInfo");
  if (!call.mayPass(event)) return call.status();
  return callRuntime(runtime().clGetEventProfilingInfo, event, name, room, value, bytesOut);
}

cl_int CL_API_CALL retainEvent(cl_event event) {
  return retainObject("clRetainEvent", event, &cl_icd_dispatch::clRetainEvent);
}

cl_int CL_API_CALL releaseEvent(cl_event event) {
  return releaseObject("clReleaseEvent", event, &cl_icd_dispatch::clReleaseEvent);
}

}  // namespace

void replaceQueueEntries(cl_icd_dispatch& entries) {
  entries.clFlush = flush;
  entries.clFinish = finish;
  entries.clEnqueueMarkerWithWaitList = enqueueMarker;
  entries.clEnqueueBarrierWithWaitList = enqueueBarrier;
  entries.clWaitForEvents = waitForEvents;
  entries.clGetEventInfo = getEventInfo;
  entries.clGetEventProfilingInfo = getEventProfilingInfo;
  entries.clRetainEvent = retainEvent;
  entries.clReleaseEvent = releaseEvent;
}

}  // namespace framequilt::opencl_layer
