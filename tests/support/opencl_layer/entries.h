// SPDX-License-Identifier: Apache-2.0
/// \file
/// The calls that the layer takes in hand, by subject.
#pragma once

#include <CL/cl_icd.h>

namespace framequilt::opencl_layer {

void replacePlatformEntries(cl_icd_dispatch& entries);
void replaceContextEntries(cl_icd_dispatch& entries);
void replaceProgramEntries(cl_icd_dispatch& entries);
void replaceKernelEntries(cl_icd_dispatch& entries);
void replaceBufferEntries(cl_icd_dispatch& entries);
void replaceMappingEntries(cl_icd_dispatch& entries);
void replaceQueueEntries(cl_icd_dispatch& entries);
void refuseForeignEntries(cl_icd_dispatch& entries);

}  // namespace framequilt::opencl_layer
