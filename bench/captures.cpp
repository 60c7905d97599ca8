// SPDX-License-Identifier: Apache-2.0
#include "bench/captures.h"

#include <algorithm>

#include "tools/framequilt/generated_scene.h"
#include "tools/framequilt/simulation.h"

namespace framequilt::bench {
namespace {

constexpr double kLowestOverlap = 0.73;
constexpr double kHighestOverlap = 0.77;
constexpr double kNoise = 2;  // Gray levels.

/// The library starts with a mosaic of that side, the first frame in its middle.
constexpr int kFirstMosaicSide = 6000;
constexpr int kShortestRow = 7;  // Frames.

/// So many that a row of them leaves the first mosaic.
int framesInRow(cv::Size frame, int step) {
  const int toEdge = std::max(0, (kFirstMosaicSide - frame.width) / 2);
  return std::max(kShortestRow, toEdge / step + 3);
}

}  // namespace

Capture simulateScan(cv::Size frame, int frames) {
  tool::SimulationOptions options;
  options.path.shape = tool::PathShape::kSerpentine;
  options.path.frames = frames;
  options.path.frame = frame;
  options.path.lowestOverlap = kLowestOverlap;
  options.path.highestOverlap = kHighestOverlap;
  options.noise = kNoise;

  const cv::Size step = tool::longestStep(options.path);
  const int inRow = std::min(frames, framesInRow(frame, step.width));
  // The last row may be cut short; a row begins up to 8 pixels beside its line.
  const int rows = (frames + inRow - 1) / inRow;
  const cv::Size scene(frame.width + (inRow - 1) * step.width + 8,
                       frame.height + rows * step.height + 8);
  const tool::SimulatedCapture simulated(tool::generateScene(scene, /*seed=*/1), options);

  Capture capture;
  for (int i = 0; i < simulated.frames(); ++i) {
    capture.frames.push_back(simulated.frame(i));
    capture.truth.push_back(simulated.truth(i));
  }
  return capture;
}

}  // namespace framequilt::bench
