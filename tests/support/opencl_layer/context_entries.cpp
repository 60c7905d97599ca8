// SPDX-License-Identifier: Apache-2.0
/// \file
/// Contexts and queues: made for the real device, remembered with the presented one.
#include "tests/support/opencl_layer/call.h"
#include "tests/support/opencl_layer/entries.h"
#include "tests/support/opencl_layer/presentation.h"
#include "tests/support/opencl_layer/references.h"

namespace framequilt::opencl_layer {
namespace {

using Notify = void(CL_CALLBACK*)(const char*, const void*, size_t, void*);
using Properties = std::vector<cl_context_properties>;

// With the zero at the end; none for null.
Properties listed(const cl_context_properties* properties) {
  Properties all;
  for (; properties != nullptr && *properties != 0; properties += 2) {
    all.insert(all.end(), {properties[0], properties[1]});
  }
  if (properties != nullptr) all.push_back(0);
  return all;
}

cl_platform_id platformIn(const Properties& properties) {
  for (std::size_t i = 0; i + 1 < properties.size(); i += 2) {
    if (properties[i] == CL_CONTEXT_PLATFORM) {
      // NOLINTNEXTLINE(performance-no-int-to-ptr): handles are listed as integers.
      return reinterpret_cast<cl_platform_id>(properties[i + 1]);
    }
  }
  return nullptr;
}

// `shown` with the real platform.
Properties translated(Properties shown) {
  for (std::size_t i = 0; i + 1 < shown.size(); i += 2) {
    if (shown[i] == CL_CONTEXT_PLATFORM) {
      shown[i + 1] = reinterpret_cast<cl_context_properties>(realPlatform());
    }
  }
  return shown;
}

// All presented devices stand on the same one.
cl_context makeContext(std::vector<cl_device_id> devices, Properties shown, Notify notify,
                       void* user, cl_int* status) {
  const cl_device_id real = realDevice();
  const Properties below = translated(shown);
  const cl_context context =
      callRuntime(runtime().clCreateContext, below.empty() ? nullptr : below.data(), cl_uint{1},
                  &real, notify, user, status);
  if (context == nullptr) return nullptr;
  noteCreated(ObjectKind::kContext, context);
  rememberContext(context, std::move(devices), std::move(shown));
  record({.kind = TraceKind::kCreate, .object = ObjectKind::kContext, .handle = context});
  return context;
}

cl_context CL_API_CALL createContext(const cl_context_properties* properties, cl_uint count,
                                     const cl_device_id* devices, Notify notify, void* user,
                                     cl_int* status) {
  Call call("clCreateContext");
  const Properties shown = listed(properties);
  const cl_platform_id platform = platformIn(shown);
  if (!call.mayPass(Handles<cl_device_id>{count, devices})) return call.noObject(status);
  if (platform != nullptr && fakePlatform(call.name(), platform) == nullptr) {
    if (status != nullptr) *status = CL_INVALID_PLATFORM;
    return nullptr;
  }
  if (count == 0 || devices == nullptr) {
    if (status != nullptr) *status = CL_INVALID_VALUE;
    return nullptr;
  }
  return makeContext({devices, devices + count}, shown, notify, user, status);
}

cl_context CL_API_CALL createContextFromType(const cl_context_properties* properties,
                                             cl_device_type type, Notify notify, void* user,
                                             cl_int* status) {
  Call call("clCreateContextFromType");
  const Properties shown = listed(properties);
  const cl_platform_id platform = platformIn(shown);
  if (!call.mayPass(platform)) return call.noObject(status);
  std::vector<cl_device_id> devices = devicesOf(platform, type);
  if (devices.empty()) {
    if (status != nullptr) *status = CL_DEVICE_NOT_FOUND;
    return nullptr;
  }
  return makeContext(std::move(devices), shown, notify, user, status);
}

cl_int CL_API_CALL getContextInfo(cl_context context, cl_context_info name, size_t room,
                                  void* value, size_t* bytesOut) {
  Call call("clGetContextInfo");
  if (!call.mayPass(context)) return call.status();
  switch (name) {
    case CL_CONTEXT_DEVICES:
      return answerInfo(devicesOf(context), room, value, bytesOut);
    case CL_CONTEXT_NUM_DEVICES:
      return answerInfo(static_cast<cl_uint>(devicesOf(context).size()), room, value, bytesOut);
    case CL_CONTEXT_PROPERTIES:
      return answerInfo(propertiesOf(context), room, value, bytesOut);
    default:
      return callRuntime(runtime().clGetContextInfo, context, name, room, value, bytesOut);
  }
}

cl_int CL_API_CALL retainContext(cl_context context) {
  return retainObject("clRetainContext", context, &cl_icd_dispatch::clRetainContext);
}

cl_int CL_API_CALL releaseContext(cl_context context) {
  return releaseObject("clReleaseContext", context, &cl_icd_dispatch::clReleaseContext);
}

cl_command_queue noteQueue(cl_command_queue queue, cl_device_id device) {
  if (queue == nullptr) return nullptr;
  noteCreated(ObjectKind::kQueue, queue);
  rememberQueue(queue, device);
  record({.kind = TraceKind::kCreate, .object = ObjectKind::kQueue, .handle = queue});
  return queue;
}

cl_command_queue CL_API_CALL createCommandQueue(cl_context context, cl_device_id device,
                                                cl_command_queue_properties properties,
                                                cl_int* status) {
  Call call("clCreateCommandQueue");
  if (!call.mayPass(context, device)) return call.noObject(status);
  return noteQueue(
      callRuntime(runtime().clCreateCommandQueue, context, realDevice(), properties, status),
      device);
}

cl_command_queue CL_API_CALL createCommandQueueWithProperties(cl_context context,
                                                              cl_device_id device,
                                                              const cl_queue_properties* properties,
                                                              cl_int* status) {
  Call call("clCreateCommandQueueWithProperties");
  if (!call.mayPass(context, device)) return call.noObject(status);
  return noteQueue(callRuntime(runtime().clCreateCommandQueueWithProperties, context, realDevice(),
                               properties, status),
                   device);
}

cl_int CL_API_CALL getCommandQueueInfo(cl_command_queue queue, cl_command_queue_info name,
                                       size_t room, void* value, size_t* bytesOut) {
  Call call("clGetCommandQueueInfo");
  if (!call.mayPass(queue)) return call.status();
  if (name == CL_QUEUE_DEVICE) return answerInfo(deviceOf(queue), room, value, bytesOut);
  return callRuntime(runtime().clGetCommandQueueInfo, queue, name, room, value, bytesOut);
}

cl_int CL_API_CALL retainCommandQueue(cl_command_queue queue) {
  return retainObject("clRetainCommandQueue", queue, &cl_icd_dispatch::clRetainCommandQueue);
}

cl_int CL_API_CALL releaseCommandQueue(cl_command_queue queue) {
  return releaseObject("clReleaseCommandQueue", queue, &cl_icd_dispatch::clReleaseCommandQueue);
}

}  // namespace

void replaceContextEntries(cl_icd_dispatch& entries) {
  entries.clCreateContext = createContext;
  entries.clCreateContextFromType = createContextFromType;
  entries.clGetContextInfo = getContextInfo;
  entries.clRetainContext = retainContext;
  entries.clReleaseContext = releaseContext;
  entries.clCreateCommandQueue = createCommandQueue;
  entries.clCreateCommandQueueWithProperties = createCommandQueueWithProperties;
  entries.clGetCommandQueueInfo = getCommandQueueInfo;
  entries.clRetainCommandQueue = retainCommandQueue;
  entries.clReleaseCommandQueue = releaseCommandQueue;
}

}  // namespace framequilt::opencl_layer
