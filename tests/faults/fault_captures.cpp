// SPDX-License-Identifier: Apache-2.0
#include "tests/faults/fault_captures.h"

namespace {

FaultCapture capture(const std::string& name, int stitchMode, int staticDynamicFlag,
                     std::vector<Frame> frames) {
  FaultCapture made{name, RunSettings::forFrame(frames.front()), std::move(frames)};
  made.settings.stitchMode = stitchMode;
  made.settings.staticDynamicFlag = staticDynamicFlag;
  return made;
}

std::vector<Frame> walk(const Scene& scene, int rows, int cols, const std::vector<SPoint>& path) {
  std::vector<Frame> frames;
  for (const SPoint& corner : path) frames.push_back(scene.cut(corner.x, corner.y, rows, cols));
  return frames;
}

/// Joined, refused, joined.
std::vector<Frame> smallFrames(int channels) {
  std::vector<Frame> frames = walk(Scene(560, 900, channels, 12), 240, 320,
                                   {{20, 100}, {120, 100}, {200, 140}, {280, 180}});
  frames.insert(frames.end() - 1, noiseFrame(240, 320, channels, 5));
  return frames;
}

}  // namespace

const std::vector<FaultCapture>& smallCaptures() {
  static const std::vector<FaultCapture> captures = {
      capture("MotionStaticGray", 1, 0, smallFrames(1)),
      capture("MotionDynamicGray", 1, 1, smallFrames(1)),
      capture("OverlapStaticGray", 0, 0, smallFrames(1)),
      capture("OverlapDynamicColour", 0, 1, smallFrames(3))};
  return captures;
}

const std::vector<FaultCapture>& largeCaptures() {
  static const std::vector<FaultCapture> captures = {
      capture("LargeColour", 1, 1,
              walk(Scene(500, 760, 3, 3), 330, 480, {{20, 20}, {140, 60}, {240, 100}})),
      // 1200 rows of a new mosaic are left below the first frame.
      capture("Growing", 1, 0,
              walk(Scene(5000, 200, 1, 7), 3600, 160, {{0, 0}, {10, 500}, {0, 1000}, {10, 1400}}))};
  return captures;
}

std::vector<FaultCapture> allCaptures() {
  std::vector<FaultCapture> all = smallCaptures();
  all.insert(all.end(), largeCaptures().begin(), largeCaptures().end());
  return all;
}
