// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/frame_source.h"

#include <gtest/gtest.h>

#include <opencv2/videoio.hpp>
#include <string>
#include <vector>

#include "recorded_notes.h"
#include "scenes.h"
#include "temporary_folder.h"
#include "tool_error_text.h"

using framequilt::tool::InputSettings;
using framequilt::tool::openInputs;

namespace {

using Lines = std::vector<std::string>;

class OpenInputs : public testing::Test {
 protected:
  std::string file(const std::string& name) const { return folder_.file(name); }

  void savePictures(const Lines& names) const {
    for (const std::string& name : names) save(file(name), texture(30, 40));
  }
  Lines namesFrom(const Lines& inputs, int every = 1) {
    InputSettings settings = notes_.settings();
    settings.outputs = {file("mosaic.png")};
    settings.every = every;
    return namesOfRest(*openInputs(inputs, settings));
  }
  std::string errorOf(const Lines& inputs) {
    return toolErrorOf([&] { openInputs(inputs, notes_.settings()); });
  }

  TemporaryFolder folder_;
  RecordedNotes notes_;
};

}  // namespace

TEST_F(OpenInputs, FilesFoldersAndPatternsMixInTheOrderGiven) {
  const TemporaryFolder other;
  save(other.file("z.png"), texture(30, 40));
  savePictures({"f2.png", "f10.png", "g1.png", "mosaic.png", "mosaic-outlines.png"});
  EXPECT_EQ(namesFrom({file("g*.png"), other.path(), file("f10.png"), folder_.path()}),
            (Lines{"g1.png", "z.png", "f10.png", "f2.png", "f10.png", "g1.png"}));
}

TEST_F(OpenInputs, EveryNthPictureIsTaken) {
  savePictures({"f1.png", "f2.png", "f3.png", "f4.png", "f5.png"});
  EXPECT_EQ(namesFrom({folder_.path()}, 2), (Lines{"f1.png", "f3.png", "f5.png"}));
  EXPECT_EQ(namesFrom({folder_.path()}, 3), (Lines{"f1.png", "f4.png"}));
  EXPECT_EQ(namesFrom({folder_.path()}, 9), Lines{"f1.png"});
}

TEST_F(OpenInputs, PicturesThatAreNotTakenAreNotLookedAt) {
  savePictures({"f1.png", "f3.png"});
  writeText(file("f2.png"), "no picture");
  EXPECT_EQ(namesFrom({folder_.path()}, 2), (Lines{"f1.png", "f3.png"}));
  EXPECT_EQ(notes_.lines, Lines{});
}

TEST_F(OpenInputs, AVideoIsOpenedByNameOrPattern) {
  cv::VideoWriter writer(file("clip.avi"), cv::CAP_OPENCV_MJPEG,
                         cv::VideoWriter::fourcc('M', 'J', 'P', 'G'), 10, {64, 48});
  for (int i = 0; i < 3; ++i) writer.write(coloured(texture(48, 64)));
  writer.release();
  EXPECT_EQ(namesFrom({file("clip.avi")}, 2), (Lines{"clip.avi#1", "clip.avi#3"}));
  EXPECT_EQ(namesFrom({file("*.avi")}, 2), (Lines{"clip.avi#1", "clip.avi#3"}));
}

TEST_F(OpenInputs, AVideoIsNotMixed) {
  savePictures({"f1.png"});
  writeText(file("clip.avi"), "x");
  EXPECT_EQ(errorOf({file("f1.png"), file("clip.avi")}),
            "'" + file("clip.avi") + "' is a video: give it as the only input");
  EXPECT_EQ(errorOf({file("clip.avi"), file("clip.avi")}),
            "'" + file("clip.avi") + "' is a video: give it as the only input");
}

TEST_F(OpenInputs, ACameraIsNotMixed) {
  EXPECT_EQ(errorOf({"/nowhere/f1.png", "camera:0"}),
            "'camera:0' is a camera: give it as the only input");
}

TEST_F(OpenInputs, ACameraNeedsANumber) {
  EXPECT_EQ(errorOf({"camera:front"}),
            "'camera:front' names no camera: write camera:0 for the first one");
}

TEST_F(OpenInputs, WhatIsMissingIsToldBeforeAnythingIsRead) {
  writeText(file("f1.png"), "no picture");
  EXPECT_EQ(errorOf({file("f1.png"), file("f2.png")}),
            "'" + file("f2.png") + "' cannot be found (No such file or directory): check the path");
  EXPECT_EQ(notes_.lines, Lines{});
}

TEST_F(OpenInputs, FramesAreNumberedAsTheyStandInTheCapture) {
  savePictures({"f1.png", "f2.png", "f4.png", "f5.png", "f7.png"});
  writeText(file("f3.png"), "no picture");
  writeText(file("f6.png"), "no picture");
  const auto numbers = [&](int every) {
    InputSettings settings = notes_.settings();
    settings.every = every;
    const auto source = openInputs({folder_.path()}, settings);
    std::vector<std::size_t> found;
    while (const auto frame = source->next()) found.push_back(frame->number);
    return found;
  };
  EXPECT_EQ(numbers(1), (std::vector<std::size_t>{1, 2, 4, 5, 7}));
  EXPECT_EQ(numbers(2), (std::vector<std::size_t>{1, 5, 7}));
  EXPECT_EQ(numbers(3), (std::vector<std::size_t>{1, 4, 7}));
}
