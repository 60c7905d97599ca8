// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/camera_path.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <tuple>

using framequilt::tool::cameraPath;
using framequilt::tool::holdsStep;
using framequilt::tool::longestStep;
using framequilt::tool::PathOptions;
using framequilt::tool::PathShape;

namespace {

const cv::Size kScene(400, 300);

PathOptions pathOf(PathShape shape, double low, double high, bool subpixel = false) {
  PathOptions options;
  options.shape = shape;
  options.frames = 300;
  options.frame = {64, 48};
  options.lowestOverlap = low;
  options.highestOverlap = high;
  options.subpixel = subpixel;
  return options;
}

struct Share {
  double overlap;   ///< Along the direction of the larger offset.
  double rounding;  ///< What half a tick of the path makes of it.
};

/// By the definition, with the direction of the larger offset in pixels.
Share overlapOf(cv::Point2d from, cv::Point2d to, const PathOptions& options) {
  const double x = std::abs(to.x - from.x);
  const double y = std::abs(to.y - from.y);
  const double side = x >= y ? options.frame.width : options.frame.height;
  return {1 - std::max(x, y) / side, 0.5 / side / (options.subpixel ? 100 : 1)};
}

bool isMultiple(double value, double unit) {
  return std::abs(value / unit - std::round(value / unit)) < 1e-9;
}

/// Shape, subpixel and seed.
class Paths : public testing::TestWithParam<std::tuple<PathShape, bool, std::uint32_t>> {
 protected:
  PathOptions options(double low, double high) const {
    return pathOf(std::get<0>(GetParam()), low, high, std::get<1>(GetParam()));
  }
  std::vector<cv::Point2d> path(const PathOptions& options, cv::Size scene = kScene) const {
    return cameraPath(scene, options, std::get<2>(GetParam()));
  }
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(All, Paths,
                         testing::Combine(testing::Values(PathShape::kSerpentine,
                                                          PathShape::kDrift),
                                          testing::Bool(), testing::Values(1U, 2U, 77U)));

TEST_P(Paths, EveryStepHasAnOverlapOfTheRange) {
  for (const auto& [low, high] :
       {std::pair(0.6, 0.6), std::pair(0.3, 0.8), std::pair(0.0, 0.0), std::pair(0.85, 0.95)}) {
    const PathOptions asked = options(low, high);
    const auto found = path(asked);
    ASSERT_GE(found.size(), 10U);
    for (std::size_t i = 1; i < found.size(); ++i) {
      const auto [overlap, rounding] = overlapOf(found[i - 1], found[i], asked);
      // A range that holds a whole number of ticks needs no rounding.
      const double tolerance = low == high ? rounding + 1e-9 : 1e-9;
      EXPECT_GE(overlap, low - tolerance) << "step to frame " << i;
      EXPECT_LE(overlap, high + tolerance) << "step to frame " << i;
    }
  }
}

TEST_P(Paths, ARangeIsUsedFromEndToEnd) {
  const PathOptions asked = options(0.5, 0.75);
  const auto found = path(asked);
  std::vector<double> overlaps;
  for (std::size_t i = 1; i < found.size(); ++i) {
    overlaps.push_back(overlapOf(found[i - 1], found[i], asked).overlap);
  }
  EXPECT_LT(*std::min_element(overlaps.begin(), overlaps.end()), 0.55);
  EXPECT_GT(*std::max_element(overlaps.begin(), overlaps.end()), 0.70);
}

TEST_P(Paths, TheLargerOffsetIsAlsoTheLargerShareOfTheFrame) {
  const PathOptions asked = options(0.4, 0.7);
  const auto found = path(asked);
  for (std::size_t i = 1; i < found.size(); ++i) {
    const double x = std::abs(found[i].x - found[i - 1].x);
    const double y = std::abs(found[i].y - found[i - 1].y);
    const double larger = x >= y ? x / asked.frame.width : y / asked.frame.height;
    EXPECT_LE(std::max(x / asked.frame.width, y / asked.frame.height), larger + 1e-9);
  }
}

TEST_P(Paths, FramesStayInsideTheScene) {
  const PathOptions asked = options(0.3, 0.8);
  // The smallest scenes there are, narrow ones, and a large one.
  for (const cv::Size scene : {cv::Size(109, 82), cv::Size(64, 82), cv::Size(109, 48),
                               cv::Size(400, 50), cv::Size(66, 300), kScene}) {
    ASSERT_TRUE(holdsStep(scene, asked));
    const auto found = path(asked, scene);
    EXPECT_GE(found.size(), 2U);
    for (const cv::Point2d& place : found) {
      EXPECT_GE(place.x, 0);
      EXPECT_GE(place.y, 0);
      EXPECT_LE(place.x, scene.width - asked.frame.width);
      EXPECT_LE(place.y, scene.height - asked.frame.height);
    }
  }
}

TEST_P(Paths, PlacesAreInWholePixelsOrHundredths) {
  const PathOptions asked = options(0.5, 0.7);
  bool anyFraction = false;
  for (const cv::Point2d& place : path(asked)) {
    EXPECT_TRUE(isMultiple(place.x, asked.subpixel ? 0.01 : 1));
    EXPECT_TRUE(isMultiple(place.y, asked.subpixel ? 0.01 : 1));
    anyFraction = anyFraction || !isMultiple(place.x, 1);
  }
  EXPECT_EQ(anyFraction, asked.subpixel);
}

TEST_P(Paths, TheSeedAloneDecides) {
  const PathOptions asked = options(0.5, 0.7);
  EXPECT_EQ(path(asked), path(asked));
  EXPECT_NE(path(asked), cameraPath(kScene, asked, std::get<2>(GetParam()) + 1));
}

TEST(Serpentine, EveryOtherRowRunsBackwards) {
  const PathOptions options = pathOf(PathShape::kSerpentine, 0.5, 0.5);
  const auto path = cameraPath(kScene, options, 1);
  int row = 0;
  std::vector<std::set<bool>> forward(1);
  for (std::size_t i = 1; i < path.size(); ++i) {
    const cv::Point2d step = path[i] - path[i - 1];
    if (std::abs(step.y) > std::abs(step.x)) {
      ++row;
      forward.emplace_back();
    } else {
      forward.back().insert(step.x > 0);
    }
  }
  ASSERT_GE(row, 8);
  for (int i = 0; i <= row; ++i) {
    EXPECT_EQ(forward[static_cast<std::size_t>(i)], std::set<bool>{i % 2 == 0}) << "row " << i;
  }
}

TEST(Serpentine, ReachesAsFarAsTheSceneDoes) {
  const PathOptions options = pathOf(PathShape::kSerpentine, 0.5, 0.5);
  const auto path = cameraPath(kScene, options, 1);
  double right = 0;
  double bottom = 0;
  for (const cv::Point2d& place : path) {
    right = std::max(right, place.x + options.frame.width);
    bottom = std::max(bottom, place.y + options.frame.height);
  }
  EXPECT_GT(right, kScene.width - 32);  // No room for another step.
  EXPECT_GT(bottom, kScene.height - 24);
  EXPECT_LT(path.size(), static_cast<std::size_t>(options.frames));
}

TEST(Serpentine, ItsRowsAreUnevenByAFewPixels) {
  const auto path = cameraPath({4000, 300}, pathOf(PathShape::kSerpentine, 0.5, 0.5), 1);
  std::set<double> ys;
  for (std::size_t i = 0; i < 30; ++i) ys.insert(path[i].y);
  EXPECT_GE(ys.size(), 4U);
  EXPECT_LE(*ys.rbegin() - *ys.begin(), 8);
}

TEST(Serpentine, EndsWithTheFramesAskedFor) {
  PathOptions options = pathOf(PathShape::kSerpentine, 0.5, 0.5);
  options.frames = 7;
  EXPECT_EQ(cameraPath(kScene, options, 1).size(), 7U);
}

TEST(Drift, NeverEndsAndTurnsOften) {
  const PathOptions options = pathOf(PathShape::kDrift, 0.5, 0.7);
  for (const cv::Size scene : {kScene, cv::Size(64 + 32, 48), cv::Size(64, 48 + 24)}) {
    EXPECT_EQ(cameraPath(scene, options, 5).size(), 300U);
  }
  const auto path = cameraPath(kScene, options, 5);
  int turns = 0;
  for (std::size_t i = 2; i < path.size(); ++i) {
    const cv::Point2d before = path[i - 1] - path[i - 2];
    const cv::Point2d step = path[i] - path[i - 1];
    if ((std::abs(before.x) > std::abs(before.y)) != (std::abs(step.x) > std::abs(step.y))) ++turns;
  }
  EXPECT_GT(turns, 60);
}

TEST(Drift, WandersOverTheWholeScene) {
  std::set<std::pair<int, int>> visited;
  for (const cv::Point2d& place : cameraPath(kScene, pathOf(PathShape::kDrift, 0.5, 0.7), 5)) {
    visited.insert({static_cast<int>(place.x / 112.1), static_cast<int>(place.y / 84.1)});
  }
  EXPECT_EQ(visited.size(), 9U);
}

TEST(CameraPath, AStepFitsIntoOneDirectionAtLeast) {
  const PathOptions options = pathOf(PathShape::kDrift, 0.5, 0.9);
  EXPECT_EQ(longestStep(options), cv::Size(32, 24));
  EXPECT_TRUE(holdsStep({96, 48}, options));
  EXPECT_TRUE(holdsStep({64, 72}, options));
  EXPECT_FALSE(holdsStep({95, 71}, options));
  EXPECT_FALSE(holdsStep({63, 400}, options));
  EXPECT_FALSE(holdsStep({400, 47}, options));
}

TEST(CameraPath, AStepOfTicksIsRoundedUpToPixels) {
  EXPECT_EQ(longestStep(pathOf(PathShape::kDrift, 0.6, 0.6)), cv::Size(26, 19));
  EXPECT_EQ(longestStep(pathOf(PathShape::kDrift, 0.6, 0.6, true)), cv::Size(26, 20));
}
