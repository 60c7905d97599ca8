// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/video_source.h"

#include <gtest/gtest.h>

#include <opencv2/core/utils/logger.hpp>
#include <opencv2/videoio.hpp>
#include <string>
#include <vector>

#include "recorded_notes.h"
#include "scenes.h"
#include "temporary_folder.h"
#include "tool_error_text.h"

using framequilt::tool::InputSettings;
using framequilt::tool::namesVideo;
using framequilt::tool::openVideo;

namespace {

using Lines = std::vector<std::string>;

constexpr int kRows = 48;
constexpr int kCols = 64;

class VideoSource : public testing::Test {
 protected:
  void SetUp() override {
    cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
    cv::VideoWriter writer(clip(), cv::CAP_OPENCV_MJPEG,
                           cv::VideoWriter::fourcc('M', 'J', 'P', 'G'), 10, {kCols, kRows});
    for (std::uint64_t i = 1; i <= 7; ++i) writer.write(frame(i));
    if (!writer.isOpened()) throw std::runtime_error("cannot write " + clip());
  }

  static cv::Mat frame(std::uint64_t number) { return coloured(texture(kRows, kCols, number)); }
  std::string clip() const { return folder_.file("clip.avi"); }

  static std::string errorOf(const std::string& file) {
    return toolErrorOf([&] { openVideo(file, {}); });
  }

  TemporaryFolder folder_;
  RecordedNotes notes_;
};

}  // namespace

TEST_F(VideoSource, AVideoIsKnownByItsExtension) {
  for (const char* name : {"a.avi", "a.mp4", "a.mkv", "a.mov", "a.webm", "a.mpg", "a.mpeg", "a.m4v",
                           "a.wmv", "a.ogv", "a.ts", "A.AVI", "x/y.Mp4"}) {
    EXPECT_TRUE(namesVideo(name)) << name;
  }
  for (const char* name : {"a.png", "avi", "a.avi.png", ""}) EXPECT_FALSE(namesVideo(name)) << name;
}

TEST_F(VideoSource, GivesAllFramesInColour) {
  const auto source = openVideo(clip(), notes_.settings());
  EXPECT_EQ(source->shape().rows, kRows);
  EXPECT_EQ(source->shape().cols, kCols);
  EXPECT_EQ(source->shape().channels, 3);
  EXPECT_EQ(source->count(), 7U);
  for (std::uint64_t number = 1; number <= 7; ++number) {
    const auto taken = source->next();
    ASSERT_TRUE(taken) << number;
    EXPECT_EQ(taken->name, "clip.avi#" + std::to_string(number));
    EXPECT_EQ(taken->path, "");
    ASSERT_EQ(taken->pixels.type(), CV_8UC3) << number;
    // The codec loses a little; another frame would be some 70 levels away.
    EXPECT_LT(cv::norm(taken->pixels, frame(number), cv::NORM_L1) / (3.0 * kRows * kCols), 10.0)
        << number;
  }
  EXPECT_FALSE(source->next());
  EXPECT_EQ(source->skipped(), 0U);
  EXPECT_EQ(source->dropped(), 0U);
  EXPECT_EQ(notes_.lines, Lines{});
}

TEST_F(VideoSource, EveryNthFrameIsTaken) {
  InputSettings settings;
  settings.every = 3;
  const auto source = openVideo(clip(), settings);
  EXPECT_EQ(source->count(), 3U);
  EXPECT_EQ(namesOfRest(*source), (Lines{"clip.avi#1", "clip.avi#4", "clip.avi#7"}));
  settings.every = 100;
  EXPECT_EQ(openVideo(clip(), settings)->count(), 1U);
}

TEST_F(VideoSource, AnInterruptionEndsTheFrames) {
  bool stop = false;
  InputSettings settings;
  settings.interrupted = [&] { return stop; };
  const auto source = openVideo(clip(), settings);
  EXPECT_TRUE(source->next());
  stop = true;
  EXPECT_FALSE(source->next());
}

TEST_F(VideoSource, WhatIsNoVideoIsNamedAndNothingElseIsPrinted) {
  testing::internal::CaptureStderr();
  for (const char* content : {"this is no video", ""}) {
    writeText(folder_.file("text.mp4"), content);
    EXPECT_EQ(errorOf(folder_.file("text.mp4")),
              "'" + folder_.file("text.mp4") +
                  "' cannot be read as a video: convert it to .mp4, or give its frames as "
                  "pictures");
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(VideoSource, AMissingFileIsNamed) {
  EXPECT_EQ(errorOf("/nowhere/clip.avi"),
            "'/nowhere/clip.avi' cannot be opened (No such file or directory): check the path and "
            "its permissions");
}
