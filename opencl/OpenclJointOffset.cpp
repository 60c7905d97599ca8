// SPDX-License-Identifier: Apache-2.0
#include "opencl/OpenclJointOffset.h"

#include <algorithm>
#include <cstddef>

#include "features/offset.h"
#include "framequilt/tuning.h"
#include "imaging/pixel_math.h"
#include "imaging/run_buffer.h"
#include "interface/report.h"
#include "opencl/OpenclJointCallRecord.h"
#include "opencl/OpenclJointCorners.h"
#include "opencl/OpenclJointState.h"

namespace {

using framequilt::CornerLane;
using framequilt::drop;
using framequilt::ensure;
using framequilt::planeSize;

void setCornerSearchSize() {
  if (scaleCL != 1 && scaleCL != 2) return;
  pointdownscalCL = 2;
  gray_pointdownscal_rowCL = imgScaleRowCL / 2;
  gray_pointdownscal_colCL = imgScaleColCL / 2;
}

void publish(unsigned char* first, unsigned char* second, imgInfo info) {
  clSorImageOneIn = first;
  clDestImageTwoIn = second;
  InfoThCL.channels = info.channels;
  InfoThCL.rows = info.rows;
  InfoThCL.cols = info.cols;
  HarrissCornerSPointOneArrayCL.clear();
  HarrissCornerSPointTwoArrayCL.clear();
}

/// Both images at once. A thread that gave up is noticed; the other one is waited for all the same,
/// since it still reads its image.
bool findCornersOfBoth() {
  CornerLane& one = framequilt::openclLaneOne();
  CornerLane& two = framequilt::openclLaneTwo();
  one.request();
  two.request();
  const bool oneDone = one.await(CornerLane::Abandoned::kLeftRaised);
  const bool twoDone = two.await(CornerLane::Abandoned::kLeftRaised);
  if (one.lackedMemory() || two.lackedMemory()) framequilt::noteLackOfMemoryInCallCL();
  return oneDone && twoDone;
}

}  // namespace

bool imageMosaicFunCL(unsigned char* first, unsigned char* second, imgInfo info, int& dx, int& dy,
                      int& count) {
  if (first == nullptr || second == nullptr) {
    framequilt::report("ptr is null");
    return false;
  }
  const framequilt::AtScopeEnd release([] {
    drop(FeatureDescriberOneCL);
    drop(FeatureDescriberTwoCL);
    drop(dist_valueCL);
  });
  ensure(dist_valueCL, static_cast<std::size_t>(std::max(0, numpointCL)));
  ensure(FeatureDescriberOneCL, planeSize(numpointCL, demesionCL));
  ensure(FeatureDescriberTwoCL, planeSize(numpointCL, demesionCL));
  setCornerSearchSize();

  publish(first, second, info);
  framequilt::report("imageMosaicFun in");
  if (!findCornersOfBoth()) return false;
  return framequilt::offsetOfCorners({HarrissCornerSPointOneArrayCL, FeatureDescriberOneCL},
                                     {HarrissCornerSPointTwoArrayCL, FeatureDescriberTwoCL},
                                     dist_valueCL, demesionCL, info.rows, info.cols, dx, dy, count);
}
