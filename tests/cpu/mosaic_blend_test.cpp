// SPDX-License-Identifier: Apache-2.0
#include "cpu/mosaic_blend.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "imaging/fusion.h"
#include "tests/cpu/run_fixture.h"
#include "tests/support/recorded_reports.h"

namespace {

constexpr int kRows = 10, kCols = 12;  // Frames; the mosaic is 40 rows x 50 columns at first.

cv::Mat blank(int channels) { return cv::Mat::zeros(40, 50, CV_8UC(channels)); }

Bytes pixelsOf(const cv::Mat& image, const cv::Rect& box) {
  const cv::Mat cut = image(box).clone();
  return {cut.data, cut.data + cut.total() * cut.elemSize()};
}

void place(const Bytes& pixels, cv::Mat image, const cv::Rect& box) {
  Bytes copy = pixels;
  cv::Mat(box.height, box.width, image.type(), copy.data()).copyTo(image(box));
}

void expectSame(const cv::Mat& actual, const cv::Mat& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  ASSERT_EQ(actual.type(), expected.type());
  EXPECT_EQ(cv::norm(actual, expected, cv::NORM_INF), 0.0);
}

/// What a blend hands back.
struct Blend {
  bool done = false;
  SPoint topLeft = {-1, -2}, bottomRight = {-3, -4}, position = {-5, -6};
  imgInfo regionInfo = {91, 92, 93, 94};
  cv::Mat mosaic;
  Bytes region;
};

class MosaicBlend : public testing::Test {
 protected:
  void SetUp() override { setWorkingSize(kRows, kCols); }

  void TearDown() override {
    delete[] thedestImageScale;
    thedestImageScale = nullptr;
    RealImgRow = RealImgCol = imgScaleRow = imgScaleCol = 0;
  }

  void setWorkingSize(int rows, int cols) {
    RealImgRow = kRows;
    RealImgCol = kCols;
    imgScaleRow = rows;
    imgScaleCol = cols;
  }

  Bytes randomFrame(int channels) {
    return random_.bytes(area(imgScaleRow, imgScaleCol, channels), 1, 255);
  }

  /// Blends `frame` at (dx, dy) from `position`; the box so far is [8, 30) x [9, 28).
  Blend blend(const cv::Mat& mosaic, const Bytes& frame, SPoint position, int dx, int dy) {
    const int channels = mosaic.channels();
    delete[] thedestImageScale;
    thedestImageScale = fresh<unsigned char>(frame.size());
    std::copy(frame.begin(), frame.end(), thedestImageScale);

    Blend result;
    result.region.assign(frame.size(), 201);
    stitchflags flags = {};
    flags.position = position;
    flags.offsetX = dx;
    flags.offsetY = dy;
    unsigned char onlyCheckedForNull = 0;
    result.done = stitchingImageImageblendCpu(
        mosaic, &onlyCheckedForNull, {0, channels, kRows, kCols}, flags, {8, 9}, {30, 28},
        {1000, 1000}, result.topLeft, result.bottomRight, result.position, result.regionInfo,
        result.mosaic, result.region.data());
    return result;
  }

  Random random_{51};
};

TEST_F(MosaicBlend, NullFrameIsReportedAndChangesNothing) {
  const RecordedReports reports;
  Blend result;
  unsigned char region = 7;
  EXPECT_FALSE(stitchingImageImageblendCpu(blank(1), nullptr, {0, 1, kRows, kCols}, {}, {}, {}, {},
                                           result.topLeft, result.bottomRight, result.position,
                                           result.regionInfo, result.mosaic, &region));
  EXPECT_EQ(reports.ofCaller(), Lines{"stitchingImageImageblend ptr is null"});
  EXPECT_EQ(result.topLeft, (SPoint{-1, -2}));
  EXPECT_EQ(result.bottomRight, (SPoint{-3, -4}));
  EXPECT_EQ(result.position, (SPoint{-5, -6}));
  EXPECT_EQ(result.regionInfo.cols, 94);
  EXPECT_TRUE(result.mosaic.empty());
  EXPECT_EQ(region, 7);
}

TEST_F(MosaicBlend, ColourFrameOnBlackIsTheFrame) {
  const RecordedReports reports;
  const Bytes frame = randomFrame(3);
  cv::Mat mosaic = blank(3);
  const Blend result = blend(mosaic, frame, {10, 12}, 5, -2);
  EXPECT_TRUE(result.done);
  EXPECT_EQ(result.region, frame);
  cv::Mat expected = blank(3);
  place(frame, expected, {15, 10, kCols, kRows});
  expectSame(result.mosaic, expected);
  EXPECT_EQ(result.mosaic.data, mosaic.data) << "without growth the pixels are shared";
  EXPECT_EQ(reports.ofCaller(), Lines{});
}

TEST_F(MosaicBlend, GrayFrameOnBlackIsOneDarker) {
  const Bytes frame = randomFrame(1);
  const Blend result = blend(blank(1), frame, {10, 12}, 5, -2);
  Bytes darker = frame;
  for (unsigned char& value : darker) --value;  // 255 v / 256 of a v from 1 on.
  EXPECT_EQ(result.region, darker);
  EXPECT_EQ(pixelsOf(result.mosaic, {15, 10, kCols, kRows}), darker);
}

TEST_F(MosaicBlend, FrameInsideMovesThePositionAndExtendsTheBox) {
  const Blend result = blend(blank(1), randomFrame(1), {20, 20}, 3, 4);
  EXPECT_EQ(result.mosaic.size(), cv::Size(50, 40));
  EXPECT_EQ(result.position, (SPoint{23, 24}));
  EXPECT_EQ(result.topLeft, (SPoint{8, 9}));
  EXPECT_EQ(result.bottomRight, (SPoint{35, 34}));
}

TEST_F(MosaicBlend, RegionIsDescribedAtWorkingSize) {
  for (const int channels : {1, 3}) {
    const Blend result = blend(blank(channels), randomFrame(channels), {20, 20}, 3, 4);
    EXPECT_EQ(result.regionInfo.reserved, 91) << "not touched";
    EXPECT_EQ(result.regionInfo.channels, channels);
    EXPECT_EQ(result.regionInfo.rows, kRows);
    EXPECT_EQ(result.regionInfo.cols, kCols);
  }
}

TEST_F(MosaicBlend, MosaicUnderTheFrameIsFusedWithIt) {
  for (const int channels : {1, 3}) {
    const cv::Rect under(15, 16, kCols, kRows);
    cv::Mat mosaic = blank(channels);
    place(randomFrame(channels), mosaic, {11, 13, kCols, kRows});
    Bytes fused = pixelsOf(mosaic, under);
    const Bytes frame = randomFrame(channels);
    Bytes second = frame;
    ASSERT_TRUE(twoImageFusion(fused.data(), second.data(), channels, 0, kRows, kCols));
    ASSERT_NE(fused, frame);
    cv::Mat expected = mosaic.clone();
    place(fused, expected, under);

    const Blend result = blend(mosaic, frame, {11, 13}, 4, 3);
    EXPECT_EQ(result.region, fused);
    expectSame(result.mosaic, expected);
  }
}

TEST_F(MosaicBlend, NoDisplacementFusesTheSameRegionAgain) {
  const Bytes frame = randomFrame(3);
  cv::Mat mosaic = blank(3);
  place(frame, mosaic, {20, 14, kCols, kRows});
  const cv::Mat before = mosaic.clone();
  const Blend result = blend(mosaic, frame, {20, 14}, 0, 0);
  EXPECT_TRUE(result.done);
  EXPECT_EQ(result.position, (SPoint{20, 14}));
  EXPECT_EQ(result.region, frame) << "a mean of equals";
  expectSame(result.mosaic, before);
}

TEST_F(MosaicBlend, NoDisplacementDarkensGrayByOne) {
  const Bytes frame(area(kRows, kCols), 100);
  cv::Mat mosaic = blank(1);
  place(frame, mosaic, {20, 14, kCols, kRows});
  EXPECT_EQ(blend(mosaic, frame, {20, 14}, 0, 0).region, Bytes(frame.size(), 99));
}

struct Side {
  const char* name;
  SPoint at;  // Where the frame begins before growth.
  int top, bottom, left, right;
};

TEST_F(MosaicBlend, GrowsByAFrameThenBlends) {
  const Side sides[] = {
      {"top", {20, 0}, kRows, 0, 0, 0},         {"above", {20, -6}, kRows, 0, 0, 0},
      {"bottom", {20, 30}, 0, kRows, 0, 0},     {"left", {0, 15}, 0, 0, kCols, 0},
      {"right", {38, 15}, 0, 0, 0, kCols},      {"far right", {45, 15}, 0, 0, 0, kCols},
      {"corner", {-3, -4}, kRows, 0, kCols, 0}, {"other corner", {40, 35}, 0, kRows, 0, kCols},
  };
  for (const Side& side : sides) {
    SCOPED_TRACE(side.name);
    cv::Mat mosaic = blank(3);
    place(randomFrame(3), mosaic, {19, 14, kCols, kRows});
    const cv::Mat before = mosaic.clone();
    cv::Mat expected =
        cv::Mat::zeros(40 + side.top + side.bottom, 50 + side.left + side.right, CV_8UC3);
    before.copyTo(expected(cv::Rect(side.left, side.top, 50, 40)));
    const Bytes frame = randomFrame(3);
    const SPoint placed = {side.at.x + side.left, side.at.y + side.top};
    place(frame, expected, {placed.x, placed.y, kCols, kRows});

    const Blend result = blend(mosaic, frame, {19, 14}, side.at.x - 19, side.at.y - 14);
    EXPECT_TRUE(result.done);
    expectSame(result.mosaic, expected);
    EXPECT_EQ(result.region, frame);
    EXPECT_EQ(result.position, placed);
    EXPECT_EQ(result.topLeft.x, std::min(8 + side.left, placed.x));
    EXPECT_EQ(result.topLeft.y, std::min(9 + side.top, placed.y));
    EXPECT_EQ(result.bottomRight.x, std::max(30 + side.left, placed.x + kCols));
    EXPECT_EQ(result.bottomRight.y, std::max(28 + side.top, placed.y + kRows));
    expectSame(mosaic, before);
  }
}

TEST_F(MosaicBlend, BelowFullScaleTheFrameIsSmallerThanTheGrowth) {
  setWorkingSize(kRows / 2, kCols / 2);
  const Bytes frame = randomFrame(3);
  // The full-size frame would touch the bottom, the working-size one does not.
  const Blend result = blend(blank(3), frame, {20, 20}, 1, 10);
  cv::Mat expected = cv::Mat::zeros(50, 50, CV_8UC3);
  place(frame, expected, {21, 30, kCols / 2, kRows / 2});
  expectSame(result.mosaic, expected);
  EXPECT_EQ(result.regionInfo.rows, kRows / 2);
  EXPECT_EQ(result.regionInfo.cols, kCols / 2);
  EXPECT_EQ(result.bottomRight, (SPoint{30, 35}));
}

TEST_F(MosaicBlend, FailuresInsideAreReportedByTheirRoutinesOnly) {
  const RecordedReports reports;
  Blend result;
  cv::Mat mosaic = blank(1);
  unsigned char frame = 0;
  stitchflags flags = {};
  flags.position = {20, 20};
  flags.offsetX = 2;
  EXPECT_TRUE(stitchingImageImageblendCpu(
      mosaic, &frame, {0, 1, kRows, kCols}, flags, {8, 9}, {30, 28}, {}, result.topLeft,
      result.bottomRight, result.position, result.regionInfo, result.mosaic, nullptr));
  const std::string copyFailed =
      "ptr is null or endBigRow \xA1\xA2"
      "endBigCol overSize";
  EXPECT_EQ(reports.ofCaller(), (Lines{copyFailed, "ptr is null", copyFailed}));
  EXPECT_EQ(result.position, (SPoint{22, 20}));
  EXPECT_EQ(result.regionInfo.channels, 1);
  EXPECT_EQ(result.regionInfo.rows, kRows);
  EXPECT_EQ(result.regionInfo.cols, kCols);
  expectSame(result.mosaic, blank(1));
}

}  // namespace
