// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/model/mosaic_patch.h"

#include <gtest/gtest.h>

#include "tools/viewer/model/grid.h"

namespace framequilt::viewer {
namespace {

TEST(Grid, DivisionRoundsDownAndUpAlsoBelowZero) {
  EXPECT_EQ(floorDiv(7, 4), 1);
  EXPECT_EQ(floorDiv(-1, 4), -1);
  EXPECT_EQ(floorDiv(-4, 4), -1);
  EXPECT_EQ(floorDiv(-5, 4), -2);
  EXPECT_EQ(ceilDiv(5, 4), 2);
  EXPECT_EQ(ceilDiv(-5, 4), -1);
}

TEST(Grid, CellsCoverPixels) {
  EXPECT_EQ(cellsOver({-3, 5, 10, 3}, 4), cv::Rect(-1, 1, 3, 1));
  EXPECT_TRUE(cellsOver({3, 3, 0, 2}, 4).empty());
}

TEST(MosaicPatch, ColoursAreOpaqueAndNothingIsClear) {
  cv::Mat pixels(1, 2, CV_8UC3, cv::Scalar(0, 0, 0));
  pixels.at<cv::Vec3b>(0, 0) = {10, 20, 30};
  const QImage picture = pictureOf(pixels);
  EXPECT_EQ(picture.pixel(0, 0), qRgba(30, 20, 10, 255));
  EXPECT_EQ(picture.pixel(1, 0), qRgba(0, 0, 0, 0));
}

TEST(MosaicPatch, GrayIsTheSameInEveryColour) {
  const cv::Mat pixels = (cv::Mat_<unsigned char>(1, 2) << 77, 0);
  const QImage picture = pictureOf(pixels);
  EXPECT_EQ(picture.pixel(0, 0), qRgba(77, 77, 77, 255));
  EXPECT_EQ(qAlpha(picture.pixel(1, 0)), 0);
}

TEST(MosaicPatch, HalvedIsTheRoundedMean) {
  QImage picture(2, 2, QImage::Format_ARGB32_Premultiplied);
  picture.setPixel(0, 0, 0xff0000ff);
  picture.setPixel(1, 0, 0xff0100fe);
  picture.setPixel(0, 1, 0xff0200ff);
  picture.setPixel(1, 1, 0xff0300ff);
  EXPECT_EQ(halved(picture).pixel(0, 0), 0xff0200ffU);  // 1.5 and 254.75
}

TEST(MosaicPatch, IsAlignedAndBringsThreeSizes) {
  cv::Rect asked;
  const MosaicPatch patch = readPatch(
      [&asked](const cv::Rect& part) {
        asked = part;
        return cv::Mat(part.size(), CV_8UC1, cv::Scalar(9));
      },
      {-3, 2, 6, 5});
  EXPECT_EQ(asked, cv::Rect(-4, 0, 8, 8));
  EXPECT_EQ(patch.area, asked);
  EXPECT_EQ(patch.levels[0].size(), QSize(8, 8));
  EXPECT_EQ(patch.levels[1].size(), QSize(4, 4));
  EXPECT_EQ(patch.levels[2].size(), QSize(2, 2));
  EXPECT_EQ(patch.levels[2].pixel(1, 1), qRgba(9, 9, 9, 255));
}

TEST(MosaicPatch, NothingChangedIsNotRead) {
  const MosaicPatch patch =
      readPatch([](const cv::Rect&) -> cv::Mat { throw std::logic_error("read"); }, cv::Rect());
  EXPECT_TRUE(patch.area.empty());
}

}  // namespace
}  // namespace framequilt::viewer
