// SPDX-License-Identifier: Apache-2.0
#include "cpu/offset_estimation.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "cpu/corner_lane.h"
#include "cpu/run_state.h"
#include "features/consensus.h"
#include "features/features_state.h"
#include "features/matching.h"
#include "framequilt/tuning.h"
#include "imaging/pixel_math.h"
#include "imaging/run_buffer.h"
#include "interface/report.h"

namespace {

using framequilt::drop;
using framequilt::ensure;
using framequilt::planeSize;

/// A nearest descriptor has to be closer than this share of the second nearest.
constexpr float kRatio = 0.98F;
/// Fewer agreeing pairs do not make an offset.
constexpr std::size_t kFewestPairs = 11;

struct MatchedPoints {
  std::vector<SPoint> one, two;

  bool empty() const { return one.empty() || two.empty(); }
};

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

/// Both images at once. Waits for both workers also when one fails: the other still reads the
/// images.
bool findCornersOfBoth() {
  framequilt::laneOne().request();
  framequilt::laneTwo().request();
  const bool one = framequilt::laneOne().await();
  const bool two = framequilt::laneTwo().await();
  return one && two;
}

MatchedPoints matchCorners() {
  std::vector<SPoint> matches;
  calacDistanceIndexFun(FeatureDescriber1, FeatureDescriber2, dist_valueCpu, kRatio,
                        static_cast<int>(HarrissCornerSPointOneArray.size()), demesion,
                        static_cast<int>(HarrissCornerSPointTwoArray.size()), demesion, matches);
  MatchedPoints points;
  roughMatchSPoint(HarrissCornerSPointOneArray, HarrissCornerSPointTwoArray, matches, points.one,
                   points.two);
  return points;
}

}  // namespace

bool imageMosaicFun(unsigned char* img1, unsigned char* img2, imgInfo info, int& dx, int& dy,
                    int& matchCount) {
  if (img1 == nullptr || img2 == nullptr) {
    framequilt::report("imageMosaicFun ptr is null");
    return false;
  }
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
  if (!findCornersOfBoth()) return false;

  const MatchedPoints matched = matchCorners();
  if (matched.empty()) return false;

  MatchedPoints agreeing;
  float fx = 0.0F;
  float fy = 0.0F;
  ransacMatchSPointArrayFun(matched.one, matched.two, agreeing.one, agreeing.two, fx, fy);
  if (agreeing.empty()) return false;
  if (!(std::fabs(fx) < static_cast<float>(info.cols))) return false;
  if (!(std::fabs(fy) < static_cast<float>(info.rows))) return false;

  matchCount = static_cast<int>(agreeing.one.size());
  if (agreeing.one.size() < kFewestPairs) return false;
  dx = framequilt::truncateToInt(fx);
  dy = framequilt::truncateToInt(fy);
  return true;
}
