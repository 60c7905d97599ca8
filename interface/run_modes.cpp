// SPDX-License-Identifier: Apache-2.0
#include "interface/run_modes.h"

#include "framequilt/framequilt.h"
#include "interface/debug.h"

int GStitchMode = 0, GstaticDynamicFlag = 0;

void framequilt::setRunModes(int stitchMode, int staticDynamicFlag) {
  GStitchMode = stitchMode;
  GstaticDynamicFlag = staticDynamicFlag;
  if (GStitchMode != 0) return;
  debug("0 == GStitchMainMode");
  if (GstaticDynamicFlag == 0) debug("0 == GstaticMainDynamicFlag");
}
