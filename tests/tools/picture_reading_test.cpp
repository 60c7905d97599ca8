// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/picture_reading.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "picture_files.h"
#include "same_pixels.h"
#include "scenes.h"
#include "temporary_folder.h"

using framequilt::tool::PictureError;
using framequilt::tool::PictureHeader;
using framequilt::tool::readHeader;
using framequilt::tool::readPicture;

namespace {

class PictureReading : public testing::Test {
 protected:
  std::string file(const std::string& name) const { return folder_.file(name); }

  /// What is wrong with the header, after the name.
  std::string headerError(const std::string& name) const {
    return errorOf(name, [](const std::string& path) { readHeader(path); });
  }
  /// What is wrong with the pixels, after the name.
  std::string pixelError(const std::string& name) const {
    return errorOf(name, [](const std::string& path) { readPicture(path, 3); });
  }

  TemporaryFolder folder_;

 private:
  template <class Action>
  std::string errorOf(const std::string& name, Action action) const {
    try {
      action(file(name));
    } catch (const PictureError& failure) {
      const std::string text = failure.what();
      const std::string quoted = "'" + file(name) + "' ";
      return text.rfind(quoted, 0) == 0 ? text.substr(quoted.size()) : "names no file: " + text;
    }
    return "no error";
  }
};

constexpr const char* kUnreadable = "cannot be read as a picture";
constexpr const char* kDamaged = "is damaged (its pixels end early or are wrong)";

cv::Mat gray(unsigned char a, unsigned char b) { return (cv::Mat_<unsigned char>(1, 2) << a, b); }

cv::Mat bgr(const cv::Vec3b& a, const cv::Vec3b& b) { return (cv::Mat_<cv::Vec3b>(1, 2) << a, b); }

}  // namespace

TEST_F(PictureReading, AHeaderTellsSizeAndColour) {
  save(file("gray.png"), texture(30, 40));
  save(file("colour.png"), coloured(texture(20, 50)));
  const PictureHeader plain = readHeader(file("gray.png"));
  EXPECT_EQ(plain.rows, 30);
  EXPECT_EQ(plain.cols, 40);
  EXPECT_FALSE(plain.colour || plain.sixteenBits || plain.transparency || plain.turned ||
               plain.cmyk);
  const PictureHeader colour = readHeader(file("colour.png"));
  EXPECT_EQ(colour.rows, 20);
  EXPECT_EQ(colour.cols, 50);
  EXPECT_TRUE(colour.colour);
}

TEST_F(PictureReading, LosslessFormatsGiveEveryPixel) {
  const cv::Mat plain = texture(30, 41);
  const cv::Mat colour = noise(31, 40);
  for (const char* extension : {".png", ".tif", ".bmp", ".ppm", ".pgm"}) {
    const std::string name = file(std::string("a") + extension);
    if (std::string(extension) != ".ppm") {
      save(name, plain);
      EXPECT_FALSE(readHeader(name).colour) << extension;
      EXPECT_TRUE(samePixels(readPicture(name, 1), plain)) << extension;
    }
    if (std::string(extension) != ".pgm") {
      save(name, colour);
      EXPECT_TRUE(readHeader(name).colour) << extension;
      EXPECT_TRUE(samePixels(readPicture(name, 3), colour)) << extension;
    }
  }
}

TEST_F(PictureReading, AJpegIsReadAsOpenCvReadsIt) {
  save(file("a.jpg"), noise(30, 40));
  EXPECT_TRUE(samePixels(readPicture(file("a.jpg"), 3), cv::imread(file("a.jpg"))));
}

TEST_F(PictureReading, AGrayPictureInColourHasThreeEqualChannels) {
  const cv::Mat expected = bgr({1, 1, 1}, {255, 255, 255});
  for (const char* name : {"a.png", "a.bmp"}) {
    save(file(name), gray(1, 255));
    EXPECT_TRUE(samePixels(readPicture(file(name), 3), expected)) << name;
  }
}

TEST_F(PictureReading, SixteenBitsAreCutToTheUpperEight) {
  const cv::Mat picture = (cv::Mat_<std::uint16_t>(1, 5) << 0, 256, 25855, 32896, 65535);
  const cv::Mat expected = (cv::Mat_<unsigned char>(1, 5) << 0, 1, 100, 128, 255);
  for (const char* name : {"a.png", "a.tif"}) {
    save(file(name), picture);
    EXPECT_TRUE(readHeader(file(name)).sixteenBits) << name;
    EXPECT_TRUE(samePixels(readPicture(file(name), 1), expected)) << name;
    save(file(name), coloured(picture));
    EXPECT_TRUE(readHeader(file(name)).sixteenBits) << name;
    EXPECT_TRUE(samePixels(readPicture(file(name), 3), coloured(expected))) << name;
  }
}

TEST_F(PictureReading, TransparencyIsDroppedAndNotBlended) {
  save(file("a.png"),
       (cv::Mat_<cv::Vec4b>(1, 2) << cv::Vec4b(10, 20, 30, 255), cv::Vec4b(40, 50, 60, 0)));
  const PictureHeader header = readHeader(file("a.png"));
  EXPECT_TRUE(header.transparency);
  EXPECT_TRUE(header.colour);
  EXPECT_TRUE(samePixels(readPicture(file("a.png"), 3), bgr({10, 20, 30}, {40, 50, 60})));
}

TEST_F(PictureReading, TransparencyOfSixteenBitsIsDroppedToo) {
  save(file("a.png"), cv::Mat(1, 2, CV_16UC4, cv::Scalar(10 * 256, 20 * 256, 30 * 256, 256)));
  const PictureHeader header = readHeader(file("a.png"));
  EXPECT_TRUE(header.transparency);
  EXPECT_TRUE(header.sixteenBits);
  EXPECT_TRUE(samePixels(readPicture(file("a.png"), 3), bgr({10, 20, 30}, {10, 20, 30})));
}

TEST_F(PictureReading, GrayWithTransparencyStaysGray) {
  saveByVips(file("a.png"), (cv::Mat_<cv::Vec2b>(1, 2) << cv::Vec2b(10, 255), cv::Vec2b(200, 3)),
             VIPS_INTERPRETATION_B_W);
  const PictureHeader header = readHeader(file("a.png"));
  EXPECT_TRUE(header.transparency);
  EXPECT_FALSE(header.colour);
  EXPECT_TRUE(samePixels(readPicture(file("a.png"), 1), gray(10, 200)));
}

TEST_F(PictureReading, APaletteGivesItsColours) {
  writeText(file("a.png"), palettePng());
  const PictureHeader header = readHeader(file("a.png"));
  EXPECT_TRUE(header.colour);
  EXPECT_FALSE(header.transparency);
  EXPECT_TRUE(samePixels(readPicture(file("a.png"), 3), bgr({50, 100, 200}, {30, 20, 10})));
}

TEST_F(PictureReading, CmykBecomesRgb) {
  // No ink is white; black ink alone is dark and has no hue.
  cv::Mat inks(16, 32, CV_8UC4, cv::Scalar::all(0));
  inks.colRange(16, 32).setTo(cv::Scalar(0, 0, 0, 255));
  saveByVips(file("a.jpg"), inks, VIPS_INTERPRETATION_CMYK);
  const PictureHeader header = readHeader(file("a.jpg"));
  EXPECT_TRUE(header.cmyk);
  EXPECT_TRUE(header.colour);
  EXPECT_FALSE(header.transparency);
  const cv::Mat picture = readPicture(file("a.jpg"), 3);
  ASSERT_EQ(picture.size(), cv::Size(32, 16));
  const auto white = picture.at<cv::Vec3b>(8, 4);
  const auto black = picture.at<cv::Vec3b>(8, 28);
  for (int channel = 0; channel < 3; ++channel) {
    EXPECT_GT(white[channel], 240) << channel;
    EXPECT_LT(black[channel], 80) << channel;
  }
}

TEST_F(PictureReading, APictureIsTurnedUprightAsItsExifDataSay) {
  const cv::Mat stored = noise(24, 40);
  writeText(file("1.jpg"), jpegWithOrientation(stored, 1));
  const cv::Mat plain = readPicture(file("1.jpg"), 3);
  cv::Mat upright[9];
  upright[1] = plain;
  cv::flip(plain, upright[2], 1);
  cv::rotate(plain, upright[3], cv::ROTATE_180);
  cv::flip(plain, upright[4], 0);
  cv::transpose(plain, upright[5]);
  cv::rotate(plain, upright[6], cv::ROTATE_90_CLOCKWISE);
  cv::rotate(upright[5], upright[7], cv::ROTATE_180);
  cv::rotate(plain, upright[8], cv::ROTATE_90_COUNTERCLOCKWISE);
  for (int number = 1; number <= 8; ++number) {
    const std::string name = file(std::to_string(number) + ".jpg");
    writeText(name, jpegWithOrientation(stored, number));
    const PictureHeader header = readHeader(name);
    EXPECT_EQ(cv::Size(header.cols, header.rows), upright[number].size()) << number;
    EXPECT_EQ(header.turned, number != 1) << number;
    EXPECT_TRUE(samePixels(readPicture(name, 3), upright[number])) << number;
  }
}

TEST_F(PictureReading, TheContentCountsAndNotTheExtension) {
  save(file("a.png"), texture(30, 40));
  std::filesystem::rename(file("a.png"), file("a.jpg"));
  EXPECT_EQ(readHeader(file("a.jpg")).cols, 40);
}

TEST_F(PictureReading, BracketsInANameAreNoOptions) {
  save(file("a[b].png"), texture(30, 40));
  EXPECT_TRUE(samePixels(readPicture(file("a[b].png"), 1), texture(30, 40)));
}

TEST_F(PictureReading, APictureCutInHalfIsDamagedAndNotHalfRead) {
  for (const char* name : {"a.jpg", "a.png", "a.ppm", "a.jp2"}) {
    save(file(name), noise(64, 80));
    cutInHalf(file(name));
    EXPECT_EQ(headerError(name), "no error") << name;
    EXPECT_EQ(pixelError(name), kDamaged) << name;
  }
}

TEST_F(PictureReading, APictureThatLacksItsLastBytesIsDamaged) {
  save(file("a.jpg"), noise(64, 80));
  const std::string bytes = readText(file("a.jpg"));
  writeText(file("a.jpg"), bytes.substr(0, bytes.size() - 20));
  EXPECT_EQ(pixelError("a.jpg"), kDamaged);
}

TEST_F(PictureReading, AFormatWhoseIndexIsAtTheEndIsUnreadableOnceCut) {
  for (const char* name : {"a.tif", "a.webp"}) {
    save(file(name), noise(64, 80));
    cutInHalf(file(name));
    EXPECT_EQ(headerError(name), kUnreadable) << name;
    EXPECT_EQ(pixelError(name), kUnreadable) << name;
  }
}

TEST_F(PictureReading, ABitmapCutInHalfIsDamaged) {
  save(file("a.bmp"), noise(64, 80));
  cutInHalf(file("a.bmp"));
  EXPECT_EQ(headerError("a.bmp"), kDamaged);
  EXPECT_EQ(pixelError("a.bmp"), kDamaged);
}

TEST_F(PictureReading, AWrongChecksumIsDamage) {
  save(file("a.png"), noise(64, 80));
  std::string bytes = readText(file("a.png"));
  bytes[bytes.size() / 2] = static_cast<char>(bytes[bytes.size() / 2] ^ 0x5A);
  writeText(file("a.png"), bytes);
  EXPECT_EQ(pixelError("a.png"), kDamaged);
}

TEST_F(PictureReading, WhatIsNoPictureIsUnreadable) {
  writeText(file("text.jpg"), "this is no picture");
  writeText(file("matrix.png"), "2 2\n1 2\n3 4\n");  // libvips would take it for a picture.
  writeText(file("drawing.png"), "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>");
  writeText(file("empty.jpg"), "");
  std::filesystem::create_directory(file("folder.png"));
  for (const char* name : {"text.jpg", "matrix.png", "drawing.png", "empty.jpg", "folder.png"}) {
    EXPECT_EQ(headerError(name), kUnreadable) << name;
    EXPECT_EQ(pixelError(name), kUnreadable) << name;
  }
}

TEST_F(PictureReading, FloatingPointIsRefused) {
  save(file("a.tif"), cv::Mat(4, 4, CV_32FC1, cv::Scalar(0.5)));
  EXPECT_EQ(headerError("a.tif"), "has neither 8 nor 16 bits per channel");
  EXPECT_EQ(pixelError("a.tif"), "has neither 8 nor 16 bits per channel");
}

TEST_F(PictureReading, AMissingFileIsNamedWithTheReason) {
  EXPECT_EQ(headerError("none.png"), "cannot be opened (No such file or directory)");
  EXPECT_EQ(pixelError("none.png"), "cannot be opened (No such file or directory)");
}

TEST_F(PictureReading, NothingIsPrinted) {
  save(file("a.jpg"), noise(64, 80));
  save(file("b.bmp"), noise(64, 80));
  save(file("c.png"), noise(64, 80));
  testing::internal::CaptureStderr();
  for (const char* name : {"a.jpg", "b.bmp", "c.png"}) {
    cutInHalf(file(name));
    EXPECT_EQ(pixelError(name), kDamaged) << name;
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}
