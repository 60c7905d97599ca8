// SPDX-License-Identifier: Apache-2.0
#include "opencl/OpenclJointCallRecord.h"

#include "cpu/placement_rules.h"
#include "imaging/region.h"
#include "opencl/OpenclJointState.h"

namespace framequilt {
namespace {

std::optional<int> measuredMotion;
bool lackedMemory = false;

}  // namespace

void forgetMeasuresCL() {
  const SPoint position = flagsCL.position;
  flagsCL = {};
  flagsCL.position = position;
  measuredMotion.reset();
  lackedMemory = false;
}

void restoreReferenceCL() {
  const int channels = theSorImageInfoCL.channels;
  const SPoint at = flagsCL.position;
  if (theSorImageTempCL == nullptr ||
      !holdsFrame(mosaicImgCL, at, imgScaleRowCL, imgScaleColCL, channels)) {
    return;
  }
  imgInfo part{};
  willBigImgAssignRowColToSmallImg(mosaicImgCL.data, at.y, at.y + imgScaleRowCL, at.x,
                                   at.x + imgScaleColCL, mosaicImgCL.rows, mosaicImgCL.cols,
                                   channels, part, theSorImageTempCL);
}

std::optional<int> motionOfCallCL() { return measuredMotion; }

void setMotionOfCallCL(int motion) { measuredMotion = motion; }

bool lackedMemoryInCallCL() { return lackedMemory; }

void noteLackOfMemoryInCallCL() { lackedMemory = true; }

}  // namespace framequilt
