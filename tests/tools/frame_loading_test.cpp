// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/frame_loading.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "scenes.h"
#include "temporary_folder.h"
#include "tools/framequilt/tool_error.h"

using framequilt::tool::CaptureShape;
using framequilt::tool::loadFrame;
using framequilt::tool::surveyPictures;
using framequilt::tool::ToolError;

namespace {

std::string errorOf(const std::vector<std::filesystem::path>& pictures) {
  try {
    surveyPictures(pictures);
  } catch (const ToolError& failure) {
    return failure.what();
  }
  return "no error";
}

bool same(const cv::Mat& a, const cv::Mat& b) {
  return a.type() == b.type() && a.size() == b.size() && cv::norm(a, b, cv::NORM_INF) == 0;
}

}  // namespace

TEST(FrameLoading, GrayPicturesGiveAGrayRun) {
  const TemporaryFolder folder;
  save(folder.file("a.png"), texture(30, 40));
  save(folder.file("b.png"), texture(30, 40, 8));
  const CaptureShape shape = surveyPictures({folder.file("a.png"), folder.file("b.png")});
  EXPECT_EQ(shape.rows, 30);
  EXPECT_EQ(shape.cols, 40);
  EXPECT_EQ(shape.channels, 1);
}

TEST(FrameLoading, OneColourPictureGivesAColourRun) {
  const TemporaryFolder folder;
  save(folder.file("a.png"), texture(30, 40));
  save(folder.file("b.png"), coloured(texture(30, 40)));
  EXPECT_EQ(surveyPictures({folder.file("a.png"), folder.file("b.png")}).channels, 3);
  EXPECT_EQ(surveyPictures({folder.file("b.png"), folder.file("a.png")}).channels, 3);
}

TEST(FrameLoading, AGrayPictureOfAColourRunHasThreeEqualChannels) {
  const TemporaryFolder folder;
  cv::Mat gray = (cv::Mat_<unsigned char>(1, 3) << 1, 100, 255);
  save(folder.file("a.png"), gray);
  const cv::Mat expected = (cv::Mat_<cv::Vec3b>(1, 3) << cv::Vec3b(1, 1, 1),
                            cv::Vec3b(100, 100, 100), cv::Vec3b(255, 255, 255));
  EXPECT_TRUE(same(loadFrame(folder.file("a.png"), 3), expected));
}

TEST(FrameLoading, BlackBytesBecomeOne) {
  const TemporaryFolder folder;
  cv::Mat picture = (cv::Mat_<cv::Vec3b>(1, 2) << cv::Vec3b(0, 0, 0), cv::Vec3b(0, 7, 255));
  save(folder.file("a.png"), picture);
  const cv::Mat expected = (cv::Mat_<cv::Vec3b>(1, 2) << cv::Vec3b(1, 1, 1), cv::Vec3b(1, 7, 255));
  EXPECT_TRUE(same(loadFrame(folder.file("a.png"), 3), expected));
}

TEST(FrameLoading, SixteenBitsAreScaledToEight) {
  const TemporaryFolder folder;
  cv::Mat picture = (cv::Mat_<std::uint16_t>(1, 4) << 257, 25700, 65535, 32896);
  save(folder.file("a.png"), picture);
  const cv::Mat expected = (cv::Mat_<unsigned char>(1, 4) << 1, 100, 255, 128);
  EXPECT_TRUE(same(loadFrame(folder.file("a.png"), 1), expected));
  EXPECT_EQ(surveyPictures({folder.file("a.png")}).channels, 1);
}

TEST(FrameLoading, TransparencyIsDropped) {
  const TemporaryFolder folder;
  cv::Mat picture =
      (cv::Mat_<cv::Vec4b>(1, 2) << cv::Vec4b(10, 20, 30, 255), cv::Vec4b(40, 50, 60, 1));
  save(folder.file("a.png"), picture);
  const cv::Mat expected =
      (cv::Mat_<cv::Vec3b>(1, 2) << cv::Vec3b(10, 20, 30), cv::Vec3b(40, 50, 60));
  EXPECT_EQ(surveyPictures({folder.file("a.png")}).channels, 3);
  EXPECT_TRUE(same(loadFrame(folder.file("a.png"), 3), expected));
}

TEST(FrameLoading, FloatingPointPicturesAreRefused) {
  const TemporaryFolder folder;
  save(folder.file("a.tif"), cv::Mat(4, 4, CV_32FC1, cv::Scalar(0.5)));
  EXPECT_EQ(
      errorOf({folder.file("a.tif")}),
      "'" + folder.file("a.tif") + "' has neither 8 nor 16 bits per channel: convert it to 8 bits");
}

TEST(FrameLoading, AnUnreadablePictureIsNamed) {
  const TemporaryFolder folder;
  save(folder.file("a.png"), texture(30, 40));
  writeText(folder.file("b.png"), "this is no picture");
  EXPECT_EQ(errorOf({folder.file("a.png"), folder.file("b.png")}),
            "'" + folder.file("b.png") +
                "' cannot be read as a picture: leave it out or save it again as .png or .jpg");
}

TEST(FrameLoading, AMissingPictureIsNamed) {
  EXPECT_EQ(errorOf({"/nowhere/a.png"}),
            "'/nowhere/a.png' cannot be opened (No such file or directory): check the path and its "
            "permissions");
}

TEST(FrameLoading, APictureOfAnotherSizeIsNamedWithBothSizes) {
  const TemporaryFolder folder;
  save(folder.file("a.png"), texture(30, 40));
  save(folder.file("b.png"), texture(30, 41));
  EXPECT_EQ(errorOf({folder.file("a.png"), folder.file("b.png")}),
            "'" + folder.file("b.png") + "' has 41 x 30 pixels but '" + folder.file("a.png") +
                "' has 40 x 30 pixels: give pictures of one size");
}
