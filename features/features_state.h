// SPDX-License-Identifier: Apache-2.0
/// \file
/// What the corner search and the descriptors of one pair of images work in. docs/state.md lists
/// every buffer with its extent, when it is allocated and who writes it.
#pragma once

#include <vector>

#include "framequilt/export.h"
#include "framequilt/records.h"

/// Gradient products, then smoothed, of the first and the second image.
extern FRAMEQUILT_EXPORT float *grad_x2, *grad_y2, *grad_xy;
extern FRAMEQUILT_EXPORT float *grad_x21, *grad_y21, *grad_xy1;
/// Padded plane (then the response) and padded scratch of each image.
extern FRAMEQUILT_EXPORT float *grad_bound, *grad_bound_temp;
extern FRAMEQUILT_EXPORT float *grad_bound1, *grad_bound_temp1;

/// Corners of the pair being worked on, in working pixels.
extern FRAMEQUILT_EXPORT std::vector<SPoint> HarrissCornerSPointOneArray;
extern FRAMEQUILT_EXPORT std::vector<SPoint> HarrissCornerSPointTwoArray;

/// Descriptors of the pair and one descriptor of scratch per worker.
extern FRAMEQUILT_EXPORT unsigned short *FeatureDescriber1, *FeatureDescriber2;
extern FRAMEQUILT_EXPORT unsigned short *DescribleSymbol, *DescribleSymbol1;
/// Distances of one descriptor to all of the first image.
extern FRAMEQUILT_EXPORT float *dist_valueCpu;
