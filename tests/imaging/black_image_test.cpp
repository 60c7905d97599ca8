// SPDX-License-Identifier: Apache-2.0
#include "imaging/black_image.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "imaging/assistant.h"

namespace {

using framequilt::blackImage;
using framequilt::copyToBlack;

// Large enough for memory straight from the system.
constexpr int kRows = 1800, kCols = 2100;

TEST(BlackImage, IsBlackWhateverItsSize) {
  for (const int type : {CV_8UC1, CV_8UC3, CV_16UC1}) {
    for (const cv::Size size : {cv::Size(5, 3), cv::Size(2 * kCols, 2 * kRows)}) {
      const cv::Mat image = blackImage(size.height, size.width, type);
      EXPECT_EQ(image.size(), size);
      EXPECT_EQ(image.type(), type);
      EXPECT_TRUE(image.isContinuous());
      EXPECT_EQ(cv::countNonZero(image.reshape(1)), 0);
    }
  }
}

TEST(BlackImage, LivesAsLongAsAHeader) {
  cv::Mat part;
  {
    cv::Mat image = blackImage(kRows, 2 * kCols, CV_8UC3);
    image.at<cv::Vec3b>(1000, 1500) = {1, 2, 3};
    const cv::Mat second = image;
    image.release();
    part = second(cv::Rect(1499, 999, 3, 3));
  }
  EXPECT_EQ(part.at<cv::Vec3b>(1, 1), cv::Vec3b(1, 2, 3));
  EXPECT_EQ(cv::countNonZero(part.reshape(1)), 3);
}

TEST(BlackImage, HeaderCanBeGivenOtherMemory) {
  cv::Mat image = blackImage(kRows, 2 * kCols, CV_8UC3);
  image.create(4, 5, CV_32F);
  image.setTo(1.5F);
  EXPECT_EQ(cv::sum(image)[0], 30.0);
  image.create(kRows, 3 * kCols, CV_8UC3);
  image.setTo(7);
  EXPECT_EQ(cv::countNonZero(image.reshape(1) != 7), 0);
}

TEST(CopyToBlack, IsACopyWithAnyThreadsAndWhateverIsBlack) {
  cv::Mat from = cv::Mat::zeros(kRows, kCols, CV_8UC3);
  // Single bytes at the ends of rows and of pages, and an area.
  from.at<cv::Vec3b>(0, 0)[0] = 1;
  from.at<cv::Vec3b>(kRows - 1, kCols - 1)[2] = 2;
  from.at<cv::Vec3b>(7, 4095 / 3)[0] = 3;
  from.at<cv::Vec3b>(8, 4096 / 3)[1] = 4;
  cv::Mat area = from(cv::Rect(300, 200, 900, 700));
  cv::randu(area, 0, 255);
  for (const int threads : {1, 2}) {
    framequilt::setThreads(threads);
    cv::Mat to = blackImage(kRows + 40, kCols + 50, CV_8UC3);
    copyToBlack(from, to(cv::Rect(30, 20, kCols, kRows)));
    cv::Mat expected;
    cv::copyMakeBorder(from, expected, 20, 20, 30, 20, cv::BORDER_CONSTANT, cv::Scalar(0));
    EXPECT_EQ(cv::norm(to, expected, cv::NORM_INF), 0.0);

    cv::Mat ofPart = blackImage(area.rows, area.cols, CV_8UC3);
    copyToBlack(area, ofPart);
    EXPECT_EQ(cv::norm(ofPart, area, cv::NORM_INF), 0.0) << "rows that do not follow each other";
  }
  framequilt::setThreads(0);
}

}  // namespace
