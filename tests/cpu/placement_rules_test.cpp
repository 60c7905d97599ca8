// SPDX-License-Identifier: Apache-2.0
#include "cpu/placement_rules.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "tests/support/points.h"

namespace {

constexpr int kRows = 30, kCols = 40;

bool isHeld(const cv::Mat& mosaic, SPoint position, int channels = 1) {
  return framequilt::holdsFrame(mosaic, position, kRows, kCols, channels);
}

TEST(HoldsFrame, UpToEachEdgeAndNotBeyond) {
  const cv::Mat mosaic(100, 200, CV_8UC1);
  for (const SPoint inside : {SPoint{0, 0}, SPoint{160, 0}, SPoint{0, 70}, SPoint{160, 70}}) {
    EXPECT_TRUE(isHeld(mosaic, inside)) << inside.x << ", " << inside.y;
  }
  for (const SPoint outside : {SPoint{-1, 5}, SPoint{5, -1}, SPoint{161, 5}, SPoint{5, 71}}) {
    EXPECT_FALSE(isHeld(mosaic, outside)) << outside.x << ", " << outside.y;
  }
}

TEST(HoldsFrame, OnlyInPackedPixelsOfItsOwnKind) {
  const cv::Mat gray(100, 200, CV_8UC1), colour(100, 200, CV_8UC3);
  EXPECT_TRUE(isHeld(colour, {0, 0}, 3));
  EXPECT_FALSE(isHeld(colour, {0, 0}, 1));
  EXPECT_FALSE(isHeld(gray, {0, 0}, 3));
  EXPECT_FALSE(isHeld(gray(cv::Rect(0, 0, 150, 100)), {0, 0}));
  EXPECT_FALSE(isHeld({}, {0, 0}));
}

}  // namespace
