// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "scenes.h"
#include "tools/framequilt/engine_lines.h"
#include "tools/framequilt/run_driver.h"

using framequilt::tool::EngineLines;
using framequilt::tool::Outcome;
using framequilt::tool::RunDriver;
using Verdict = framequilt::tool::Outcome::Verdict;

namespace {

constexpr int kRows = 240;
constexpr int kCols = 1200;
constexpr int kStep = 560;
constexpr int kFrames = 7;

/// Frames that walk over a strip from right to left, or from left to right.
std::vector<cv::Mat> walk(bool leftwards) {
  const cv::Mat scene = texture(kRows, kCols + kStep * (kFrames - 1));
  std::vector<cv::Mat> frames;
  for (int i = 0; i < kFrames; ++i) {
    const int at = leftwards ? kFrames - 1 - i : i;
    frames.push_back(scene(cv::Rect(at * kStep, 0, kCols, kRows)).clone());
  }
  return frames;
}

/// Each frame lies a step further than the one before, within the grid of corners.
void expectSteps(const std::vector<cv::Mat>& frames, int step) {
  const EngineLines quiet(false);
  RunDriver run({kRows, kCols, 1});
  run.offer(frames[0]);
  for (int i = 1; i < kFrames; ++i) {
    const Outcome outcome = run.offer(frames[static_cast<std::size_t>(i)]);
    ASSERT_EQ(outcome.verdict, Verdict::kJoined) << "frame " << i;
    EXPECT_LE(std::abs(outcome.placement.x - i * step), 2) << "frame " << i;
    EXPECT_LE(std::abs(outcome.placement.y), 2) << "frame " << i;
  }
  EXPECT_LE(std::abs(run.mosaic().cols - (kCols + kStep * (kFrames - 1))), 2);
}

}  // namespace

// The mosaic of 6000 columns begins with the first frame at column 2400: the sixth frame is the
// first to leave it.
TEST(RunDriverGrowth, PlacementsAreSteadyWhileTheMosaicGrowsLeft) {
  expectSteps(walk(true), -kStep);
}

TEST(RunDriverGrowth, PlacementsAreSteadyWhileTheMosaicGrowsRight) {
  expectSteps(walk(false), kStep);
}
