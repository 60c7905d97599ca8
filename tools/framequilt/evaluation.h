// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core/types.hpp>
#include <optional>
#include <vector>

namespace framequilt::tool {

/// What a run made of one frame, and where the frame was taken.
struct EvaluatedFrame {
  int number;                            ///< What the frame is called in the result.
  std::optional<cv::Point2d> placement;  ///< In pixels from any origin; none: not joined.
  cv::Point2d truth;                     ///< In pixels from any origin.
};

/// Nearest ranks of distances in pixels.
struct ErrorSpread {
  double median;
  double p95;
  double max;
};

/// How far a run's placements are from the truth. Placements and truth each count from their place
/// of the first joined frame. Nothing is known of errors with fewer than two joined frames.
struct Evaluation {
  int frames = 0;
  int joined = 0;
  /// Between a joined frame and the joined one before it: error of the offset.
  std::optional<ErrorSpread> step;
  std::vector<int> misplaced;  ///< Numbers of the frames whose step is off by more than kMisplaced.
  std::optional<double> drift;           ///< Error of the last joined frame's place.
  std::optional<ErrorSpread> placement;  ///< Of all joined frames but the first.

  static constexpr double kMisplaced = 4;  ///< Pixels.

  double joinedPercent() const { return frames == 0 ? 0 : 100.0 * joined / frames; }
};

/// \param frames  In the order in which they were placed.
Evaluation evaluatePlacements(const std::vector<EvaluatedFrame>& frames);

}  // namespace framequilt::tool
