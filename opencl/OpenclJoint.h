// SPDX-License-Identifier: Apache-2.0
/// \file
/// The OpenCL runtime: the device, its context, the kernel file and the program built from it.
///
/// Every function answers a failure with null, after the message named there. Caller's thread only,
/// while no run is open.
#pragma once

#include <CL/cl.h>

#include <cstddef>
#include <string>

#include "framequilt/export.h"

/// Name of a platform; empty when it cannot be had.
FRAMEQUILT_EXPORT std::string getPlatformName(cl_platform_id platform);

/// The whole content of a file, in memory from `malloc` that the caller frees; no zero is appended.
/// `size` is not written. Null, after a line with the path, for a file that cannot be opened or has
/// nothing to read.
FRAMEQUILT_EXPORT char* ReadKernelSourceFileBin(const char* path, std::size_t* size);

/// A context on the first GPU of the AMD platform, else of the NVIDIA one; platforms of other names
/// are not looked at. Prints the properties of the device. It needs 4096 MB of memory.
/// \param dev  Receives one handle, the device.
FRAMEQUILT_EXPORT cl_context CreateContext(cl_device_id* dev);

/// An in-order queue without properties.
FRAMEQUILT_EXPORT cl_command_queue CreateCommandQueue(cl_context ctx, cl_device_id dev);

/// The program of a kernel file, built without options; prints the build log when that fails.
FRAMEQUILT_EXPORT cl_program CreateProgram(cl_context ctx, cl_device_id dev, const char* path);
