// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/frame_optics.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <opencv2/core.hpp>

#include "scenes.h"

using framequilt::tool::blurRadius;
using framequilt::tool::blurred;
using framequilt::tool::CameraView;
using framequilt::tool::exposed;
using framequilt::tool::Exposure;
using framequilt::tool::lightOf;
using framequilt::tool::RandomPurpose;
using framequilt::tool::SeededRandom;

namespace {

constexpr double kRadian = CV_PI / 180;

/// Each pixel is as bright as its column, or its row, counts.
cv::Mat ramp(bool byColumn) {
  cv::Mat scene(200, 200, CV_8UC1);
  for (int r = 0; r < scene.rows; ++r) {
    for (int c = 0; c < scene.cols; ++c) {
      scene.at<unsigned char>(r, c) = static_cast<unsigned char>(byColumn ? c : r);
    }
  }
  return scene;
}

cv::Mat flat(float level, int channels = 1) {
  return {40, 60, CV_32FC(channels), cv::Scalar::all(level)};
}

cv::Mat exposedFlat(float level, const Exposure& exposure, int channels = 1) {
  SeededRandom noise(1, RandomPurpose::kNoise);
  return exposed(flat(level, channels), exposure, noise);
}

bool same(const cv::Mat& a, const cv::Mat& b) {
  return a.type() == b.type() && a.size() == b.size() && cv::norm(a, b, cv::NORM_INF) == 0;
}

cv::Mat inFloat(const cv::Mat& picture) {
  cv::Mat converted;
  picture.convertTo(converted, CV_32F);
  return converted;
}

/// Sum of squared differences of neighbours.
double edgeEnergy(const cv::Mat& light) {
  const cv::Mat right = light.colRange(1, light.cols) - light.colRange(0, light.cols - 1);
  const cv::Mat down = light.rowRange(1, light.rows) - light.rowRange(0, light.rows - 1);
  return right.dot(right) + down.dot(down);
}

}  // namespace

TEST(FrameLight, AtWholePixelsIsTheScene) {
  const cv::Mat gray = texture(80, 90);
  for (const cv::Mat& scene : {gray, coloured(gray)}) {
    const cv::Mat light = lightOf(scene, {{20, 10}, 0, {40, 30}}, 0);
    EXPECT_TRUE(same(light, inFloat(scene(cv::Rect(20, 10, 40, 30)))));
  }
}

TEST(FrameLight, ABorderShowsTheSceneAround) {
  const cv::Mat scene = texture(80, 90);
  const cv::Mat light = lightOf(scene, {{20, 10}, 0, {40, 30}}, 5);
  EXPECT_TRUE(same(light, inFloat(scene(cv::Rect(15, 5, 50, 40)))));
}

TEST(FrameLight, OutsideTheSceneItsEdgeGoesOn) {
  const cv::Mat scene = texture(50, 60);
  cv::Mat padded;
  cv::copyMakeBorder(scene, padded, 4, 4, 4, 4, cv::BORDER_REPLICATE);
  EXPECT_TRUE(same(lightOf(scene, {{0, 0}, 0, {60, 50}}, 4), inFloat(padded)));
}

TEST(FrameLight, BetweenPixelsIsInterpolated) {
  for (const bool byColumn : {true, false}) {
    const cv::Mat light = lightOf(ramp(byColumn), {{12.37, 41.82}, 0, {60, 50}}, 3);
    ASSERT_EQ(light.size(), cv::Size(66, 56));
    for (const cv::Point at : {cv::Point(0, 0), cv::Point(65, 0), cv::Point(31, 55)}) {
      EXPECT_NEAR(light.at<float>(at), byColumn ? 9.37 + at.x : 38.82 + at.y, 1e-3);
    }
  }
}

TEST(FrameLight, AParabolaIsInterpolatedExactly) {
  cv::Mat scene(1, 11, CV_8UC1);
  for (int c = 0; c < 11; ++c) {
    scene.at<unsigned char>(0, c) = static_cast<unsigned char>((c - 5) * (c - 5) * 4);
  }
  const cv::Mat light = lightOf(scene, {{3.25, 0}, 0, {3, 1}}, 0);
  for (int c = 0; c < 3; ++c) {
    EXPECT_NEAR(light.at<float>(0, c), std::pow(3.25 + c - 5, 2) * 4, 1e-3);
  }
}

TEST(FrameLight, EachChannelIsInterpolatedByItself) {
  const cv::Mat columns = ramp(true);
  const cv::Mat rows = ramp(false);
  cv::Mat scene;
  cv::merge(std::vector<cv::Mat>{columns, rows, 255 - columns}, scene);
  const auto light = lightOf(scene, {{10.5, 20.25}, 0, {20, 20}}, 0).at<cv::Vec3f>(4, 7);
  EXPECT_NEAR(light[0], 17.5, 1e-3);
  EXPECT_NEAR(light[1], 24.25, 1e-3);
  EXPECT_NEAR(light[2], 237.5, 1e-3);
}

TEST(FrameLight, ATurnedCameraTurnsClockwiseAboutTheMiddle) {
  const CameraView view{{70.25, 80.5}, 30, {61, 41}};
  const cv::Mat x = lightOf(ramp(true), view, 0);
  const cv::Mat y = lightOf(ramp(false), view, 0);
  EXPECT_NEAR(x.at<float>(20, 30), 100.25, 1e-3);
  EXPECT_NEAR(y.at<float>(20, 30), 100.5, 1e-3);
  // To the right of the middle the turned camera looks further down.
  EXPECT_NEAR(x.at<float>(20, 60), 100.25 + 30 * std::cos(30 * kRadian), 1e-3);
  EXPECT_NEAR(y.at<float>(20, 60), 100.5 + 30 * std::sin(30 * kRadian), 1e-3);
  EXPECT_NEAR(x.at<float>(40, 30), 100.25 - 20 * std::sin(30 * kRadian), 1e-3);
  EXPECT_NEAR(y.at<float>(40, 30), 100.5 + 20 * std::cos(30 * kRadian), 1e-3);
}

TEST(FrameBlur, ReachesThreeDeviationsFar) {
  EXPECT_EQ(blurRadius(0), 0);
  EXPECT_EQ(blurRadius(0.4), 2);
  EXPECT_EQ(blurRadius(2), 6);
}

TEST(FrameBlur, NoBlurChangesNothing) {
  const cv::Mat light = inFloat(texture(20, 30));
  EXPECT_TRUE(same(blurred(light, 0), light));
}

TEST(FrameBlur, SpreadsAPointIntoABell) {
  constexpr double kSigma = 1.5;
  for (const int channels : {1, 3}) {
    cv::Mat light = cv::Mat::zeros(31, 41, CV_32FC(channels));
    std::fill_n(light.ptr<float>(15, 20), channels, 1000.0F);
    const cv::Mat result = blurred(light, kSigma);
    ASSERT_EQ(result.size(), cv::Size(31, 21));
    EXPECT_NEAR(cv::sum(result)[channels - 1], 1000, 0.1);
    const float* const centre = result.ptr<float>(10, 15);
    EXPECT_NEAR(centre[0], 1000 / (2 * CV_PI * kSigma * kSigma), 0.5);
    EXPECT_NEAR(*result.ptr<float>(10, 18) / centre[0], std::exp(-2.0), 1e-4);
    EXPECT_NEAR(*result.ptr<float>(13, 15) / centre[0], std::exp(-2.0), 1e-4);
  }
}

TEST(FrameBlur, LowersTheEnergyOfEdges) {
  const cv::Mat light = inFloat(texture(60, 70));
  const double sharp = edgeEnergy(light);
  const double soft = edgeEnergy(blurred(light, 1));
  EXPECT_LT(soft, 0.8 * sharp);
  EXPECT_LT(edgeEnergy(blurred(light, 3)), 0.5 * soft);
}

TEST(Exposure, PlainLightIsRounded) {
  const cv::Mat light = (cv::Mat_<float>(1, 5) << -3.0F, 0.4F, 0.6F, 254.6F, 300.0F);
  SeededRandom noise(1, RandomPurpose::kNoise);
  const cv::Mat expected = (cv::Mat_<unsigned char>(1, 5) << 0, 0, 1, 255, 255);
  EXPECT_TRUE(same(exposed(light, {}, noise), expected));
}

TEST(Exposure, GainIsAFactor) {
  EXPECT_TRUE(same(exposedFlat(100, {1.25, 0, 0}, 3), cv::Mat(40, 60, CV_8UC3, {125, 125, 125})));
  EXPECT_TRUE(same(exposedFlat(250, {1.25, 0, 0}), cv::Mat(40, 60, CV_8UC1, cv::Scalar(255))));
}

TEST(Exposure, AVignetteDarkensTowardsTheCorners) {
  const cv::Mat picture = exposedFlat(200, {1, 0.4, 0});
  for (const cv::Point corner : {cv::Point(0, 0), cv::Point(59, 0), cv::Point(0, 39)}) {
    EXPECT_EQ(picture.at<unsigned char>(corner), 120);
  }
  EXPECT_EQ(picture.at<unsigned char>(19, 29), 200);
  EXPECT_GT(picture.at<unsigned char>(20, 0), 130);
  EXPECT_LT(picture.at<unsigned char>(20, 0), 195);
}

TEST(Exposure, NoiseHasItsDeviationInEveryChannel) {
  cv::Scalar mean;
  cv::Scalar deviation;
  const cv::Mat picture = exposedFlat(100, {1, 0, 8}, 3);
  cv::meanStdDev(picture, mean, deviation);
  for (int channel = 0; channel < 3; ++channel) {
    EXPECT_NEAR(mean[channel], 100, 0.6);
    EXPECT_NEAR(deviation[channel], 8, 0.4);
  }
  EXPECT_GT(cv::norm(picture.col(0).reshape(1).col(0), picture.col(0).reshape(1).col(1)), 0);
}

TEST(Exposure, NoiseIsAddedAfterGainAndVignette) {
  cv::Scalar mean;
  cv::Scalar deviation;
  cv::meanStdDev(exposedFlat(200, {0.5, 0, 8}), mean, deviation);
  EXPECT_NEAR(mean[0], 100, 0.8);
  EXPECT_NEAR(deviation[0], 8, 0.5);
}

TEST(Exposure, NoiseSaturates) {
  const cv::Mat dark = exposedFlat(2, {1, 0, 20});
  const cv::Mat light = exposedFlat(253, {1, 0, 20});
  EXPECT_GT(cv::countNonZero(dark == 0), 800);
  EXPECT_GT(cv::countNonZero(light == 255), 800);
  EXPECT_EQ(cv::countNonZero(dark > 120), 0);
  EXPECT_EQ(cv::countNonZero(light < 120), 0);
}
