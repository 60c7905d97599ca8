// SPDX-License-Identifier: Apache-2.0
/// \file
/// Are the two sides of an overlap equally bright and equally sharp? Image 1 is the mosaic's part,
/// image 2 the new frame's.
///
/// Both measures work in the six byte planes `resiz_*` of imaging_state.h, which the caller has
/// allocated, each for (rows + 8) x (cols + 8) of the frame. The sharpness is taken from what the
/// brightness measure leaves in there, so it has to follow it at once on the same pair. Caller's
/// thread only.
#pragma once

#include "framequilt/export.h"

/// Mean of the 3 x 3 smoothed gray of each part, over every second pixel of every second row, two
/// pixels away from the edges. Fewer than 5 rows or columns give 0 / 0.
///
/// Both images are converted with the size of image 1; both are sampled on its grid.
/// \return False, after the line "ptr is null", for a null image or plane; outputs untouched.
FRAMEQUILT_EXPORT bool calcOverLapImageBright(unsigned char* image1, unsigned char* image2,
                                              int rows1, int cols1, int rows2, int cols2,
                                              int channels, float& bright1, float& bright2);

/// Mean of the strong responses (above 10) of a 9-tap horizontal edge filter on the top-left
/// quarter of each smoothed part, sampled at every second pixel. A negative response wraps to a
/// large byte and counts. Nothing strong gives 0 / 0.
///
/// The images are only checked for null, `channels` is not read.
/// \return False, after the line "ptr is null", for a null image or plane; outputs untouched.
FRAMEQUILT_EXPORT bool calcOverLapImageDefinition(unsigned char* image1, unsigned char* image2,
                                                  int rows1, int cols1, int rows2, int cols2,
                                                  int channels, float& definition1,
                                                  float& definition2);

/// Sets rows startRow <= r < endRow, or columns startCol <= c < endCol of every row, to 0. Bounds
/// are not checked against the image; start >= end does nothing.
/// \return False, after the line "corresRowAllColZero ptr is null" (also for the column members),
///         when the image is null.
FRAMEQUILT_EXPORT bool corresRowAllColZero(unsigned char* image, int rows, int cols, int startRow,
                                           int endRow);
FRAMEQUILT_EXPORT bool corresRowAllColZeroFloat(float* image, int rows, int cols, int startRow,
                                                int endRow);
FRAMEQUILT_EXPORT bool corresColAllRowZero(unsigned char* image, int rows, int cols, int startCol,
                                           int endCol);
FRAMEQUILT_EXPORT bool corresColAllRowZeroFloat(float* image, int rows, int cols, int startCol,
                                                int endCol);

namespace framequilt {

/// Blanks the outer frame of an edge response: a row at the top and bottom, 10 columns on the left,
/// 11 on the right.
///
/// On a plane narrower than the left strip, the strip runs over into the following rows and, behind
/// the last one, over up to 9 more bytes: they have to be there. The right strip then adds nothing
/// and must not start before 0.
void blankResponseFrame(unsigned char* plane, int rows, int cols);

}  // namespace framequilt
