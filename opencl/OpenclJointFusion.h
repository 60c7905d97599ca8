// SPDX-License-Identifier: Apache-2.0
/// \file
/// Feathered mixing of two images of one size on the device. Caller's thread only.
#pragma once

#include "framequilt/export.h"

/// Leaves the weight (0..255) of `a` at every pixel in `AreaImageOneWeightCL`: as
/// `weightofTwoAreaFun`. `unused` is not read.
/// \return False, after the line "ptr is null", for a null image, and when the device refused.
FRAMEQUILT_EXPORT bool weightofTwoAreaFunCL(unsigned char* a, unsigned char* b, int rows, int cols,
                                            int channels, int unused);

/// Mixes `a` with `b` into `a`: as `twoImageFusion`. `unused` is not read.
/// \return False, after the line "ptr is null", for a null image, and when the device refused: `a`
///         is unchanged then.
FRAMEQUILT_EXPORT bool twoImageFusionCL(unsigned char* a, unsigned char* b, int channels,
                                        int unused, int rows, int cols);
