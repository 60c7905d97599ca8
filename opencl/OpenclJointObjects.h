// SPDX-License-Identifier: Apache-2.0
/// \file
/// The kernels and device buffers that live as long as a run. Caller's thread only.
#pragma once

#include <CL/cl.h>

#include <cstddef>

#include "framequilt/export.h"

/// Creates every kernel that is still null. False, after its message, at the first that the program
/// does not define; those before it stay.
FRAMEQUILT_EXPORT bool createKernel(cl_program prog);
/// Releases the kernels that exist, in the order of creation. \return Always true.
FRAMEQUILT_EXPORT bool releaseKernel();

/// Creates every buffer that is still null, for frames of `imgScaleRowCL` x `imgScaleColCL` pixels;
/// a buffer of another context, or one that is too small, is replaced. One that cannot be had is
/// only reported. `rows` and `cols` are not read. \return Always true.
FRAMEQUILT_EXPORT bool CreateMemObjectsImg(cl_context ctx, int rows, int cols, int channels);
/// Releases every buffer but `grad_bound_tempOneCl`, which a later run takes over.
/// \return Always true.
FRAMEQUILT_EXPORT bool clReleaseMemObjectsImg();

/// Releases buffers, kernels, queue, program and context, and sets them to null.
FRAMEQUILT_EXPORT void Cleanup();

namespace framequilt {

/// Floats that each padded plane of the corner search has room for.
std::size_t paddedSearchPixels();

}  // namespace framequilt
