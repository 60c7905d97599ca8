// SPDX-License-Identifier: Apache-2.0
#include "opencl/OpenclJointRun.h"

#include <algorithm>
#include <vector>

#include "features/corner_budget.h"
#include "framequilt/tuning.h"
#include "imaging/pixel_math.h"
#include "imaging/run_buffer.h"
#include "interface/debug.h"
#include "interface/report.h"
#include "opencl/OpenclJoint.h"
#include "opencl/OpenclJointCorners.h"
#include "opencl/OpenclJointObjects.h"
#include "opencl/OpenclJointReleased.h"
#include "opencl/OpenclJointState.h"

namespace {

using framequilt::debug;
using framequilt::drop;
using framequilt::ensure;
using framequilt::openclLaneOne;
using framequilt::openclLaneTwo;
using framequilt::planeSize;
using framequilt::report;

/// In the working directory; only for hosts that have not set `program` themselves.
constexpr const char* kKernelFile = "cl.bin";

/// Since when there is something to clean up: from the beginning of a start until it has succeeded
/// or has been cleaned up after.
bool startUnfinished = false;

/// Gives a handle back and leaves the global as it is.
template <class Handle, class Release>
void giveBack(Handle handle, Release release) {
  if (handle == nullptr) return;
  release(handle);
  framequilt::noteReleased(handle);
}

bool openDevice() {
  if (context == nullptr) context = CreateContext(&device);
  if (context == nullptr) {
    debug("commandQueue failed");
    return false;
  }
  if (commandQueue == nullptr) commandQueue = CreateCommandQueue(context, device);
  if (commandQueue == nullptr) {
    debug("commandQueue failed");
    giveBack(program, clReleaseProgram);
    giveBack(context, clReleaseContext);
    return false;
  }
  if (program == nullptr) program = CreateProgram(context, device, kKernelFile);
  if (program == nullptr) {
    giveBack(commandQueue, clReleaseCommandQueue);
    giveBack(context, clReleaseContext);
    return false;
  }
  return true;
}

bool startThreads() {
  one_pidCLFlag = false;
  two_pidCLFlag = false;
  if (!openclLaneOne().start(findHarrisCornerCoordianteThreadClOne)) {
    report("ALG_template_model_init_process_pthread faled");
    return false;
  }
  one_pidCLFlag = true;
  if (!openclLaneTwo().start(findHarrisCornerCoordianteThreadClTwo)) {
    report("ALG_search_match_init_process_pthread faled");
    return false;
  }
  two_pidCLFlag = true;
  return true;
}

/// Ends the threads of a run that was not stopped. Their flags are those of the next start.
void endThreadsSilently() {
  openclLaneOne().dismiss();
  openclLaneTwo().dismiss();
  if (one_pidCLFlag) openclLaneOne().join();
  if (two_pidCLFlag) openclLaneTwo().join();
  one_pidCLFlag = false;
  two_pidCLFlag = false;
}

void deriveLimits(int cornerBudget) {
  pvalueCL = cornerBudget;
  numpointCL = framequilt::wantedCorners(pvalueCL, scaleCL);
  num5000CL = framequilt::candidateCap(numpointCL);
}

void describeFrames(int rows, int cols, int channels) {
  for (imgInfo* info : {&theSorImageInfoCL, &thedestImageInfoCL}) {
    info->channels = channels;
    info->rows = rows;
    info->cols = cols;
  }
}

void releaseHostMemory() {
  const auto dropAll = [](auto*&... buffers) { (drop(buffers), ...); };
  dropAll(thedestImage_preCL, DescribleSymbolOneCL, DescribleSymbolTwoCL, dist_valueCL,
          FeatureDescriberOneCL, FeatureDescriberTwoCL, theSorImageTempCL, OverlapImageOneCL,
          OverlapImageTwoCL, CoonervalueOneCL, CoonervalueTwoCL, resiz_OneCL, resiz_TwoCL,
          resiz_OneBoundCL, resiz_TwoBoundCL, resiz_OneBoundFilterCL, resiz_TwoBoundFilterCL);
  mosaicImgCL.release();
  std::vector<SPoint>().swap(HarrissCornerSPointOneArrayCL);
  std::vector<SPoint>().swap(HarrissCornerSPointTwoArrayCL);
  framequilt::keepDropped(false);
}

void joinAndReport(framequilt::CornerLane& lane, bool& flag, const char* success,
                   const char* failure) {
  if (!flag) return;
  flag = false;
  report(lane.join() ? success : failure);
}

}  // namespace

bool initJointCL(int rows, int cols, int channels, int cornerBudget, int maxRow, int maxCol) {
  debug("stitchingImageOffsetCL in11111111111111111111111111111");
  endThreadsSilently();
  framequilt::forgetReleasedHandles();
  startUnfinished = true;
  startOneThFlagCL = true;
  startTwoThFlagCL = true;
  report("44444444444444444444");
  if (!mosaicImgCL.empty()) mosaicImgCL.release();
  // The kernels are written for these.
  if (channels != 1 && channels != 3) return false;

  if (!openDevice() || !startThreads()) return false;
  imgScaleRowCL = rows / scaleCL;
  imgScaleColCL = cols / scaleCL;
  CreateMemObjectsImg(context, imgScaleRowCL, imgScaleColCL, channels);
  if (!createKernel(program)) {
    debug("clCreateKernel createKernel failed");
    return false;
  }

  framequilt::keepDropped(true);
  deriveLimits(cornerBudget);
  describeFrames(rows, cols, channels);
  MAXROWCL = std::min(MAXROWCL, maxRow);
  MAXCOLCL = std::min(MAXCOLCL, maxCol);
  ensure(theSorImageTempCL, planeSize(imgScaleRowCL, imgScaleColCL, channels));
  ensure(thedestImage_preCL, planeSize(imgScaleRowCL, imgScaleColCL, channels));
  flagsCL = {};
  outbordLeftCL = {};
  outbordRightCL = {};
  startUnfinished = false;
  debug("init out");
  return true;
}

bool uinitJointCL() {
  framequilt::forgetReleasedHandles();
  Cleanup();
  openclLaneOne().dismiss();
  openclLaneTwo().dismiss();
  joinAndReport(openclLaneOne(), one_pidCLFlag, "pthread_join one_pidCL success",
                "pthread_join one_pidCL failed");
  joinAndReport(openclLaneTwo(), two_pidCLFlag, "pthread_join two_pidCL success",
                "pthread_join two_pidCL failed");
  releaseHostMemory();
  startUnfinished = false;
  report("mosaicImgCL");
  return true;
}

namespace framequilt {

void cleanUpFailedStartCL() {
  if (!startUnfinished) return;
  startUnfinished = false;
  forgetReleasedHandles();
  Cleanup();
  endThreadsSilently();
  releaseHostMemory();
}

}  // namespace framequilt
