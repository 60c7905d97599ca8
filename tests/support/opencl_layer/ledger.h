// SPDX-License-Identifier: Apache-2.0
/// \file
/// Which objects live. Every refusal here is a violation on record.
#pragma once

#include <CL/cl.h>

#include <cstddef>
#include <string>

#include "tests/support/opencl_layer.h"

namespace framequilt::opencl_layer {

/// After the runtime made it.
void noteCreated(ObjectKind kind, const void* handle, std::string name = {}, std::size_t bytes = 0);
/// False: `handle` is no living object of this kind.
bool isAlive(const char* entryPoint, ObjectKind kind, const void* handle);
bool noteRetained(const char* entryPoint, ObjectKind kind, const void* handle);

enum class Released { kRefused, kStillHeld, kGone };
/// Before the runtime releases it: it may give the address to another thread at once.
Released noteReleased(const char* entryPoint, ObjectKind kind, const void* handle);

struct Mapping {
  void* pointer;
  std::size_t offset, bytes;
  cl_map_flags flags;
};
void noteMapped(cl_mem buffer, const Mapping& mapping);
/// False: `pointer` is not mapped. Else the mapping is gone, and copied to `found`.
bool noteUnmapped(const char* entryPoint, cl_mem buffer, const void* pointer, Mapping* found);

/// They are unknown from now on.
void forgetGoneObjects();

/// Of the object that has or had this handle last; 0: none. Addresses are given out again, numbers
/// are not.
int numberOf(const void* handle);

enum class BufferState { kForeign, kGone, kMapped, kReady };
/// Of the buffer with this number, if it has one. Nothing goes on record.
BufferState stateOfBuffer(cl_mem buffer, int number);

}  // namespace framequilt::opencl_layer
