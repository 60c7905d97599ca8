// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/generated_landscape.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

namespace framequilt::tool {
namespace {

TEST(GeneratedLandscape, IsTheSameForASeed) {
  const cv::Mat landscape = generateLandscape({120, 90}, 3);
  ASSERT_EQ(landscape.size(), cv::Size(120, 90));
  ASSERT_EQ(landscape.type(), CV_8UC3);
  EXPECT_EQ(cv::norm(generateLandscape({120, 90}, 3), landscape, cv::NORM_INF), 0);
  EXPECT_GT(cv::norm(generateLandscape({120, 90}, 4), landscape, cv::NORM_INF), 0);
}

TEST(GeneratedLandscape, HasTextureEverywhere) {
  const cv::Mat landscape = generateLandscape({640, 480}, 1);
  for (int r = 0; r < 480; r += 40) {
    for (int c = 0; c < 640; c += 40) {
      cv::Scalar mean;
      cv::Scalar deviation;
      cv::meanStdDev(landscape({c, r, 40, 40}), mean, deviation);
      EXPECT_GT(deviation[1], 0.5) << "at " << c << ", " << r;
    }
  }
}

TEST(GeneratedLandscape, MayBeAPixelLarge) { EXPECT_EQ(generateLandscape({1, 1}, 1).total(), 1U); }

}  // namespace
}  // namespace framequilt::tool
