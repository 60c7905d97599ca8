// SPDX-License-Identifier: Apache-2.0
/// \file
/// Start and stop of a run of the host backend.
#pragma once

#include "framequilt/export.h"

/// Starts the two corner workers, derives the working sizes and budgets of tuning.h and allocates
/// the buffers of the run. Arguments as for `initJoint`.
///
/// Threads of a run that is still open are stopped and joined first, without a report; its buffers
/// stay where they are large enough.
/// \return False, after a fixed line, when a thread could not be created; what was created until
///         then stays until `uninitJointCpu`.
/// \throws std::bad_alloc when a buffer's size is negative or above 2^31 - 1 bytes, or memory runs
///         out; `uninitJointCpu` is the way back here too.
FRAMEQUILT_EXPORT bool initJointCpu(int rows, int cols, int channels, int pvalue, int maxRow,
                                    int maxCol);

/// Ends and joins the workers (one line each on how that went), releases every buffer, corner
/// list and the mosaic. \return Always true.
FRAMEQUILT_EXPORT bool uninitJointCpu();

namespace framequilt {

/// Ends a run that is still open here, without a report, for one that another backend serves.
/// Nothing when there is none.
void giveWayCpu();

}  // namespace framequilt
