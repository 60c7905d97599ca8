// SPDX-License-Identifier: Apache-2.0
#include "cpu/offset_estimation.h"

#include <algorithm>
#include <cstddef>

#include "cpu/call_record.h"
#include "cpu/corner_lane.h"
#include "cpu/corner_worker.h"
#include "cpu/run_state.h"
#include "features/features_state.h"
#include "features/offset.h"
#include "framequilt/tuning.h"
#include "imaging/gray.h"
#include "imaging/imaging_state.h"
#include "imaging/pixel_math.h"
#include "imaging/run_buffer.h"
#include "interface/report.h"

namespace {

using framequilt::drop;
using framequilt::ensure;
using framequilt::planeSize;

/// Smaller ones are done before a second thread has woken.
constexpr std::size_t kFewestPixelsToHelp = 150000;

void setCornerSearchSize() {
  if (scale != 1 && scale != 2) return;
  pointdownscal = 2;
  gray_pointdownscal_row = imgScaleRow / 2;
  gray_pointdownscal_col = imgScaleCol / 2;
}

void publish(unsigned char* img1, unsigned char* img2, imgInfo info) {
  SorImageOneIn = img1;
  DestImageTwoIn = img2;
  InfoTh.rows = info.rows;
  InfoTh.cols = info.cols;
  InfoTh.channels = info.channels;
  HarrissCornerSPointOneArray.clear();
  HarrissCornerSPointTwoArray.clear();
}

bool paysForHelp(const imgInfo& info) {
  return planeSize(info.rows, info.cols) >= kFewestPixelsToHelp;
}

/// Both images at once; `provideNewFrame` is called when the first worker has begun. Waits for both
/// workers also when one fails: the other still reads the images.
template <class Provide>
bool findCornersOfBoth(const imgInfo& info, Provide provideNewFrame) {
  // With large images this thread does the work of one of them: two workers that are woken together
  // often find themselves on one processor, one behind the other, while this one sleeps.
  const bool helps = paysForHelp(info);
  framequilt::laneOne().request();
  provideNewFrame();
  framequilt::laneTwo().request(/*wakes=*/!helps);
  if (helps) {
    framequilt::laneTwo().serveHere([] { return framequilt::findAndDescribeNewFrame(); });
    framequilt::laneOne().lookOutForEnd();
  }
  const bool one = framequilt::laneOne().await();
  const bool two = framequilt::laneTwo().await();
  if (framequilt::laneOne().lackedMemory() || framequilt::laneTwo().lackedMemory()) {
    framequilt::noteLackOfMemoryInCall();
  }
  return one && two;
}

template <class Provide>
bool offsetOf(unsigned char* img1, unsigned char* img2, const imgInfo& info, Provide provide,
              int& dx, int& dy, int& matchCount) {
  const framequilt::AtScopeEnd release([] {
    drop(FeatureDescriber1);
    drop(FeatureDescriber2);
    drop(dist_valueCpu);
  });
  ensure(FeatureDescriber1, planeSize(numpoint, demesion));
  ensure(FeatureDescriber2, planeSize(numpoint, demesion));
  ensure(dist_valueCpu, static_cast<std::size_t>(std::max(0, numpoint)));
  setCornerSearchSize();

  publish(img1, img2, info);
  framequilt::report("imageMosaicFun in");
  if (!findCornersOfBoth(info, provide)) return false;

  return framequilt::offsetOfCorners({HarrissCornerSPointOneArray, FeatureDescriber1},
                                     {HarrissCornerSPointTwoArray, FeatureDescriber2},
                                     dist_valueCpu, demesion, info.rows, info.cols, dx, dy,
                                     matchCount);
}

}  // namespace

bool imageMosaicFun(unsigned char* img1, unsigned char* img2, imgInfo info, int& dx, int& dy,
                    int& matchCount) {
  if (img1 == nullptr || img2 == nullptr) {
    framequilt::report("imageMosaicFun ptr is null");
    return false;
  }
  return offsetOf(
      img1, img2, info, [] {}, dx, dy, matchCount);
}

namespace framequilt {

bool paysToCopyBeside(const imgInfo& info) noexcept {
  return info.channels == 3 && paysForHelp(info);
}

bool offsetWhileCopying(unsigned char* img1, const unsigned char* frame, unsigned char* img2,
                        imgInfo info, int& dx, int& dy, int& matchCount) {
  const AtScopeEnd forget([] { setNewFrameIsGray(false); });
  const auto copy = [&] {
    copyAndToGray(frame, planeSize(info.rows, info.cols), img2, resiz_Two);
    setNewFrameIsGray(true);
  };
  return offsetOf(img1, img2, info, copy, dx, dy, matchCount);
}

}  // namespace framequilt
