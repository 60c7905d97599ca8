// SPDX-License-Identifier: Apache-2.0
#include "framequilt/framequilt.h"

#include "cpu/frame_driver.h"
#include "cpu/stitching_run.h"
#include "interface/debug.h"
#include "interface/run_modes.h"

bool openclDeviceFlag = false;
bool cudaDeviceFlag = false;

using framequilt::debug;

bool initJoint(int rows, int cols, int channels, int cornerBudget, int maxRow, int maxCol,
               int stitchMode, int staticDynamicFlag) {
  framequilt::setRunModes(stitchMode, staticDynamicFlag);
  openclDeviceFlag = false;
  return initJointCpu(rows, cols, channels, cornerBudget, maxRow, maxCol);
}

int stichingImagedJoint(unsigned char* src, unsigned char* dest, int frameIndex, int frameScale,
                        int motorDx, int motorDy, bool motorFlag, SPoint& outLeft, SPoint& outRight,
                        cv::Mat& outMosaic, stitchflags& outFlags) {
  debug("stichingImagedJointCpu in");
  const int result = stichingImagedJointCpu(src, dest, frameIndex, frameScale, motorDx, motorDy,
                                            motorFlag, outLeft, outRight, outMosaic, outFlags);
  if (result == -1) debug("stichingImagedJointCpu failed");
  return result;
}

bool uinitJoint() {
  uninitJointCpu();
  cudaDeviceFlag = false;
  openclDeviceFlag = false;
  return true;
}
