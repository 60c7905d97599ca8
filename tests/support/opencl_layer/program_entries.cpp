// SPDX-License-Identifier: Apache-2.0
/// \file
/// Programs: built for the real device.
#include "tests/support/opencl_layer/call.h"
#include "tests/support/opencl_layer/entries.h"
#include "tests/support/opencl_layer/presentation.h"
#include "tests/support/opencl_layer/references.h"

namespace framequilt::opencl_layer {
namespace {

using Notify = void(CL_CALLBACK*)(cl_program, void*);

cl_program noteProgram(cl_program program) {
  if (program == nullptr) return nullptr;
  noteCreated(ObjectKind::kProgram, program);
  record({.kind = TraceKind::kCreate, .object = ObjectKind::kProgram, .handle = program});
  return program;
}

cl_program CL_API_CALL createProgramWithSource(cl_context context, cl_uint count,
                                               const char** sources, const size_t* lengths,
                                               cl_int* status) {
  Call call("clCreateProgramWithSource");
  if (!call.mayPass(context)) return call.noObject(status);
  return noteProgram(
      callRuntime(runtime().clCreateProgramWithSource, context, count, sources, lengths, status));
}

// The real device's binary is the same for all presented ones.
cl_program CL_API_CALL createProgramWithBinary(cl_context context, cl_uint count,
                                               const cl_device_id* devices, const size_t* lengths,
                                               const unsigned char** binaries, cl_int* binaryStatus,
                                               cl_int* status) {
  Call call("clCreateProgramWithBinary");
  if (!call.mayPass(context, Handles<cl_device_id>{count, devices})) return call.noObject(status);
  const cl_device_id real = realDevice();
  return noteProgram(callRuntime(runtime().clCreateProgramWithBinary, context,
                                 count > 0 ? cl_uint{1} : 0u, &real, lengths, binaries,
                                 binaryStatus, status));
}

// A list of presented devices as the runtime takes it.
struct RealList {
  cl_uint count;
  const cl_device_id* devices;
  cl_device_id device;

  RealList(cl_uint asked, const cl_device_id* list)
      : count(asked > 0 ? 1 : 0),
        devices(list == nullptr ? nullptr : &device),
        device(realDevice()) {}
  RealList(const RealList&) = delete;
  RealList& operator=(const RealList&) = delete;
};

cl_int CL_API_CALL buildProgram(cl_program program, cl_uint count, const cl_device_id* devices,
                                const char* options, Notify notify, void* user) {
  Call call("clBuildProgram");
  if (!call.mayPass(program, Handles<cl_device_id>{count, devices})) return call.status();
  const RealList real(count, devices);
  const cl_int status = callRuntime(runtime().clBuildProgram, program, real.count, real.devices,
                                    options, notify, user);
  if (status != CL_SUCCESS) return status;
  record({.kind = TraceKind::kBuild, .object = ObjectKind::kProgram, .handle = program});
  return status;
}

cl_int CL_API_CALL compileProgram(cl_program program, cl_uint count, const cl_device_id* devices,
                                  const char* options, cl_uint headerCount,
                                  const cl_program* headers, const char** names, Notify notify,
                                  void* user) {
  Call call("clCompileProgram");
  if (!call.mayPass(program, Handles<cl_device_id>{count, devices},
                    Handles<cl_program>{headerCount, headers})) {
    return call.status();
  }
  const RealList real(count, devices);
  return callRuntime(runtime().clCompileProgram, program, real.count, real.devices, options,
                     headerCount, headers, names, notify, user);
}

cl_int CL_API_CALL getProgramInfo(cl_program program, cl_program_info name, size_t room,
                                  void* value, size_t* bytesOut) {
  Call call("clGetProgramInfo");
  if (!call.mayPass(program)) return call.status();
  if (name != CL_PROGRAM_DEVICES && name != CL_PROGRAM_NUM_DEVICES) {
    return callRuntime(runtime().clGetProgramInfo, program, name, room, value, bytesOut);
  }
  cl_context context = nullptr;
  const cl_int status =
      callRuntime(runtime().clGetProgramInfo, program, cl_program_info{CL_PROGRAM_CONTEXT},
                  sizeof(cl_context), static_cast<void*>(&context), nullptr);
  if (status != CL_SUCCESS) return status;
  const std::vector<cl_device_id> devices = devicesOf(context);
  if (name == CL_PROGRAM_DEVICES) return answerInfo(devices, room, value, bytesOut);
  return answerInfo(static_cast<cl_uint>(devices.size()), room, value, bytesOut);
}

cl_int CL_API_CALL getProgramBuildInfo(cl_program program, cl_device_id device,
                                       cl_program_build_info name, size_t room, void* value,
                                       size_t* bytesOut) {
  Call call("clGetProgramBuildInfo");
  if (!call.mayPass(program, device)) return call.status();
  return callRuntime(runtime().clGetProgramBuildInfo, program, realDevice(), name, room, value,
                     bytesOut);
}

cl_int CL_API_CALL retainProgram(cl_program program) {
  return retainObject("clRetainProgram", program, &cl_icd_dispatch::clRetainProgram);
}

cl_int CL_API_CALL releaseProgram(cl_program program) {
  return releaseObject("clReleaseProgram", program, &cl_icd_dispatch::clReleaseProgram);
}

}  // namespace

void replaceProgramEntries(cl_icd_dispatch& entries) {
  entries.clCreateProgramWithSource = createProgramWithSource;
  entries.clCreateProgramWithBinary = createProgramWithBinary;
  entries.clBuildProgram = buildProgram;
  entries.clCompileProgram = compileProgram;
  entries.clGetProgramInfo = getProgramInfo;
  entries.clGetProgramBuildInfo = getProgramBuildInfo;
  entries.clRetainProgram = retainProgram;
  entries.clReleaseProgram = releaseProgram;
}

}  // namespace framequilt::opencl_layer
