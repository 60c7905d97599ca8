// SPDX-License-Identifier: Apache-2.0
/// \file
/// Harris corners (Harris and Stephens 1988) of an 8-bit gray image, searched at reduced size.
#pragma once

#include <vector>

#include "framequilt/export.h"
#include "framequilt/records.h"

/// Finds the corners of `gray`, info.rows x info.cols pixels, and appends them to `corners`
/// (expected empty), in pixels of `gray`.
///
/// The image is reduced by `pointdownscal` and searched at `gray_pointdownscal_row` x
/// `gray_pointdownscal_col`; at most `numpoint` corners come back. `resiz_OneBound` /
/// `resiz_TwoBound` have to be allocated. Fun1 works on the first set of planes of
/// features_state.h, Fun2 on the second, so that two threads can run one each; neither may run on
/// two threads. The five float planes are released when corners were found and stay otherwise.
///
/// \return True when at least one corner was found. False after one of the lines
///         "findHarrisCornerCoordianteFun ptr is null" (null image), "findGradSquareCrossTerms
///         failed" (reduced plane not allocated), "HarrissCornerSPoint size is 0".
FRAMEQUILT_EXPORT bool findHarrisCornerCoordianteFun1(unsigned char* gray, imgInfo info,
                                                      std::vector<SPoint>& corners);
FRAMEQUILT_EXPORT bool findHarrisCornerCoordianteFun2(unsigned char* gray, imgInfo info,
                                                      std::vector<SPoint>& corners);

/// Products of the Sobel gradients: gx * gx, gy * gy and gx * gy with gx and gy the absolute
/// derivatives divided by 4 in integers. Both signs are lost before the cross term is built: a
/// diagonal edge and its mirror image give the same products. The outermost rows and columns of
/// the planes are not written.
/// \return False, after the line "ptr is null", when a pointer is null; true otherwise.
FRAMEQUILT_EXPORT bool findGradSquareCrossTerms(unsigned char* src, int rows, int cols, float* gx2,
                                                float* gy2, float* gxy);

/// The same for two images of one size. Only the pointers of image A are checked for null.
FRAMEQUILT_EXPORT bool findGradSquareCrossTermsTwo(unsigned char* srcA, unsigned char* srcB,
                                                   int rows, int cols, float* gx2A, float* gx2B,
                                                   float* gy2A, float* gy2B, float* gxyA,
                                                   float* gxyB);

/// Corner response (ab - xx) - ((a + b) k)(a + b) at every pixel at least 20 away from the edges;
/// only positive responses are stored and added to `sum` (in raster order). `mean` becomes sum
/// divided by the pixel count of the whole plane, also when the plane is too small for a response.
/// \return False, after the line "calcResponseValue ptr null", when a pointer is null.
FRAMEQUILT_EXPORT bool calcResponseValue(float* gx2, float* gy2, float* gxy, float k, int rows,
                                         int cols, float* response, float& mean, float& sum);
