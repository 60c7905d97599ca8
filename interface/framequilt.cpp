// SPDX-License-Identifier: Apache-2.0
#include "framequilt/framequilt.h"

#include "cpu/frame_driver.h"
#include "cpu/stitching_run.h"
#include "interface/debug.h"
#include "interface/run_modes.h"
#include "opencl/OpenclJointFrame.h"
#include "opencl/OpenclJointRun.h"

bool openclDeviceFlag = false;
bool cudaDeviceFlag = false;

using framequilt::debug;

bool initJoint(int rows, int cols, int channels, int cornerBudget, int maxRow, int maxCol,
               int stitchMode, int staticDynamicFlag) {
  framequilt::setRunModes(stitchMode, staticDynamicFlag);
  openclDeviceFlag = initJointCL(rows, cols, channels, cornerBudget, maxRow, maxCol);
  if (openclDeviceFlag) {
    // The stop ends the run of its own backend alone.
    framequilt::giveWayCpu();
    return true;
  }
  framequilt::cleanUpFailedStartCL();
  return initJointCpu(rows, cols, channels, cornerBudget, maxRow, maxCol);
}

int stichingImagedJoint(unsigned char* src, unsigned char* dest, int frameIndex, int frameScale,
                        int motorDx, int motorDy, bool motorFlag, SPoint& outLeft, SPoint& outRight,
                        cv::Mat& outMosaic, stitchflags& outFlags) {
  debug(openclDeviceFlag ? "stichingImagedJointCL in" : "stichingImagedJointCpu in");
  const auto stitch = openclDeviceFlag ? stichingImagedJointCL : stichingImagedJointCpu;
  const int result = stitch(src, dest, frameIndex, frameScale, motorDx, motorDy, motorFlag, outLeft,
                            outRight, outMosaic, outFlags);
  if (result == -1) {
    debug(openclDeviceFlag ? "stichingImagedJointCL failed" : "stichingImagedJointCpu failed");
  }
  return result;
}

bool uinitJoint() {
  if (openclDeviceFlag) {
    uinitJointCL();
  } else {
    framequilt::cleanUpFailedStartCL();
    uninitJointCpu();
  }
  cudaDeviceFlag = false;
  openclDeviceFlag = false;
  return true;
}
