// SPDX-License-Identifier: Apache-2.0
#include "features/features_state.h"

float *grad_x2 = nullptr, *grad_y2 = nullptr, *grad_xy = nullptr;
float *grad_x21 = nullptr, *grad_y21 = nullptr, *grad_xy1 = nullptr;
float *grad_bound = nullptr, *grad_bound_temp = nullptr;
float *grad_bound1 = nullptr, *grad_bound_temp1 = nullptr;

std::vector<SPoint> HarrissCornerSPointOneArray;
std::vector<SPoint> HarrissCornerSPointTwoArray;

unsigned short *FeatureDescriber1 = nullptr, *FeatureDescriber2 = nullptr;
unsigned short *DescribleSymbol = nullptr, *DescribleSymbol1 = nullptr;
float *dist_valueCpu = nullptr;
