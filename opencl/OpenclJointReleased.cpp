// SPDX-License-Identifier: Apache-2.0
#include "opencl/OpenclJointReleased.h"

#include "opencl/OpenclJointState.h"

namespace framequilt {
namespace {

cl_context releasedContext = nullptr;
cl_command_queue releasedQueue = nullptr;
cl_program releasedProgram = nullptr;

template <class Handle>
void forgetIfCreated(Handle created, Handle& released) {
  if (created == released) released = nullptr;
}

template <class Handle>
void forgetIfReleased(Handle& global, Handle& released) {
  if (global == released) global = nullptr;
  released = nullptr;
}

}  // namespace

void noteReleased(cl_context handle) { releasedContext = handle; }
void noteReleased(cl_command_queue handle) { releasedQueue = handle; }
void noteReleased(cl_program handle) { releasedProgram = handle; }

void noteCreated(cl_context handle) { forgetIfCreated(handle, releasedContext); }
void noteCreated(cl_command_queue handle) { forgetIfCreated(handle, releasedQueue); }
void noteCreated(cl_program handle) { forgetIfCreated(handle, releasedProgram); }

void forgetReleasedHandles() {
  forgetIfReleased(context, releasedContext);
  forgetIfReleased(commandQueue, releasedQueue);
  forgetIfReleased(program, releasedProgram);
}

}  // namespace framequilt
