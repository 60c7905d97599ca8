// SPDX-License-Identifier: Apache-2.0
/// \file
/// A start that fails gives handles back and leaves their globals as they are. Here it is known
/// which ones, so that nobody uses or releases them again.
#pragma once

#include <CL/cl.h>

namespace framequilt {

/// Remembers the handle as given back.
void noteReleased(cl_context handle);
void noteReleased(cl_command_queue handle);
void noteReleased(cl_program handle);

/// A runtime may hand out an address again: the handle is a new one.
void noteCreated(cl_context handle);
void noteCreated(cl_command_queue handle);
void noteCreated(cl_program handle);

/// Sets to null those of `context`, `commandQueue` and `program` that were given back.
void forgetReleasedHandles();

}  // namespace framequilt
