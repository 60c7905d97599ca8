// SPDX-License-Identifier: Apache-2.0
#include "interface/published_mosaic.h"

#include <gtest/gtest.h>

#include <limits>
#include <opencv2/core.hpp>

using framequilt::PublishedMosaic;

namespace {

constexpr int kLowest = std::numeric_limits<int>::min();
constexpr int kHighest = std::numeric_limits<int>::max();

/// 6 x 8 pixels whose value is 10 * row + column; the box leaves a margin of one row and two
/// columns, and the first frame lies at row 2, column 3.
class Published : public testing::Test {
 protected:
  Published() {
    for (int r = 0; r < matrix_.rows; ++r) {
      for (int c = 0; c < matrix_.cols; ++c) {
        matrix_.at<unsigned char>(r, c) = static_cast<unsigned char>(10 * r + c);
      }
    }
    mosaic_.publish(matrix_, {2, 1, 4, 4}, {3, 2});
  }

  int sumOf(const cv::Rect& region) const {
    return static_cast<int>(cv::sum(mosaic_.copy(region, CV_8UC1))[0]);
  }

  cv::Mat matrix_ = cv::Mat(6, 8, CV_8UC1);
  PublishedMosaic mosaic_;
};

/// Same size, type and pixels.
bool same(const cv::Mat& a, const cv::Mat& b) {
  return a.size() == b.size() && a.type() == b.type() && cv::norm(a, b, cv::NORM_INF) == 0.0;
}

}  // namespace

TEST(PublishedMosaicBefore, AnythingThereIsNothing) {
  const PublishedMosaic mosaic;
  EXPECT_TRUE(mosaic.view().empty());
  EXPECT_EQ(mosaic.steadyBox(), cv::Rect());
  EXPECT_TRUE(same(mosaic.copy({-3, 7, 2, 4}, CV_8UC3), cv::Mat::zeros(4, 2, CV_8UC3)));
}

TEST_F(Published, ViewSharesThePixelsOfTheBox) {
  EXPECT_EQ(mosaic_.view().size(), cv::Size(4, 4));
  EXPECT_EQ(mosaic_.view().data, matrix_.ptr(1) + 2);
}

TEST_F(Published, BoxIsCountedFromTheFirstFrame) {
  EXPECT_EQ(mosaic_.steadyBox(), cv::Rect(-1, -1, 4, 4));
}

TEST_F(Published, RegionInsideIsCopied) {
  const cv::Mat copy = mosaic_.copy({0, 0, 2, 3}, CV_8UC1);
  const cv::Mat expected = (cv::Mat_<unsigned char>(3, 2) << 23, 24, 33, 34, 43, 44);
  EXPECT_TRUE(same(copy, expected));
  matrix_.setTo(0);
  EXPECT_TRUE(same(copy, expected));
}

TEST_F(Published, WholeBoxIsTheView) {
  EXPECT_TRUE(same(mosaic_.copy(mosaic_.steadyBox(), CV_8UC1), mosaic_.view()));
}

TEST_F(Published, PartsOutsideOfTheBoxAreZero) {
  const cv::Mat topLeft = mosaic_.copy({-2, -3, 2, 3}, CV_8UC1);
  EXPECT_TRUE(same(topLeft, (cv::Mat_<unsigned char>(3, 2) << 0, 0, 0, 0, 0, 12)));
  const cv::Mat bottomRight = mosaic_.copy({2, 1, 2, 3}, CV_8UC1);
  EXPECT_TRUE(same(bottomRight, (cv::Mat_<unsigned char>(3, 2) << 35, 0, 45, 0, 0, 0)));
  const cv::Mat around = mosaic_.copy({-4, -3, 10, 8}, CV_8UC1);
  EXPECT_EQ(cv::countNonZero(around), 16);
  EXPECT_TRUE(same(around(cv::Rect(3, 2, 4, 4)), mosaic_.view()));
}

TEST_F(Published, RegionsElsewhereAreZero) {
  EXPECT_EQ(sumOf({-3, 0, 2, 2}), 0);
  EXPECT_EQ(sumOf({3, 0, 2, 2}), 0);
  EXPECT_EQ(sumOf({0, -4, 2, 3}), 0);
  EXPECT_EQ(sumOf({0, 3, 2, 2}), 0);
  EXPECT_EQ(sumOf({2, 2, 1, 1}), 45);
  EXPECT_EQ(sumOf({-1, -1, 1, 1}), 12);
}

TEST_F(Published, RegionsAtTheEndsOfTheNumbersAreZero) {
  for (const int x : {kLowest, kLowest + 1, kHighest - 1, kHighest}) {
    for (const int y : {kLowest, kLowest + 1, 0, kHighest - 1, kHighest}) {
      EXPECT_EQ(sumOf({x, y, 3, 3}), 0);
      EXPECT_EQ(sumOf({y, x, 3, 3}), 0);
    }
  }
}

TEST_F(Published, WideRegionsReachTheBox) {
  const cv::Mat row = mosaic_.copy({-2000000, 0, 2000002, 1}, CV_8UC1);
  EXPECT_EQ(cv::countNonZero(row), 3);
  EXPECT_EQ(row.at<unsigned char>(0, 2000000), 23);
}

TEST_F(Published, EmptyRegionsAreEmpty) {
  EXPECT_EQ(mosaic_.copy({0, 0, 0, 5}, CV_8UC1).total(), 0U);
  EXPECT_EQ(mosaic_.copy({0, 0, 5, 0}, CV_8UC1).total(), 0U);
}

TEST_F(Published, NextOneTakesItsPlace) {
  const cv::Mat grown(9, 9, CV_8UC1, cv::Scalar(5));
  mosaic_.publish(grown, {0, 0, 9, 9}, {6, 6});
  EXPECT_EQ(mosaic_.steadyBox(), cv::Rect(-6, -6, 9, 9));
  EXPECT_EQ(mosaic_.view().data, grown.data);
  EXPECT_EQ(sumOf({-1, -1, 2, 2}), 20);
}
