// SPDX-License-Identifier: Apache-2.0
/// \file
/// Calls that no test needs and whose handles, coming or going, the layer would have to know.
/// Passed on, they would meet a presented device below or bring objects that are on no book.
#include <array>
#include <cstddef>
#include <string>
#include <tuple>
#include <type_traits>

#include "tests/support/opencl_layer/call.h"
#include "tests/support/opencl_layer/entries.h"
#include "tests/support/opencl_layer/records.h"

namespace framequilt::opencl_layer {
namespace {

/// A literal as template argument.
template <std::size_t kLength>
struct Name {
  std::array<char, kLength> text{};
  // NOLINTNEXTLINE(google-explicit-constructor)
  constexpr Name(const char (&literal)[kLength]) {
    for (std::size_t i = 0; i < kLength; ++i) text[i] = literal[i];
  }
};

template <Name kName, class Result, class... Parameters>
Result CL_API_CALL refused(Parameters... arguments) {
  const Call call(kName.text.data());
  recordViolation(std::string(call.name()) + ": the layer does not know this call");
  if constexpr (std::is_same_v<Result, cl_int>) {
    ((void)arguments, ...);
    return CL_INVALID_OPERATION;
  } else {
    const auto all = std::tie(arguments...);
    using Last = std::tuple_element_t<sizeof...(Parameters) - 1, std::tuple<Parameters...>>;
    if constexpr (std::is_same_v<Last, cl_int*>) {
      cl_int* const status = std::get<sizeof...(Parameters) - 1>(all);
      if (status != nullptr) *status = CL_INVALID_OPERATION;
    }
    return Result{};
  }
}

template <Name kName, class Result, class... Parameters>
void refuse(Result(CL_API_CALL*& entry)(Parameters...)) {
  entry = refused<kName, Result, Parameters...>;
}

}  // namespace

void refuseForeignEntries(cl_icd_dispatch& entries) {
#define REFUSE(entry) refuse<#entry>(entries.entry)
  REFUSE(clCreateSubDevices);
  REFUSE(clCreateSubDevicesEXT);
  REFUSE(clRetainDeviceEXT);
  REFUSE(clReleaseDeviceEXT);
  REFUSE(clUnloadPlatformCompiler);
  REFUSE(clGetExtensionFunctionAddress);
  REFUSE(clGetExtensionFunctionAddressForPlatform);
  REFUSE(clGetDeviceAndHostTimer);
  REFUSE(clGetHostTimer);
  REFUSE(clSetDefaultDeviceCommandQueue);
  REFUSE(clCreateProgramWithBuiltInKernels);
  REFUSE(clCreateProgramWithIL);
  REFUSE(clLinkProgram);
  REFUSE(clCloneKernel);
  REFUSE(clGetKernelSubGroupInfo);
  REFUSE(clGetKernelSubGroupInfoKHR);
  REFUSE(clSetKernelArgSVMPointer);
  REFUSE(clSetKernelExecInfo);
  REFUSE(clEnqueueTask);
  REFUSE(clEnqueueNativeKernel);
  REFUSE(clCreateSubBuffer);
  REFUSE(clCreateBufferWithProperties);
  REFUSE(clEnqueueReadBufferRect);
  REFUSE(clEnqueueWriteBufferRect);
  REFUSE(clEnqueueCopyBufferRect);
  REFUSE(clEnqueueMigrateMemObjects);
  REFUSE(clSetMemObjectDestructorCallback);
  REFUSE(clCreateImage);
  REFUSE(clCreateImage2D);
  REFUSE(clCreateImage3D);
  REFUSE(clCreateImageWithProperties);
  REFUSE(clCreatePipe);
  REFUSE(clCreateUserEvent);
  REFUSE(clSetUserEventStatus);
  REFUSE(clSetEventCallback);
  REFUSE(clEnqueueMarker);
  REFUSE(clEnqueueBarrier);
  REFUSE(clEnqueueWaitForEvents);
#undef REFUSE
}

}  // namespace framequilt::opencl_layer
