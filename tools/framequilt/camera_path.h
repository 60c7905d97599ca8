// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <opencv2/core/types.hpp>
#include <vector>

namespace framequilt::tool {

enum class PathShape {
  kSerpentine,  ///< Rows of steps, every other one backwards, until the scene ends.
  kDrift        ///< Steps whose direction changes; may pass over places again, so it never ends.
};

struct PathOptions {
  PathShape shape = PathShape::kSerpentine;
  int frames = 20;  ///< At most.
  cv::Size frame{640, 480};
  /// Fractions, 0 to below 1, that a frame may share with the one before: 1 - offset / side of the
  /// frame, both along the direction in which the camera moved farther.
  double lowestOverlap = 0.6;
  double highestOverlap = 0.6;
  bool subpixel = false;  ///< Places are in hundredths of a pixel, else in whole pixels.
};

/// The longest steps, in whole pixels rounded up, to the side and down.
cv::Size longestStep(const PathOptions& options);

/// True when the scene holds a frame and, in one direction at least, the longest step beside it.
bool holdsStep(cv::Size scene, const PathOptions& options);

/// Where the top-left corners of the frames lie in a scene that holds a step. All frames lie inside
/// the scene. The same for a seed on every machine.
std::vector<cv::Point2d> cameraPath(cv::Size scene, const PathOptions& options, std::uint32_t seed);

}  // namespace framequilt::tool
