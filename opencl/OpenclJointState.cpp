// SPDX-License-Identifier: Apache-2.0
#include "opencl/OpenclJointState.h"

std::vector<SPoint> HarrissCornerSPointOneArrayCL;
std::vector<SPoint> HarrissCornerSPointTwoArrayCL;
cv::Mat mosaicImgCL;
