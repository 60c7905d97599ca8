// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/picture_source.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "picture_files.h"
#include "recorded_notes.h"
#include "same_pixels.h"
#include "scenes.h"
#include "temporary_folder.h"
#include "tool_error_text.h"

using framequilt::tool::FrameSource;
using framequilt::tool::InputSettings;
using framequilt::tool::openPictures;

namespace {

using Lines = std::vector<std::string>;

class PictureSource : public testing::Test {
 protected:
  std::string file(const std::string& name) const { return folder_.file(name); }
  std::string quoted(const std::string& name) const { return "'" + file(name) + "'"; }

  std::unique_ptr<FrameSource> open(const Lines& names) {
    return openPictures(paths(names), notes_.settings());
  }
  std::vector<std::filesystem::path> paths(const Lines& names) const {
    std::vector<std::filesystem::path> found;
    for (const std::string& name : names) found.emplace_back(file(name));
    return found;
  }
  std::string errorOf(const Lines& names, const InputSettings& settings) const {
    return toolErrorOf([&] { openPictures(paths(names), settings); });
  }

  TemporaryFolder folder_;
  RecordedNotes notes_;
};

}  // namespace

TEST_F(PictureSource, GivesThePicturesInOrderAndThenNothing) {
  save(file("b.png"), texture(30, 40));
  save(file("a.png"), texture(30, 40, 8));
  const auto source = open({"b.png", "a.png"});
  EXPECT_EQ(source->shape().rows, 30);
  EXPECT_EQ(source->shape().cols, 40);
  EXPECT_EQ(source->shape().channels, 1);
  EXPECT_EQ(source->count(), 2U);
  const auto first = source->next();
  ASSERT_TRUE(first);
  EXPECT_EQ(first->name, "b.png");
  EXPECT_EQ(first->path, file("b.png"));
  EXPECT_TRUE(samePixels(first->pixels, texture(30, 40)));
  const auto second = source->next();
  ASSERT_TRUE(second);
  EXPECT_EQ(second->name, "a.png");
  EXPECT_TRUE(samePixels(second->pixels, texture(30, 40, 8)));
  EXPECT_FALSE(source->next());
  EXPECT_FALSE(source->next());
  EXPECT_EQ(source->skipped(), 0U);
  EXPECT_EQ(source->dropped(), 0U);
  EXPECT_EQ(notes_.lines, Lines{});
}

TEST_F(PictureSource, OneColourPictureMakesTheCaptureColour) {
  save(file("a.png"), texture(30, 40));
  save(file("b.png"), coloured(texture(30, 40, 8)));
  for (const Lines& order : {Lines{"a.png", "b.png"}, Lines{"b.png", "a.png"}}) {
    const auto source = open(order);
    EXPECT_EQ(source->shape().channels, 3);
    EXPECT_EQ(source->next()->pixels.type(), CV_8UC3);
    EXPECT_EQ(source->next()->pixels.type(), CV_8UC3);
  }
  EXPECT_EQ(notes_.lines, Lines{});
}

TEST_F(PictureSource, AColourPictureThatIsLeftOutDoesNotCount) {
  save(file("a.png"), texture(30, 40));
  save(file("b.png"), coloured(texture(30, 41)));
  save(file("c.png"), texture(30, 40));
  EXPECT_EQ(open({"a.png", "b.png", "c.png"})->shape().channels, 1);
}

TEST_F(PictureSource, TheCommonSizeIsTheCaptures) {
  save(file("a.png"), texture(30, 41));
  save(file("b.png"), texture(30, 40));
  save(file("c.png"), texture(30, 40));
  save(file("d.png"), texture(20, 40));
  const auto source = open({"a.png", "b.png", "c.png", "d.png"});
  EXPECT_EQ(source->shape().rows, 30);
  EXPECT_EQ(source->shape().cols, 40);
  EXPECT_EQ(source->count(), 2U);
  EXPECT_EQ(source->skipped(), 2U);
  EXPECT_EQ(namesOfRest(*source), (Lines{"b.png", "c.png"}));
  EXPECT_EQ(
      notes_.lines,
      (Lines{quoted("a.png") + " has 41 x 30 pixels, the capture has 40 x 30 pixels: left out",
             quoted("d.png") + " has 40 x 20 pixels, the capture has 40 x 30 pixels: left out"}));
}

TEST_F(PictureSource, OfEquallyCommonSizesTheFirstIsTaken) {
  save(file("a.png"), texture(30, 41));
  save(file("b.png"), texture(30, 40));
  save(file("c.png"), texture(30, 40));
  save(file("d.png"), texture(30, 41));
  EXPECT_EQ(namesOfRest(*open({"a.png", "b.png", "c.png", "d.png"})), (Lines{"a.png", "d.png"}));
}

TEST_F(PictureSource, PicturesThatCannotBeReadAreLeftOut) {
  save(file("a.png"), texture(30, 40));
  writeText(file("text.jpg"), "this is no picture");
  writeText(file("empty.png"), "");
  save(file("float.tif"), cv::Mat(30, 40, CV_32FC1, cv::Scalar(0.5)));
  save(file("z.png"), texture(30, 40));
  const auto source = open({"text.jpg", "a.png", "empty.png", "float.tif", "gone.png", "z.png"});
  EXPECT_EQ(source->count(), 2U);
  EXPECT_EQ(source->skipped(), 4U);
  EXPECT_EQ(namesOfRest(*source), (Lines{"a.png", "z.png"}));
  EXPECT_EQ(
      notes_.lines,
      (Lines{quoted("text.jpg") + " cannot be read as a picture: left out",
             quoted("empty.png") + " cannot be read as a picture: left out",
             quoted("float.tif") + " has neither 8 nor 16 bits per channel: left out",
             quoted("gone.png") + " cannot be opened (No such file or directory): left out"}));
}

TEST_F(PictureSource, APictureWhosePixelsAreDamagedIsLeftOutWhenItsTurnComes) {
  save(file("a.jpg"), texture(60, 80));
  save(file("b.jpg"), texture(60, 80));
  cutInHalf(file("b.jpg"));
  save(file("c.jpg"), texture(60, 80));
  const auto source = open({"a.jpg", "b.jpg", "c.jpg"});
  EXPECT_EQ(source->count(), 3U);
  EXPECT_EQ(source->skipped(), 0U);
  EXPECT_EQ(notes_.lines, Lines{});
  EXPECT_EQ(namesOfRest(*source), (Lines{"a.jpg", "c.jpg"}));
  EXPECT_EQ(source->count(), 2U);
  EXPECT_EQ(source->skipped(), 1U);
  EXPECT_EQ(notes_.lines,
            Lines{quoted("b.jpg") + " is damaged (its pixels end early or are wrong): left out"});
}

TEST_F(PictureSource, APictureThatChangesMeanwhileIsLeftOut) {
  for (const char* name : {"a.png", "b.png", "c.png"}) save(file(name), texture(30, 40));
  const auto source = open({"a.png", "b.png", "c.png"});
  save(file("a.png"), texture(30, 41));
  std::filesystem::remove(file("b.png"));
  EXPECT_EQ(namesOfRest(*source), Lines{"c.png"});
  EXPECT_EQ(source->skipped(), 2U);
  EXPECT_EQ(
      notes_.lines,
      (Lines{quoted("a.png") + " has 41 x 30 pixels, the capture has 40 x 30 pixels: left out",
             quoted("b.png") + " cannot be opened (No such file or directory): left out"}));
}

TEST_F(PictureSource, EachConversionIsNotedOnceForOnePicture) {
  save(file("deep.png"), cv::Mat(30, 40, CV_16UC1, cv::Scalar(2560)));
  save(file("clear.png"), cv::Mat(30, 40, CV_8UC4, cv::Scalar::all(9)));
  saveByVips(file("inks.jpg"), cv::Mat(30, 40, CV_8UC4, cv::Scalar::all(9)),
             VIPS_INTERPRETATION_CMYK);
  writeText(file("turned.jpg"), jpegWithOrientation(texture(40, 30), 6));
  const auto source = open({"turned.jpg", "inks.jpg", "clear.png", "deep.png"});
  EXPECT_EQ(source->count(), 4U);
  EXPECT_EQ(notes_.lines,
            (Lines{quoted("deep.png") + " has 16 bits per channel: converted to 8",
                   quoted("clear.png") + " has a transparency channel: dropped",
                   quoted("inks.jpg") + " has CMYK colours: converted to RGB",
                   quoted("turned.jpg") + " is turned upright as its EXIF data say"}));
}

TEST_F(PictureSource, EachConversionIsNotedOnceForSeveralPictures) {
  Lines names;
  for (const char* number : {"1", "2", "3"}) {
    const std::string n = number;
    save(file("deep" + n + ".png"), cv::Mat(30, 40, CV_16UC4, cv::Scalar::all(2560)));
    saveByVips(file("inks" + n + ".jpg"), cv::Mat(30, 40, CV_8UC4, cv::Scalar::all(9)),
               VIPS_INTERPRETATION_CMYK);
    writeText(file("turned" + n + ".jpg"), jpegWithOrientation(texture(40, 30), 8));
    names.insert(names.end(), {"deep" + n + ".png", "inks" + n + ".jpg", "turned" + n + ".jpg"});
  }
  open(names);
  EXPECT_EQ(
      notes_.lines,
      (Lines{quoted("deep1.png") + " and 2 more have 16 bits per channel: converted to 8",
             quoted("deep1.png") + " and 2 more have a transparency channel: dropped",
             quoted("inks1.jpg") + " and 2 more have CMYK colours: converted to RGB",
             quoted("turned1.jpg") + " and 2 more are turned upright as their EXIF data say"}));
}

TEST_F(PictureSource, TheUprightSizeCounts) {
  writeText(file("turned.jpg"), jpegWithOrientation(texture(40, 30), 6));
  save(file("a.jpg"), texture(30, 40));
  const auto source = open({"turned.jpg", "a.jpg"});
  EXPECT_EQ(source->count(), 2U);
  EXPECT_EQ(source->next()->pixels.size(), cv::Size(40, 30));
}

TEST_F(PictureSource, NoReadablePictureIsAnError) {
  writeText(file("a.png"), "no picture");
  writeText(file("b.png"), "");
  EXPECT_EQ(errorOf({"a.png", "b.png"}, {}), "none of the 2 pictures can be read, the first is " +
                                                 quoted("a.png") +
                                                 ": save them again as .png or .jpg");
  EXPECT_EQ(errorOf({"a.png"}, {}), quoted("a.png") +
                                        ", the only picture, cannot be read: save it again as "
                                        ".png or .jpg");
}

TEST_F(PictureSource, AnInterruptionEndsTheFrames) {
  for (const char* name : {"a.png", "b.png"}) save(file(name), texture(30, 40));
  bool stop = false;
  InputSettings settings = notes_.settings();
  settings.interrupted = [&] { return stop; };
  const auto source = openPictures(paths({"a.png", "b.png"}), settings);
  EXPECT_TRUE(source->next());
  stop = true;
  EXPECT_FALSE(source->next());
}

TEST_F(PictureSource, AnInterruptionEndsTheLookAtTheHeaders) {
  for (const char* name : {"a.png", "b.png"}) save(file(name), texture(30, 40));
  int looks = 0;
  InputSettings settings = notes_.settings();
  settings.interrupted = [&] { return ++looks > 1; };
  EXPECT_EQ(openPictures(paths({"a.png", "b.png"}), settings)->count(), 1U);
  settings.interrupted = [] { return true; };
  EXPECT_EQ(errorOf({"a.png", "b.png"}, settings), "interrupted before a picture was read");
}
