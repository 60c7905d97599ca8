// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/outlines.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

using framequilt::tool::withOutlines;

namespace {

const cv::Vec3b kBorder(60, 220, 60);

/// Pixels of the picture that are not as the flat mosaic was.
int changedPixels(const cv::Mat& picture, int ground) {
  cv::Mat different;
  cv::inRange(picture, cv::Scalar::all(ground), cv::Scalar::all(ground), different);
  return static_cast<int>(picture.total()) - cv::countNonZero(different);
}

}  // namespace

TEST(Outlines, LieOnTheFramesFirstAndLastPixels) {
  const cv::Mat mosaic(200, 300, CV_8UC3, cv::Scalar::all(100));
  const cv::Rect frame(40, 30, 160, 120);
  const cv::Mat picture = withOutlines(mosaic, {{1, frame}});
  for (const cv::Point corner : {cv::Point(199, 30), cv::Point(40, 149), cv::Point(199, 149)}) {
    EXPECT_EQ(picture.at<cv::Vec3b>(corner), kBorder) << corner;
  }
  for (int x = 40; x < 200; ++x) ASSERT_EQ(picture.at<cv::Vec3b>(149, x), kBorder) << x;
  for (int y = 30; y < 150; ++y) ASSERT_EQ(picture.at<cv::Vec3b>(y, 199), kBorder) << y;
  cv::Mat outside = picture.clone();
  outside(frame).setTo(cv::Scalar::all(100));
  EXPECT_EQ(changedPixels(outside, 100), 0);
}

TEST(Outlines, BearTheNumberOfTheFrame) {
  const cv::Mat mosaic(200, 300, CV_8UC3, cv::Scalar::all(100));
  const cv::Rect frame(0, 0, 300, 200);
  const cv::Mat one = withOutlines(mosaic, {{1, frame}});
  const cv::Mat two = withOutlines(mosaic, {{2, frame}});
  const cv::Mat wide = withOutlines(mosaic, {{1234, frame}});
  EXPECT_GT(cv::norm(one, two, cv::NORM_INF), 0);
  EXPECT_GT(changedPixels(wide, 100), changedPixels(one, 100));
}

TEST(Outlines, LeaveTheMosaicAlone) {
  const cv::Mat mosaic(100, 100, CV_8UC3, cv::Scalar::all(100));
  withOutlines(mosaic, {{1, {0, 0, 100, 100}}});
  EXPECT_EQ(changedPixels(mosaic, 100), 0);
}

TEST(Outlines, OfAGrayMosaicAreInColour) {
  const cv::Mat mosaic(100, 100, CV_8UC1, cv::Scalar::all(100));
  const cv::Mat picture = withOutlines(mosaic, {{1, {0, 0, 100, 100}}});
  ASSERT_EQ(picture.type(), CV_8UC3);
  EXPECT_EQ(picture.at<cv::Vec3b>(99, 99), kBorder);
}

TEST(Outlines, OfLargeFramesAreThicker) {
  const cv::Mat mosaic(1300, 1300, CV_8UC1, cv::Scalar::all(100));
  const cv::Mat picture = withOutlines(mosaic, {{1, {0, 0, 1300, 1300}}});
  EXPECT_EQ(picture.at<cv::Vec3b>(1299, 900), kBorder);
  EXPECT_EQ(picture.at<cv::Vec3b>(1296, 900), kBorder);
  EXPECT_EQ(picture.at<cv::Vec3b>(1290, 900), cv::Vec3b::all(100));
}
