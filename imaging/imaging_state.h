// SPDX-License-Identifier: Apache-2.0
/// \file
/// Scratch planes of the image measures and the fusion. docs/state.md lists every one with its
/// extent, when it is allocated and who writes it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "framequilt/export.h"

/// Gray working image of each worker, later a padded plane of the overlap measures.
extern FRAMEQUILT_EXPORT unsigned char *resiz_One, *resiz_Two;
/// Downscaled gray image of the corner search, later a plane of the overlap measures.
extern FRAMEQUILT_EXPORT unsigned char *resiz_OneBound, *resiz_TwoBound;
/// Filtered planes of the overlap measures.
extern FRAMEQUILT_EXPORT unsigned char *resiz_OneBoundFilter, *resiz_TwoBoundFilter;

/// Gray planes of the motion measure, and its padded planes.
extern FRAMEQUILT_EXPORT unsigned char *PreFrameImageGrayCpu, *CurFrameImageGrayCpu;
extern FRAMEQUILT_EXPORT unsigned char *PreFrameImageGrayBoundCpu, *PreFrameImageGrayBoundTempCpu;
extern FRAMEQUILT_EXPORT unsigned char *CurFrameImageGrayBoundCpu, *CurFrameImageGrayBoundTempCpu;

/// Distance maps, weights and two unused planes of the fusion.
extern FRAMEQUILT_EXPORT float *AreaImageOneGaryFloat, *AreaImageTwoGaryFloat;
extern FRAMEQUILT_EXPORT unsigned char *AreaImageOneWeight;
extern FRAMEQUILT_EXPORT unsigned char *AreaImageOneGary, *AreaImageTwoGary;

namespace framequilt {

/// Element count of a plane as large as the run's frames with `margin` more rows and columns.
std::size_t framePlane(std::int64_t margin) noexcept;

}  // namespace framequilt
