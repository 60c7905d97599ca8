// SPDX-License-Identifier: Apache-2.0
/// \file
/// Start and end of a run of the OpenCL backend.
#pragma once

#include "framequilt/export.h"

/// Opens a run: device, queue and program where they are still null (the kernel file is "cl.bin" in
/// the working directory then), the corner threads, buffers and kernels. Arguments as for
/// `initJoint`.
///
/// \return False, after a message, when something is missing; without one when frames have neither
///         1 nor 3 channels. The globals then keep what the start had made of them, also handles
///         that it has given back; the next start does not use those, and `initJoint` and
///         `uinitJoint` clean up.
/// \throws std::bad_alloc
FRAMEQUILT_EXPORT bool initJointCL(int rows, int cols, int channels, int cornerBudget, int maxRow,
                                   int maxCol);

/// Releases the device's objects, ends the threads, releases every buffer and the mosaic.
/// \return Always true.
FRAMEQUILT_EXPORT bool uinitJointCL();

namespace framequilt {

/// Takes back, without a line, what a start left behind that failed.
void cleanUpFailedStartCL();

}  // namespace framequilt
