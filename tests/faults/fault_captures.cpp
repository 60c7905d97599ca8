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
  const Scene scene(400, 560, channels, 12);
  std::vector<Frame> frames =
      walk(scene, 150, 200, {{20, 100}, {80, 100}, {140, 120}, {190, 160}});
  frames.insert(frames.end() - 1, noiseFrame(150, 200, channels, 5));
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
      // 6000 rows are in a new mosaic: ten are free below the first frame, which the second one
      // leaves four of.
      capture("Growing", 1, 0,
              walk(Scene(6010, 200, 1, 7), 5980, 96, {{0, 0}, {30, 6}, {60, 14}, {90, 16}}))};
  return captures;
}

std::vector<FaultCapture> allCaptures() {
  std::vector<FaultCapture> all = smallCaptures();
  all.insert(all.end(), largeCaptures().begin(), largeCaptures().end());
  return all;
}
