// SPDX-License-Identifier: Apache-2.0
/// \file
/// The two functions that the OpenCL loader looks for in a layer.
#include <CL/cl_layer.h>

#include <algorithm>
#include <cstring>

#include "tests/support/opencl_layer/call.h"
#include "tests/support/opencl_layer/entries.h"
#include "tests/support/opencl_layer/presentation.h"
#include "tests/support/opencl_layer/runtime.h"

namespace framequilt::opencl_layer {
namespace {

// The loader keeps no copy of either table.
cl_icd_dispatch& entriesOfLayer() {
  static cl_icd_dispatch& entries = *new cl_icd_dispatch{};
  return entries;
}

}  // namespace
}  // namespace framequilt::opencl_layer

using namespace framequilt::opencl_layer;

extern "C" FRAMEQUILT_OPENCL_LAYER_API cl_int CL_API_CALL clGetLayerInfo(cl_layer_info name,
                                                                         size_t room, void* value,
                                                                         size_t* bytesOut) {
  if (name == CL_LAYER_API_VERSION) {
    return answerInfo(cl_layer_api_version{CL_LAYER_API_VERSION_100}, room, value, bytesOut);
  }
  if (name == CL_LAYER_NAME) return answerInfo(std::string("test layer"), room, value, bytesOut);
  return CL_INVALID_VALUE;
}

extern "C" FRAMEQUILT_OPENCL_LAYER_API cl_int CL_API_CALL
clInitLayer(cl_uint count, const cl_icd_dispatch* below, cl_uint* countOut,
            const cl_icd_dispatch** layerOut) {
  constexpr cl_uint kEntries = sizeof(cl_icd_dispatch) / sizeof(void*);
  if (count < kEntries || below == nullptr || countOut == nullptr || layerOut == nullptr) {
    return CL_INVALID_VALUE;
  }
  cl_icd_dispatch& entries = entriesOfLayer();
  entries = *below;
  replacePlatformEntries(entries);
  replaceContextEntries(entries);
  replaceProgramEntries(entries);
  replaceKernelEntries(entries);
  replaceBufferEntries(entries);
  replaceMappingEntries(entries);
  replaceQueueEntries(entries);
  refuseForeignEntries(entries);
  setLayerEntries(entries);
  setRuntime(*below);
  *countOut = kEntries;
  *layerOut = &entries;
  return CL_SUCCESS;
}
