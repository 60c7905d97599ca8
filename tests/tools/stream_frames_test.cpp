// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/stream_frames.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "recorded_notes.h"

using framequilt::tool::NumberedFrame;
using framequilt::tool::StreamFrames;

namespace {

using Lines = std::vector<std::string>;

/// Frames of these pixels, numbered from 1.
StreamFrames::Pull framesOf(std::vector<cv::Mat> pixels) {
  return [pixels, taken = std::size_t{0}]() mutable -> std::optional<NumberedFrame> {
    if (taken == pixels.size()) return std::nullopt;
    const std::size_t index = taken++;
    return NumberedFrame{pixels[index], index + 1};
  };
}

cv::Mat colour(int rows, int cols) { return cv::Mat(rows, cols, CV_8UC3, cv::Scalar::all(9)); }

Lines namesOf(StreamFrames& frames) {
  Lines names;
  while (const auto frame = frames.next()) names.push_back(frame->name);
  return names;
}

}  // namespace

TEST(StreamFrames, TheFirstFrameGivesTheShapeAndIsNotLost) {
  RecordedNotes notes;
  StreamFrames frames("clip.avi", framesOf({colour(8, 10), colour(8, 10)}), notes.settings());
  EXPECT_FALSE(frames.empty());
  EXPECT_EQ(frames.shape().rows, 8);
  EXPECT_EQ(frames.shape().cols, 10);
  EXPECT_EQ(frames.shape().channels, 3);
  const auto first = frames.next();
  ASSERT_TRUE(first);
  EXPECT_EQ(first->name, "clip.avi#1");
  EXPECT_EQ(first->number, 1U);
  EXPECT_EQ(first->path, "");
  EXPECT_EQ(first->pixels.size(), cv::Size(10, 8));
  EXPECT_EQ(namesOf(frames), Lines{"clip.avi#2"});
  EXPECT_EQ(frames.skipped(), 0U);
  EXPECT_EQ(notes.lines, Lines{});
}

TEST(StreamFrames, AnEmptyStreamIsEmpty) {
  RecordedNotes notes;
  StreamFrames frames("clip.avi", framesOf({}), notes.settings());
  EXPECT_TRUE(frames.empty());
  EXPECT_FALSE(frames.next());
}

TEST(StreamFrames, FramesOfAnotherSizeAreLeftOutAndNotedOnce) {
  RecordedNotes notes;
  StreamFrames frames(
      "clip.avi",
      framesOf({colour(8, 10), colour(6, 10), colour(8, 12), colour(8, 10), colour(6, 10)}),
      notes.settings());
  EXPECT_EQ(namesOf(frames), (Lines{"clip.avi#1", "clip.avi#4"}));
  EXPECT_EQ(frames.skipped(), 3U);
  EXPECT_EQ(notes.lines,
            Lines{"frame 2 of 'clip.avi' has 10 x 6 pixels, the first has 10 x 8 pixels: frames of "
                  "another size are left out"});
}

TEST(StreamFrames, DamagedFramesAreLeftOutAndNotedOnce) {
  RecordedNotes notes;
  const cv::Mat deep(8, 10, CV_16UC1, cv::Scalar(9));
  StreamFrames frames("camera:0", framesOf({cv::Mat(), colour(8, 10), deep, colour(8, 10)}),
                      notes.settings());
  EXPECT_EQ(frames.shape().rows, 8);
  EXPECT_EQ(namesOf(frames), (Lines{"camera:0#2", "camera:0#4"}));
  EXPECT_EQ(frames.skipped(), 2U);
  EXPECT_EQ(notes.lines,
            Lines{"frame 1 of 'camera:0' cannot be decoded: such frames are left out"});
}
