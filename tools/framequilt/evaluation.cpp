// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/evaluation.h"

#include <algorithm>
#include <cmath>

#include "tools/framequilt/nearest_rank.h"

namespace framequilt::tool {
namespace {

/// How much farther than in truth, or elsewhere, `frame` was placed from `origin`; both joined.
double errorFrom(const EvaluatedFrame& origin, const EvaluatedFrame& frame) {
  const cv::Point2d error = (*frame.placement - *origin.placement) - (frame.truth - origin.truth);
  return std::hypot(error.x, error.y);
}

std::optional<ErrorSpread> spread(std::vector<double> errors) {
  if (errors.empty()) return std::nullopt;
  std::sort(errors.begin(), errors.end());
  return ErrorSpread{nearestRank(errors, 50), nearestRank(errors, 95), errors.back()};
}

}  // namespace

Evaluation evaluatePlacements(const std::vector<EvaluatedFrame>& frames) {
  Evaluation result;
  std::vector<double> steps;
  std::vector<double> placements;
  const EvaluatedFrame* first = nullptr;
  const EvaluatedFrame* before = nullptr;
  for (const EvaluatedFrame& frame : frames) {
    ++result.frames;
    if (!frame.placement) continue;
    ++result.joined;
    if (first == nullptr) {
      first = &frame;
    } else {
      steps.push_back(errorFrom(*before, frame));
      placements.push_back(errorFrom(*first, frame));
      if (steps.back() > Evaluation::kMisplaced) result.misplaced.push_back(frame.number);
    }
    before = &frame;
  }
  if (!placements.empty()) result.drift = placements.back();
  result.step = spread(steps);
  result.placement = spread(placements);
  return result;
}

}  // namespace framequilt::tool
