// SPDX-License-Identifier: Apache-2.0
// What of the caller's hints reaches the engine, and when.
#include <gtest/gtest.h>

#include <limits>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "framequilt/session.h"
#include "tests/support/scripted_engine.h"
#include "tests/support/session_frames.h"

using framequilt::Session;
using framequilt::SessionOptions;

namespace {

constexpr int kRows = 50;
constexpr int kCols = 100;

using Hint = std::optional<cv::Point>;

/// The hints of the engine's calls, "-" where there was none.
using Seen = std::vector<std::string>;

std::string text(const ScriptedEngine::Call& call) {
  if (!call.motorFlag) return "-";
  return std::to_string(call.motor.x) + " " + std::to_string(call.motor.y);
}

/// A session of these answers; every frame comes with one of `hints`, the first one included.
Seen seenHints(const std::vector<ScriptedEngine::Answer>& answers, const std::vector<Hint>& hints,
               int scale = 1) {
  SessionOptions options = grayOptions(kRows, kCols);
  options.scale = scale;
  ScriptedEngine engine;
  engine.answers = answers;
  Session session(options);
  for (const Hint& hint : hints) session.add(cv::Mat(kRows, kCols, CV_8UC1, cv::Scalar(9)), hint);
  Seen seen;
  for (const ScriptedEngine::Call& call : engine.calls) seen.push_back(text(call));
  return seen;
}

/// Of the one hint of a second frame.
std::string seenOf(cv::Point hint, int scale = 1) {
  return seenHints({ScriptedEngine::noEstimate()}, {std::nullopt, hint}, scale).at(0);
}

const ScriptedEngine::Answer kRefused = ScriptedEngine::measured(1, 1);
const ScriptedEngine::Answer kStill = ScriptedEngine::qualified(0, 0);
const ScriptedEngine::Answer kJoined = ScriptedEngine::blended(20, 0);

}  // namespace

TEST(SessionHints, ReachTheEngineWithTheFrame) {
  EXPECT_EQ(seenHints({kJoined, kJoined, kJoined},
                      {std::nullopt, cv::Point(30, 4), std::nullopt, cv::Point(0, -7)}),
            (Seen{"30 4", "-", "0 -7"}));
  // No movement is a hint too.
  EXPECT_EQ(seenOf({0, 0}), "0 0");
}

TEST(SessionHints, ToTheLeftHaveTheirRowsInverted) {
  EXPECT_EQ(seenOf({-30, 4}), "-30 -4");
  EXPECT_EQ(seenOf({-30, -4}), "-30 4");
  EXPECT_EQ(seenOf({-1, 4}), "-1 -4");
  EXPECT_EQ(seenOf({0, -4}), "0 -4");
}

TEST(SessionHints, AreBroughtToMosaicPixels) {
  EXPECT_EQ(seenOf({30, 8}, 2), "15 4");
  EXPECT_EQ(seenOf({-30, 8}, 2), "-15 -4");
  EXPECT_EQ(seenOf({31, -9}, 2), "15 -4");
}

TEST(SessionHints, OfLessThanAMosaicPixelToTheLeftKeepTheirRows) {
  // The engine sees no movement to the left there, so it inverts nothing.
  EXPECT_EQ(seenOf({-1, 40}, 2), "0 20");
  EXPECT_EQ(seenOf({-2, 40}, 2), "-1 -20");
}

TEST(SessionHints, OfAFirstFrameAreIgnored) {
  EXPECT_EQ(seenHints({kJoined, kJoined}, {cv::Point(70, 30), cv::Point(20, 5), cv::Point(4, 6)}),
            (Seen{"20 5", "4 6"}));
}

TEST(SessionHints, OfRefusedFramesAddUp) {
  EXPECT_EQ(seenHints({kJoined, kRefused, kStill, kJoined, kJoined},
                      {std::nullopt, cv::Point(20, 5), cv::Point(10, 2), cv::Point(7, -9),
                       cv::Point(3, 1), cv::Point(5, 6)}),
            (Seen{"20 5", "10 2", "17 -7", "20 -6", "5 6"}));
}

TEST(SessionHints, AddUpBesideAFirstFrame) {
  EXPECT_EQ(seenHints({kRefused, kRefused, kJoined, kJoined},
                      {std::nullopt, cv::Point(-20, 5), cv::Point(-10, 2), cv::Point(4, 4),
                       cv::Point(1, 2)}),
            (Seen{"-20 -5", "-30 -7", "-26 -11", "1 2"}));
}

TEST(SessionHints, AreOfNoUseOnceARefusedFrameHadNone) {
  EXPECT_EQ(seenHints({kJoined, kRefused, kRefused, kJoined, kJoined},
                      {std::nullopt, cv::Point(20, 5), std::nullopt, cv::Point(7, 1),
                       cv::Point(3, 1), cv::Point(5, 6)}),
            (Seen{"20 5", "-", "-", "-", "5 6"}));
}

TEST(SessionHints, ThatLeadNowhereAreDropped) {
  const ScriptedEngine::Answer nothing = ScriptedEngine::noEstimate();
  EXPECT_EQ(
      seenHints({nothing, kJoined, kJoined}, {std::nullopt, cv::Point(20, 5), cv::Point(10, 2)}),
      (Seen{"20 5", "-", "10 2"}));
  EXPECT_EQ(seenHints({nothing, nothing, nothing, kJoined},
                      {std::nullopt, cv::Point(20, 5), cv::Point(10, 2)}),
            (Seen{"20 5", "-", "30 7", "-"}));
}

TEST(SessionHints, ThatLeaveNoOverlapAreOfNoUse) {
  EXPECT_EQ(seenOf({99, 49}), "99 49");
  EXPECT_EQ(seenOf({-99, -49}), "-99 49");
  EXPECT_EQ(seenOf({100, 0}), "-");
  EXPECT_EQ(seenOf({-100, 0}), "-");
  EXPECT_EQ(seenOf({0, 50}), "-");
  EXPECT_EQ(seenOf({0, -50}), "-");
}

TEST(SessionHints, ThatLeaveNoOverlapTogetherStillCount) {
  EXPECT_EQ(seenHints({kJoined, kRefused, kRefused, kRefused},
                      {std::nullopt, cv::Point(20, 0), cv::Point(60, 0), cv::Point(50, 0),
                       cv::Point(-80, 0)}),
            (Seen{"20 0", "60 0", "-", "30 0"}));
}

TEST(SessionHints, BeginAnewWithANewFirstFrame) {
  EXPECT_EQ(
      seenHints({kRefused, kRefused, kRefused, kJoined},
                {std::nullopt, std::nullopt, cv::Point(20, 0), cv::Point(30, 0), cv::Point(9, 3)}),
      (Seen{"-", "-", "-", "9 3"}));
}

TEST(SessionHints, MayBeOfAnySize) {
  constexpr int kLowest = std::numeric_limits<int>::min();
  constexpr int kHighest = std::numeric_limits<int>::max();
  EXPECT_EQ(seenOf({kLowest, kLowest}), "-");
  EXPECT_EQ(seenOf({kHighest, kHighest}), "-");
  EXPECT_EQ(seenOf({0, kLowest}, 2), "-");
  EXPECT_EQ(seenHints({kJoined, kRefused, kRefused, kRefused, kRefused},
                      {std::nullopt, cv::Point(20, 0), cv::Point(kHighest, kLowest),
                       cv::Point(kHighest, kLowest), cv::Point(kLowest + 2, kHighest),
                       cv::Point(kLowest + 3, kHighest)}),
            (Seen{"20 0", "-", "-", "-", "3 -2"}));
}
