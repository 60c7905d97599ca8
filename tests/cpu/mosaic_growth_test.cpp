// SPDX-License-Identifier: Apache-2.0
#include "cpu/mosaic_growth.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <ostream>
#include <string>

#include "tests/support/points.h"

namespace {

// --- BorderExpand ---

// A mosaic of 20 rows x 30 columns, frames of 6 x 8; growth by 5 rows and 7 columns, so that a
// mixed-up argument shows.
constexpr int kRows = 20, kCols = 30, kFrameRows = 6, kFrameCols = 8, kGrowRows = 5, kGrowCols = 7;

struct Growth {
  const char* name;
  int nx, ny;                    // Where the frame begins.
  int top, bottom, left, right;  // Rows and columns added.
};

std::ostream& operator<<(std::ostream& out, const Growth& growth) { return out << growth.name; }

const Growth kGrowths[] = {
    {"Inside", 10, 10, 0, 0, 0, 0},
    {"JustInsideTopLeft", 1, 1, 0, 0, 0, 0},
    {"JustInsideBottomRight", 21, 13, 0, 0, 0, 0},
    {"TouchesBottom", 10, 14, 0, 5, 0, 0},
    {"BeyondBottom", 10, 19, 0, 5, 0, 0},
    {"TouchesBottomAndRight", 22, 14, 0, 5, 0, 7},
    {"BeyondBottomAndRight", 28, 17, 0, 5, 0, 7},
    {"BottomAndLeft", 0, 14, 0, 5, 7, 0},
    {"TouchesRight", 22, 10, 0, 0, 0, 7},
    {"BeyondRight", 29, 10, 0, 0, 0, 7},
    {"TouchesLeft", 0, 10, 0, 0, 7, 0},
    {"BeyondLeft", -3, 10, 0, 0, 7, 0},
    {"TouchesTopAndLeft", 0, 0, 5, 0, 7, 0},
    {"BeyondTopAndLeft", -4, -2, 5, 0, 7, 0},
    {"TouchesTop", 10, 0, 5, 0, 0, 0},
    {"BeyondTop", 10, -3, 5, 0, 0, 0},
    {"TopAndRight", 22, 0, 5, 0, 0, 7},
    {"BeyondTopAndRight", 29, -3, 5, 0, 0, 7},
};

class BorderGrowth : public testing::TestWithParam<Growth> {};

INSTANTIATE_TEST_SUITE_P(Cases, BorderGrowth, testing::ValuesIn(kGrowths),
                         [](const auto& growth) { return std::string(growth.param.name); });

cv::Mat patterned(int channels) {
  cv::Mat mosaic(kRows, kCols, CV_8UC(channels));
  for (int r = 0; r < kRows; ++r) {
    for (int c = 0; c < kCols * channels; ++c) {
      mosaic.ptr(r)[c] = static_cast<unsigned char>(1 + (r * 7 + c * 3) % 255);
    }
  }
  return mosaic;
}

/// `mosaic` on black, `top` rows and `left` columns further in.
cv::Mat surrounded(const cv::Mat& mosaic, const Growth& growth) {
  cv::Mat all = cv::Mat::zeros(mosaic.rows + growth.top + growth.bottom,
                               mosaic.cols + growth.left + growth.right, mosaic.type());
  mosaic.copyTo(all(cv::Rect(growth.left, growth.top, mosaic.cols, mosaic.rows)));
  return all;
}

void expectSame(const cv::Mat& actual, const cv::Mat& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  ASSERT_EQ(actual.type(), expected.type());
  EXPECT_EQ(cv::norm(actual, expected, cv::NORM_INF), 0.0);
}

TEST_P(BorderGrowth, AddsBlackOnTheSidesThatAreReached) {
  const Growth& growth = GetParam();
  for (const int channels : {1, 3}) {
    const cv::Mat mosaic = patterned(channels);
    cv::Mat grown;
    SPoint position, topLeft, bottomRight;
    // The frame before lay at (11, 9).
    BorderExpand(mosaic, kGrowRows, kGrowCols, growth.nx - 11, growth.ny - 9, kFrameRows,
                 kFrameCols, kCols, kRows, {11, 9}, grown, position, {2, 3}, {28, 19}, topLeft,
                 bottomRight);
    expectSame(grown, surrounded(mosaic, growth));
    expectSame(mosaic, patterned(channels));
    EXPECT_EQ(position, (SPoint{11 + growth.left, 9 + growth.top}));
    EXPECT_EQ(topLeft, (SPoint{2 + growth.left, 3 + growth.top}));
    EXPECT_EQ(bottomRight, (SPoint{28 + growth.left, 19 + growth.top}));
  }
}

/// How much a frame of any size at (nx, ny) makes the mosaic grow.
cv::Size sizeAfter(int nx, int ny, int frameRows, int frameCols) {
  const cv::Mat mosaic = patterned(1);
  cv::Mat grown;
  SPoint ignored;
  BorderExpand(mosaic, kGrowRows, kGrowCols, nx, ny, frameRows, frameCols, kCols, kRows, {0, 0},
               grown, ignored, {}, {}, ignored, ignored);
  return grown.size();
}

TEST(BorderExpand, FrameThatReachesTopAndBottomGrowsTheTopAlone) {
  EXPECT_EQ(sizeAfter(10, 0, kRows, kFrameCols), cv::Size(kCols, kRows + kGrowRows));
}

TEST(BorderExpand, FrameThatReachesLeftAndRightGrowsTheLeftAlone) {
  EXPECT_EQ(sizeAfter(0, 10, kFrameRows, kCols), cv::Size(kCols + kGrowCols, kRows));
}

TEST(BorderExpand, FrameLargerThanTheMosaicGrowsTopAndLeftOnly) {
  EXPECT_EQ(sizeAfter(-5, -5, 2 * kRows, 2 * kCols),
            cv::Size(kCols + kGrowCols, kRows + kGrowRows));
}

TEST(BorderExpand, LeftAndBottomWinOverRight) {
  EXPECT_EQ(sizeAfter(0, 16, kFrameRows, kCols), cv::Size(kCols + kGrowCols, kRows + kGrowRows));
}

TEST(BorderExpand, WithoutGrowthTheMatrixIsShared) {
  const cv::Mat mosaic = patterned(3);
  cv::Mat same;
  SPoint ignored;
  BorderExpand(mosaic, kGrowRows, kGrowCols, 0, 0, kFrameRows, kFrameCols, kCols, kRows, {5, 5},
               same, ignored, {}, {}, ignored, ignored);
  EXPECT_EQ(same.data, mosaic.data);
}

TEST(BorderExpand, MayBeGivenItsInputsToWriteTo) {
  cv::Mat mosaic = patterned(1);
  SPoint position = {3, 4}, topLeft = {1, 2}, bottomRight = {9, 9};
  BorderExpand(mosaic, kGrowRows, kGrowCols, -3, -4, kFrameRows, kFrameCols, mosaic.cols,
               mosaic.rows, position, mosaic, position, topLeft, bottomRight, topLeft, bottomRight);
  expectSame(mosaic, surrounded(patterned(1), {"", 0, 0, kGrowRows, 0, kGrowCols, 0}));
  EXPECT_EQ(position, (SPoint{10, 9}));
  EXPECT_EQ(topLeft, (SPoint{8, 7}));
  EXPECT_EQ(bottomRight, (SPoint{16, 14}));
}

// --- The filled box ---

struct Axis {
  const char* what;
  int from, to;    // The frame.
  int start, end;  // The box [20, 40) afterwards.
};

const Axis kAxes[] = {
    {"inside", 25, 35, 20, 40},
    {"exactly the box", 20, 40, 20, 40},
    {"from its start, inside", 20, 30, 20, 40},
    {"up to its end, inside", 30, 40, 20, 40},
    {"before its start", 15, 35, 15, 40},
    {"wholly in front", 5, 10, 5, 40},
    {"up to its start", 10, 20, 10, 40},
    {"beyond its end", 25, 45, 20, 45},
    {"from its end", 40, 50, 20, 50},
    {"wholly behind", 45, 50, 20, 50},
    {"beyond both sides stays", 15, 45, 20, 40},
    {"before the start and up to the end stays", 15, 40, 20, 40},
    {"from the start and beyond the end stays", 20, 45, 20, 40},
};

TEST(OutputImageCoordate, ExtendsEachAxisByItself) {
  for (const Axis& x : kAxes) {
    for (const Axis& y : kAxes) {
      SCOPED_TRACE(testing::Message() << "x " << x.what << ", y " << y.what);
      SPoint topLeft, bottomRight;
      EXPECT_EQ(outputImageCoordate({20, 20}, {40, 40}, 77, -77, y.to - y.from, x.to - x.from,
                                    {x.from, y.from}, topLeft, bottomRight),
                0);
      EXPECT_EQ(topLeft, (SPoint{x.start, y.start}));
      EXPECT_EQ(bottomRight, (SPoint{x.end, y.end}));
    }
  }
}

TEST(OutputImageCoordate1, IsTheSameForPointsOfOpencv) {
  for (const Axis& x : kAxes) {
    for (const Axis& y : kAxes) {
      SCOPED_TRACE(testing::Message() << "x " << x.what << ", y " << y.what);
      cv::Point topLeft, bottomRight;
      EXPECT_EQ(outputImageCoordate1({20, 20}, {40, 40}, -5, 5, y.to - y.from, x.to - x.from,
                                     {x.from, y.from}, topLeft, bottomRight),
                0);
      EXPECT_EQ(topLeft, cv::Point(x.start, y.start));
      EXPECT_EQ(bottomRight, cv::Point(x.end, y.end));
    }
  }
}

}  // namespace
