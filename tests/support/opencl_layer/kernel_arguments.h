// SPDX-License-Identifier: Apache-2.0
/// \file
/// What each kernel was given, and by which thread.
#pragma once

#include <CL/cl.h>

#include <cstddef>
#include <string>
#include <vector>

namespace framequilt::opencl_layer {

/// After the runtime made it; asks the runtime for its function and parameters.
void rememberKernel(cl_kernel kernel);
std::string functionOf(cl_kernel kernel);
/// After the ledger forgot them.
void forgetGoneKernels();

/// The bytes of an argument; none for local memory and for null.
std::vector<unsigned char> argumentBytes(std::size_t bytes, const void* value);

/// False, and a violation: a buffer that was released before, or none at all. Null is for the
/// launch to judge. Two threads at one kernel: a violation as well.
bool noteArgument(cl_kernel kernel, cl_uint index, std::size_t bytes, const void* value);

/// False, and a violation: an argument is a null, released or mapped buffer.
bool mayLaunch(const char* entryPoint, cl_kernel kernel);
/// By index.
std::vector<const void*> buffersOf(cl_kernel kernel);

}  // namespace framequilt::opencl_layer
