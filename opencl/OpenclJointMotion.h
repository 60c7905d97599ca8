// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CL/cl.h>

#include "framequilt/export.h"

/// Smooths an 8-bit image on the device in place, with the 5 taps of the motion measure.
/// \param tmpA,tmpB  Room for (rows + 4) x (cols + 4) pixels each.
/// \return The status of the last step; every refused one is named to the debug hook, and the chain
///         ends with it.
FRAMEQUILT_EXPORT cl_int Filter2DModeKernel(cl_mem image, cl_mem tmpA, cl_mem tmpB, int rows,
                                            int cols);

/// Mean absolute difference (0..255, truncated) of the smoothed gray images of two frames: as
/// `imageMotionModel`. 255, the value that every limit refuses, when the device refused a step; 0,
/// after the line "ptr is null", for a null frame.
FRAMEQUILT_EXPORT int imageMotionModelCL(unsigned char* previous, unsigned char* current, int rows,
                                         int cols, int channels, int channels2);
