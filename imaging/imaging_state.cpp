// SPDX-License-Identifier: Apache-2.0
#include "imaging/imaging_state.h"

#include "framequilt/tuning.h"
#include "imaging/pixel_math.h"

unsigned char *resiz_One = nullptr, *resiz_Two = nullptr;
unsigned char *resiz_OneBound = nullptr, *resiz_TwoBound = nullptr;
unsigned char *resiz_OneBoundFilter = nullptr, *resiz_TwoBoundFilter = nullptr;

unsigned char *PreFrameImageGrayCpu = nullptr, *CurFrameImageGrayCpu = nullptr;
unsigned char *PreFrameImageGrayBoundCpu = nullptr, *PreFrameImageGrayBoundTempCpu = nullptr;
unsigned char *CurFrameImageGrayBoundCpu = nullptr, *CurFrameImageGrayBoundTempCpu = nullptr;

float *AreaImageOneGaryFloat = nullptr, *AreaImageTwoGaryFloat = nullptr;
unsigned char *AreaImageOneWeight = nullptr;
unsigned char *AreaImageOneGary = nullptr, *AreaImageTwoGary = nullptr;

namespace framequilt {

std::size_t framePlane(std::int64_t margin) noexcept {
  return planeSize(RealImgRow + margin, RealImgCol + margin);
}

}  // namespace framequilt
