// SPDX-License-Identifier: Apache-2.0
#include "cpu/call_record.h"

#include <cstring>

#include "cpu/run_state.h"
#include "framequilt/tuning.h"
#include "imaging/pixel_math.h"

namespace framequilt {
namespace {

std::optional<int> measuredMotion;
bool lackedMemory = false;

}  // namespace

void forgetMeasures() {
  const SPoint position = flagsCpu.position;
  flagsCpu = {};
  flagsCpu.position = position;
  measuredMotion.reset();
  lackedMemory = false;
}

void restoreReference() {
  if (theSorImageTemp == nullptr || theSorImageScale == nullptr) return;
  std::memcpy(theSorImageTemp, theSorImageScale,
              planeSize(imgScaleRow, imgScaleCol, theSorImageInfoCpu.channels));
}

std::optional<int> motionOfCall() { return measuredMotion; }

void setMotionOfCall(int motion) { measuredMotion = motion; }

bool lackedMemoryInCall() { return lackedMemory; }

void noteLackOfMemoryInCall() { lackedMemory = true; }

}  // namespace framequilt
