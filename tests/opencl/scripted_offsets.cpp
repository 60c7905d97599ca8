// SPDX-License-Identifier: Apache-2.0
#include "tests/opencl/scripted_offsets.h"

#include <utility>

#include "cpu/offset_estimation.h"
#include "opencl/OpenclJointOffset.h"

namespace {

ScriptedOffset script;
std::function<void(unsigned char*, unsigned char*)> inEstimation;

}  // namespace

void scriptOffset(ScriptedOffset offset) { script = offset; }

void whileEstimating(std::function<void(unsigned char*, unsigned char*)> happens) {
  inEstimation = std::move(happens);
}

// These take the place of the library's functions: a program's definition goes before a shared
// library's.

bool imageMosaicFun(unsigned char* reference, unsigned char* frame, imgInfo /*info*/, int& dx,
                    int& dy, int& matchCount) {
  if (inEstimation) inEstimation(reference, frame);
  matchCount = script.matchNum;
  if (!script.found) return false;
  dx = script.dx;
  dy = script.dy;
  return true;
}

bool imageMosaicFunCL(unsigned char* first, unsigned char* second, imgInfo info, int& dx, int& dy,
                      int& count) {
  return imageMosaicFun(first, second, info, dx, dy, count);
}
