// SPDX-License-Identifier: Apache-2.0
/// \file
/// Kernels, their arguments and launches.
#include "tests/support/opencl_layer/call.h"
#include "tests/support/opencl_layer/entries.h"
#include "tests/support/opencl_layer/faults.h"
#include "tests/support/opencl_layer/kernel_arguments.h"
#include "tests/support/opencl_layer/presentation.h"
#include "tests/support/opencl_layer/references.h"

namespace framequilt::opencl_layer {
namespace {

void noteKernel(cl_kernel kernel) {
  rememberKernel(kernel);
  const std::string function = functionOf(kernel);
  noteCreated(ObjectKind::kKernel, kernel, function);
  record({.kind = TraceKind::kCreate,
          .object = ObjectKind::kKernel,
          .handle = kernel,
          .kernel = function});
}

cl_kernel CL_API_CALL createKernel(cl_program program, const char* name, cl_int* status) {
  Call call("clCreateKernel");
  if (!call.mayPass(program)) return call.noObject(status);
  const cl_kernel kernel = callRuntime(runtime().clCreateKernel, program, name, status);
  if (kernel != nullptr) noteKernel(kernel);
  return kernel;
}

cl_int CL_API_CALL createKernelsInProgram(cl_program program, cl_uint room, cl_kernel* kernels,
                                          cl_uint* count) {
  Call call("clCreateKernelsInProgram");
  if (!call.mayPass(program)) return call.status();
  cl_uint all = 0;
  const cl_int status =
      callRuntime(runtime().clCreateKernelsInProgram, program, room, kernels, &all);
  if (count != nullptr) *count = all;
  if (status != CL_SUCCESS || kernels == nullptr) return status;
  for (cl_uint i = 0; i < all; ++i) noteKernel(kernels[i]);
  return status;
}

cl_int CL_API_CALL setKernelArg(cl_kernel kernel, cl_uint index, size_t bytes, const void* value) {
  Call call("clSetKernelArg");
  if (!call.mayPass(kernel)) return call.status();
  if (!noteArgument(kernel, index, bytes, value)) return CL_INVALID_MEM_OBJECT;
  const cl_int status = callRuntime(runtime().clSetKernelArg, kernel, index, bytes, value);
  if (status != CL_SUCCESS) return status;
  record({.kind = TraceKind::kSetArgument,
          .object = ObjectKind::kKernel,
          .handle = kernel,
          .kernel = functionOf(kernel),
          .bytes = bytes,
          .argument = index,
          .value = argumentBytes(bytes, value)});
  return status;
}

std::vector<std::size_t> sizes(cl_uint dimensions, const size_t* first) {
  if (first == nullptr) return {};
  return {first, first + dimensions};
}

cl_int CL_API_CALL enqueueNdRangeKernel(cl_command_queue queue, cl_kernel kernel,
                                        cl_uint dimensions, const size_t* offset,
                                        const size_t* global, const size_t* local,
                                        cl_uint waitCount, const cl_event* wait, cl_event* event) {
  Call call("clEnqueueNDRangeKernel");
  if (!call.mayPass(queue, kernel, Handles<cl_event>{waitCount, wait})) return call.status();
  if (!mayLaunch(call.name(), kernel)) return CL_INVALID_KERNEL_ARGS;
  pauseMaybe();
  std::vector<const void*> buffers = buffersOf(kernel);
  const cl_int status = callRuntime(runtime().clEnqueueNDRangeKernel, queue, kernel, dimensions,
                                    offset, global, local, waitCount, wait, event);
  if (status != CL_SUCCESS) return status;
  noteEvent(event);
  record({.kind = TraceKind::kLaunch,
          .object = ObjectKind::kKernel,
          .handle = kernel,
          .kernel = functionOf(kernel),
          .queue = queue,
          .globalOffset = sizes(dimensions, offset),
          .globalSize = sizes(dimensions, global),
          .localSize = sizes(dimensions, local),
          .buffers = std::move(buffers)});
  return status;
}

cl_int CL_API_CALL getKernelInfo(cl_kernel kernel, cl_kernel_info name, size_t room, void* value,
                                 size_t* bytesOut) {
  Call call("clGetKernelInfo");
  if (!call.mayPass(kernel)) return call.status();
  return callRuntime(runtime().clGetKernelInfo, kernel, name, room, value, bytesOut);
}

cl_int CL_API_CALL getKernelArgInfo(cl_kernel kernel, cl_uint index, cl_kernel_arg_info name,
                                    size_t room, void* value, size_t* bytesOut) {
  Call call("clGetKernelArgInfo");
  if (!call.mayPass(kernel)) return call.status();
  return callRuntime(runtime().clGetKernelArgInfo, kernel, index, name, room, value, bytesOut);
}

// Null stands for the only device.
cl_int CL_API_CALL getKernelWorkGroupInfo(cl_kernel kernel, cl_device_id device,
                                          cl_kernel_work_group_info name, size_t room, void* value,
                                          size_t* bytesOut) {
  Call call("clGetKernelWorkGroupInfo");
  if (!call.mayPass(kernel, Handles<cl_device_id>{device == nullptr ? 0u : 1u, &device})) {
    return call.status();
  }
  return callRuntime(runtime().clGetKernelWorkGroupInfo, kernel, realDevice(), name, room, value,
                     bytesOut);
}

cl_int CL_API_CALL retainKernel(cl_kernel kernel) {
  return retainObject("clRetainKernel", kernel, &cl_icd_dispatch::clRetainKernel);
}

cl_int CL_API_CALL releaseKernel(cl_kernel kernel) {
  return releaseObject("clReleaseKernel", kernel, &cl_icd_dispatch::clReleaseKernel);
}

}  // namespace

void replaceKernelEntries(cl_icd_dispatch& entries) {
  entries.clCreateKernel = createKernel;
  entries.clCreateKernelsInProgram = createKernelsInProgram;
  entries.clSetKernelArg = setKernelArg;
  entries.clEnqueueNDRangeKernel = enqueueNdRangeKernel;
  entries.clGetKernelInfo = getKernelInfo;
  entries.clGetKernelArgInfo = getKernelArgInfo;
  entries.clGetKernelWorkGroupInfo = getKernelWorkGroupInfo;
  entries.clRetainKernel = retainKernel;
  entries.clReleaseKernel = releaseKernel;
}

}  // namespace framequilt::opencl_layer
