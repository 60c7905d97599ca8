// SPDX-License-Identifier: Apache-2.0
/// \file
/// The platforms and devices that the program sees, and the real ones behind them.
#pragma once

#include <CL/cl_icd.h>

#include <optional>
#include <vector>

#include "tests/support/opencl_layer.h"

namespace framequilt::opencl_layer {

/// Handles of presented objects begin with this pointer, as every handle does behind a loader.
void setLayerEntries(const cl_icd_dispatch& entries);

std::vector<cl_platform_id> presentedPlatforms();

/// Null, and a violation on record, for a handle that was never given out.
const FakePlatform* fakePlatform(const char* entryPoint, cl_platform_id handle);
const FakeDevice* fakeDevice(const char* entryPoint, cl_device_id handle);
/// Of good handles.
std::vector<cl_device_id> devicesOf(cl_platform_id platform, cl_device_type type);
cl_platform_id platformOf(cl_device_id device);

/// Which of the presented devices an object was made for; the runtime knows the real one only.
void rememberContext(cl_context context, std::vector<cl_device_id> devices,
                     std::vector<cl_context_properties> properties);
void rememberQueue(cl_command_queue queue, cl_device_id device);
std::vector<cl_device_id> devicesOf(cl_context context);
std::vector<cl_context_properties> propertiesOf(cl_context context);
cl_device_id deviceOf(cl_command_queue queue);

}  // namespace framequilt::opencl_layer
