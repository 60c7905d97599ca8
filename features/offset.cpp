// SPDX-License-Identifier: Apache-2.0
#include "features/offset.h"

#include <cmath>
#include <cstddef>
#include <utility>

#include "features/consensus.h"
#include "features/matching.h"
#include "imaging/pixel_math.h"

namespace framequilt {
namespace {

/// A nearest descriptor has to be closer than this share of the second nearest.
constexpr float kRatio = 0.98F;
/// Fewer agreeing pairs do not make an offset.
constexpr std::size_t kFewestPairs = 11;

struct MatchedPoints {
  std::vector<SPoint> one, two;

  bool empty() const { return one.empty() || two.empty(); }
};

MatchedPoints match(const DescribedCorners& one, const DescribedCorners& two, float* distances,
                    int length) {
  std::vector<SPoint> matches;
  calacDistanceIndexFun(one.descriptors, two.descriptors, distances, kRatio,
                        static_cast<int>(one.points.size()), length,
                        static_cast<int>(two.points.size()), length, matches);
  MatchedPoints matched;
  roughMatchSPoint(one.points, two.points, std::move(matches), matched.one, matched.two);
  return matched;
}

}  // namespace

bool offsetOfCorners(const DescribedCorners& reference, const DescribedCorners& newFrame,
                     float* distances, int length, int rows, int cols, int& dx, int& dy,
                     int& matchCount) {
  MatchedPoints matched = match(reference, newFrame, distances, length);
  if (matched.empty()) return false;

  MatchedPoints agreeing;
  float fx = 0.0F;
  float fy = 0.0F;
  ransacMatchSPointArrayFun(std::move(matched.one), std::move(matched.two), agreeing.one,
                            agreeing.two, fx, fy);
  if (agreeing.empty()) return false;
  if (!(std::fabs(fx) < static_cast<float>(cols))) return false;
  if (!(std::fabs(fy) < static_cast<float>(rows))) return false;

  matchCount = static_cast<int>(agreeing.one.size());
  if (agreeing.one.size() < kFewestPairs) return false;
  dx = truncateToInt(fx);
  dy = truncateToInt(fy);
  return true;
}

}  // namespace framequilt
