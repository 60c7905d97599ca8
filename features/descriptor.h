// SPDX-License-Identifier: Apache-2.0
/// \file
/// Gradient-orientation histograms around corners, not normalised for rotation or contrast.
#pragma once

#include <vector>

#include "framequilt/export.h"
#include "framequilt/records.h"

/// Describes each corner of an 8-bit gray image by the orientation histograms (8 bins of 45
/// degrees, summed magnitudes) of the 4 x 4 pixel cells of the `patch` x `patch` square around it.
///
/// Cells are stored column block by column block, top to bottom, 8 elements each; 25 cells of a
/// patch of 20 fill 200 elements. With a greater `length` the rest stays 0, with a smaller one the
/// descriptor is cut short. Pixels within two of the top and left edge, and outside the image,
/// contribute nothing; at the far edges a tap past the end of a row reads the next row, and past
/// the last row 0.
///
/// \param corners      x column, y row, in pixels of `image`; anywhere.
/// \param scratch      `length` elements, zeroed once per call; one per thread.
/// \param descriptors  One descriptor of `length` elements after another, in corner order.
/// \return False, after the line "src_in ptr is null", for a null image; true otherwise.
FRAMEQUILT_EXPORT bool noRotaFeatureDescriber(unsigned char* image, int rows, int cols, int length,
                                              int patch, std::vector<SPoint> corners,
                                              unsigned short* scratch, unsigned short* descriptors);
