// SPDX-License-Identifier: Apache-2.0
#include "imaging/black_image.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <opencv2/core.hpp>
#include <vector>

#include "imaging/assistant.h"

#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>
#endif

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

#if defined(__linux__)

/// What an image holds of the memory of the machine.
class Pages {
 public:
  explicit Pages(const cv::Mat& image)
      : start_(image.data), bytes_(image.total() * image.elemSize()) {}

  bool areMapped() { return mincore(start_, bytes_, held_.data()) == 0; }
  /// Of all, from 0 to 1.
  double share() {
    EXPECT_TRUE(areMapped());
    const auto held = std::count_if(held_.begin(), held_.end(),
                                    [](unsigned char page) { return (page & 1U) != 0; });
    return static_cast<double>(held) / static_cast<double>(held_.size());
  }

 private:
  unsigned char* start_;
  std::size_t bytes_;
  std::vector<unsigned char> held_ =
      std::vector<unsigned char>(bytes_ / static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + 1);
};

TEST(BlackImage, LargeOneTakesMemoryWhereItIsWritten) {
  cv::Mat image = blackImage(4 * kRows, 4 * kCols, CV_8UC1);
  Pages pages(image);
  EXPECT_EQ(pages.share(), 0.0);
  image.at<unsigned char>(2 * kRows, 2 * kCols) = 1;
  EXPECT_GT(pages.share(), 0.0);
  EXPECT_LT(pages.share(), 0.2);
  image.release();
  EXPECT_FALSE(pages.areMapped());
}

TEST(BlackImage, IsFreshMemoryOfTheSystemFromEightMebibytesOn) {
  const auto isOfOpencv = [](const cv::Mat& image) {
    return image.u->currAllocator == cv::Mat::getStdAllocator();
  };
  EXPECT_TRUE(isOfOpencv(blackImage(8191, 1024, CV_8UC1)));
  EXPECT_FALSE(isOfOpencv(blackImage(8192, 1024, CV_8UC1)));
}

TEST(CopyToBlack, LeavesAloneWhatIsBlack) {
  cv::Mat from = blackImage(4 * kRows, 4 * kCols, CV_8UC1);
  from.at<unsigned char>(2 * kRows, 2 * kCols) = 1;
  cv::Mat to = blackImage(from.rows, from.cols, CV_8UC1);
  copyToBlack(from, to);
  EXPECT_EQ(to.at<unsigned char>(2 * kRows, 2 * kCols), 1);
  EXPECT_LT(Pages(to).share(), 0.2);
}

#endif

// A sanitizer ends the process instead.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(BlackImage, ThatNoMachineHoldsIsRefused) {
  constexpr int kSide = 2000000000;
  try {
    blackImage(kSide, kSide, CV_8UC1);
    ADD_FAILURE() << "not refused";
  } catch (const cv::Exception& error) {
    EXPECT_EQ(error.code, cv::Error::StsNoMem);
  }
}
#endif

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
