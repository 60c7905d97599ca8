// SPDX-License-Identifier: Apache-2.0
#include "cpu/stitching_run.h"

#include <vector>

#include "cpu/corner_lane.h"
#include "cpu/corner_worker.h"
#include "cpu/run_state.h"
#include "cpu/working_buffers.h"
#include "features/corner_budget.h"
#include "features/features_state.h"
#include "framequilt/tuning.h"
#include "imaging/assistant.h"
#include "imaging/gray.h"
#include "imaging/pixel_math.h"
#include "imaging/run_buffer.h"
#include "interface/report.h"

namespace {

using framequilt::laneOne;
using framequilt::laneTwo;

bool hasWorkers() { return one_pid != 0 || two_pid != 0; }

/// Ends the workers of a run that was started and not stopped.
void stopFormerWorkers() {
  if (!hasWorkers()) return;
  framequilt::setLender(nullptr);
  laneOne().dismiss();
  laneTwo().dismiss();
  laneOne().join();
  laneTwo().join();
}

void releaseRun() {
  framequilt::releaseAllBuffers();
  std::vector<SPoint>().swap(HarrissCornerSPointOneArray);
  std::vector<SPoint>().swap(HarrissCornerSPointTwoArray);
  mosaicImgCpu.release();
}

void deriveSizes(int rows, int cols, int cornerBudget) {
  imgScaleRow = rows / scale;
  imgScaleCol = cols / scale;
  pvalue = cornerBudget;
  numpoint = framequilt::wantedCorners(pvalue, scale);
  num5000 = framequilt::candidateCap(numpoint);
}

void describeFrames(int rows, int cols, int channels) {
  for (imgInfo* info : {&theSorImageInfoCpu, &thedestImageInfoCpu}) {
    info->channels = channels;
    info->rows = rows;
    info->cols = cols;
  }
}

}  // namespace

bool initJointCpu(int rows, int cols, int channels, int cornerBudget, int maxRow, int maxCol) {
  stopFormerWorkers();
  framequilt::keepDropped(true);

  startOneThFlag = true;
  startTwoThFlag = true;
  RealImgRow = rows;
  RealImgCol = cols;
  if (!laneOne().start(findHarrisCornerCoordianteThreadOne)) {
    framequilt::report("ALG_template_model_init_process_pthread faled");
    return false;
  }
  if (!laneTwo().start(findHarrisCornerCoordianteThreadTwo)) {
    framequilt::report("ALG_search_match_init_process_pthread faled");
    return false;
  }

  deriveSizes(rows, cols, cornerBudget);
  describeFrames(rows, cols, channels);
  framequilt::fillGrayTables();
  MAXROW = maxRow;
  MAXCOL = maxCol;
  framequilt::allocateRunBuffers(rows, cols, channels);
  framequilt::setLender(&laneOne());
  flagsCpu = {};
  outbordLeftCpu = {};
  outbordRightCpu = {};
  return true;
}

bool uninitJointCpu() {
  framequilt::setLender(nullptr);
  laneOne().dismiss();
  laneTwo().dismiss();
  framequilt::report(laneOne().join() ? "pthread_join model_pid success"
                                      : "pthread_join model_pid failed");
  framequilt::report(laneTwo().join() ? "pthread_join match_pid success"
                                      : "pthread_join match_pid failed");
  releaseRun();
  framequilt::keepDropped(false);
  return true;
}

void framequilt::giveWayCpu() {
  if (!hasWorkers()) return;
  stopFormerWorkers();
  releaseRun();
}
