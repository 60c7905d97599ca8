// SPDX-License-Identifier: Apache-2.0
/// \file
/// Objects of the OpenCL backend's run that live as long as the library.
#pragma once

#include <opencv2/core/mat.hpp>
#include <vector>

#include "framequilt/export.h"
#include "framequilt/records.h"

/// Corners of the pair being worked on.
extern FRAMEQUILT_EXPORT std::vector<SPoint> HarrissCornerSPointOneArrayCL;
extern FRAMEQUILT_EXPORT std::vector<SPoint> HarrissCornerSPointTwoArrayCL;
/// The mosaic.
extern FRAMEQUILT_EXPORT cv::Mat mosaicImgCL;
