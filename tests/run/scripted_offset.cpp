// SPDX-License-Identifier: Apache-2.0
#include "tests/run/scripted_offset.h"

#include "cpu/offset_estimation.h"

namespace {

ScriptedOffset script;

}  // namespace

void scriptOffset(ScriptedOffset offset) { script = offset; }

// Takes the place of the library's function of this name: a program's definition goes before a
// shared library's.
bool imageMosaicFun(unsigned char* /*img1*/, unsigned char* /*img2*/, imgInfo /*info*/, int& dx,
                    int& dy, int& matchCount) {
  matchCount = script.matchNum;
  if (!script.found) return false;
  dx = script.dx;
  dy = script.dy;
  return true;
}
