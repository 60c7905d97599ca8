// SPDX-License-Identifier: Apache-2.0
/// \file
/// Are the two sides of an overlap equally bright and equally sharp? `a` is the mosaic's part, `b`
/// the new frame's; neither is larger than the working size. Caller's thread only.
#pragma once

#include "framequilt/export.h"

/// Mean of the 3 x 3 smoothed gray of each part: as `calcOverLapImageBright`. Both are converted
/// with the size of `a`, and `b` has as many rows (`unused` is not read). Leaves the gray parts
/// mapped for the sharpness measure, which has to follow.
/// \return False, after the line "ptr is null", for a null image. Otherwise true; both values are
///         not-a-number when the device refused a step.
FRAMEQUILT_EXPORT bool calcOverLapImageBrightCL(unsigned char* a, unsigned char* b, int rowsA,
                                                int colsA, int unused, int colsB, int channels,
                                                float& brightA, float& brightB);

/// Mean of the strong responses (above 10) of a 9-tap horizontal edge filter on each gray part,
/// sampled at every second pixel. Unlike the host's measure it takes the gray image as it is, not
/// smoothed, and the whole of it. Nothing strong gives 0 / 0.
///
/// The images are only checked for null, `channels` is not read. Runs on the host alone.
/// \return False, after the line "ptr is null", for a null image. Otherwise true; both values are
///         not-a-number without the brightness measure's gray parts.
FRAMEQUILT_EXPORT bool calcOverLapImageDefinitionCL(unsigned char* a, unsigned char* b, int rowsA,
                                                    int colsA, int rowsB, int colsB, int channels,
                                                    float& defA, float& defB);

namespace framequilt {

/// Ends the mappings of the gray parts, where there are any.
void unmapOverlaps();

}  // namespace framequilt
