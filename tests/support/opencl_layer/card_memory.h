// SPDX-License-Identifier: Apache-2.0
/// \file
/// Buffers of a device with memory of its own, as discreteMemory() describes them.
#pragma once

#include <CL/cl.h>

#include <cstddef>

#include "tests/support/opencl_layer/ledger.h"

namespace framequilt::opencl_layer {

/// Buffers that are created now go onto the card.
bool cardIsOn();

/// As clCreateBuffer, with arguments that are in order.
cl_mem createOnCard(cl_context context, cl_mem_flags flags, std::size_t bytes, void* host,
                    cl_int* status);
bool isOnCard(cl_mem buffer);
/// At the last release.
void takeOffCard(cl_mem buffer);

/// What the program asked for at creation; the runtime was told something else.
cl_mem_flags flagsOnCard(cl_mem buffer);
void* hostPointerOnCard(cl_mem buffer);

struct WaitList {
  cl_uint count;
  const cl_event* events;
};
/// As clEnqueueMapBuffer, blocking.
void* mapFromCard(cl_command_queue queue, cl_mem buffer, cl_map_flags flags, std::size_t offset,
                  std::size_t bytes, WaitList wait, cl_event* event, cl_int* status);
/// As clEnqueueUnmapMemObject, blocking. The mapping is already off the books.
cl_int unmapToCard(cl_command_queue queue, cl_mem buffer, const Mapping& mapping, WaitList wait,
                   cl_event* event);

}  // namespace framequilt::opencl_layer
