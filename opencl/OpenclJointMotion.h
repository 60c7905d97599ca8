// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CL/cl.h>

#include "framequilt/export.h"

/// What an unmeasured motion counts as: the highest difference.
inline constexpr int kUnmeasuredMotionCL = 255;

/// Smooths an 8-bit image on the device in place, with the 5 taps of the motion measure.
/// \param tmpA,tmpB  Room for (rows + 4) x (cols + 4) pixels each.
/// \return The statuses of all steps, or-ed; every refused one is named to the debug hook, and the
///         chain goes on.
FRAMEQUILT_EXPORT cl_int Filter2DModeKernel(cl_mem image, cl_mem tmpA, cl_mem tmpB, int rows,
                                            int cols);

/// Mean absolute difference (0..255, truncated) of the smoothed gray images of two frames: as
/// `imageMotionModel`. `kUnmeasuredMotionCL` when the device refused a step, `errNum` says so then;
/// 0, after the line "ptr is null", for a null frame.
FRAMEQUILT_EXPORT int imageMotionModelCL(unsigned char* previous, unsigned char* current, int rows,
                                         int cols, int channels, int channels2);
