// SPDX-License-Identifier: Apache-2.0
// What a caller hears of a frame on its way, and how it is cancelled.
#include <gtest/gtest.h>

#include <cstdint>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "framequilt/session.h"
#include "tests/support/scripted_engine.h"
#include "tests/support/session_frames.h"
#include "tests/support/thrown_error.h"

using framequilt::FrameResult;
using framequilt::Progress;
using framequilt::Refusal;
using framequilt::Session;
using framequilt::SessionOptions;
using framequilt::Stage;
using framequilt::Verdict;

namespace {

constexpr int kRows = 50;
constexpr int kCols = 100;

cv::Mat frame(int value = 9) { return cv::Mat(kRows, kCols, CV_8UC1, cv::Scalar(value)); }

std::string text(const Progress& progress) {
  const char* const names[] = {"copying", "stitching", "done"};
  return std::to_string(progress.frame) + " " + names[static_cast<int>(progress.stage)];
}

using Stages = std::vector<std::string>;

/// A session that tells what it hears and cancels frames at one stage while that is set.
class SessionProgress : public testing::Test {
 protected:
  Stages stagesOf(const cv::Mat& given) {
    heard_.clear();
    session_.add(given);
    return heard_;
  }

  FrameResult addCancelledAt(Stage stage, std::optional<cv::Point> hint = std::nullopt) {
    cancelAt_ = stage;
    const FrameResult result = session_.add(frame(77), hint);
    cancelAt_.reset();
    return result;
  }

  SessionOptions options() {
    SessionOptions options = grayOptions(kRows, kCols);
    options.onProgress = [this](const Progress& progress) {
      heard_.push_back(text(progress));
      callsSoFar_ = engine_.calls.size();
      return cancelAt_ != progress.stage;
    };
    return options;
  }

  ScriptedEngine engine_;
  Stages heard_;
  std::size_t callsSoFar_ = 0;
  std::optional<Stage> cancelAt_;
  Session session_{options()};
};

}  // namespace

TEST_F(SessionProgress, NamesTheStagesInOrder) {
  engine_.answers = {ScriptedEngine::blended(30, 0), ScriptedEngine::noEstimate()};
  EXPECT_EQ(stagesOf(frame()), (Stages{"0 copying", "0 done"}));
  EXPECT_EQ(stagesOf(frame()), (Stages{"1 copying", "1 stitching", "1 done"}));
  EXPECT_EQ(stagesOf(frame()), (Stages{"2 copying", "2 stitching", "2 done"}));
}

TEST_F(SessionProgress, OfAFullMosaicHasNoStitching) {
  engine_.answers = {ScriptedEngine::full(ScriptedEngine::blended(30, 0))};
  session_.add(frame());
  session_.add(frame());
  EXPECT_EQ(stagesOf(frame()), (Stages{"2 copying", "2 done"}));
}

TEST_F(SessionProgress, SaysNothingOfAFrameThatTheSessionDoesNotTake) {
  EXPECT_NE(errorOf([&] { session_.add(cv::Mat(3, 3, CV_8UC1)); }).text, "nothing");
  EXPECT_EQ(heard_, Stages{});
}

TEST_F(SessionProgress, ACancelledFrameGoesNoFurther) {
  session_.add(frame());
  heard_.clear();
  EXPECT_EQ(addCancelledAt(Stage::kCopying).verdict, Verdict::kCancelled);
  EXPECT_EQ(heard_, Stages{"1 copying"});
  heard_.clear();
  EXPECT_EQ(addCancelledAt(Stage::kStitching).verdict, Verdict::kCancelled);
  EXPECT_EQ(heard_, (Stages{"1 copying", "1 stitching"}));
  EXPECT_TRUE(engine_.calls.empty());
}

TEST_F(SessionProgress, AFrameThatIsDoneCannotBeCancelled) {
  engine_.answers = {ScriptedEngine::blended(30, 0)};
  EXPECT_EQ(addCancelledAt(Stage::kDone).verdict, Verdict::kWaiting);
  EXPECT_EQ(addCancelledAt(Stage::kDone).verdict, Verdict::kJoined);
  EXPECT_EQ(callsSoFar_, 1U);
  EXPECT_EQ(session_.add(frame()).frame, 2);
}

TEST_F(SessionProgress, ACancelledFirstFrameIsNone) {
  EXPECT_EQ(addCancelledAt(Stage::kCopying).verdict, Verdict::kCancelled);
  const FrameResult first = session_.add(frame(3));
  EXPECT_EQ(first.verdict, Verdict::kWaiting);
  EXPECT_EQ(first.frame, 0);
  session_.add(frame(4));
  EXPECT_EQ(engine_.calls.at(0).reference.at(0), 3);
}

TEST_F(SessionProgress, ACancelledFrameLeavesEverythingAsItWas) {
  engine_.answers = {ScriptedEngine::blended(30, 0), ScriptedEngine::measured(1, 1),
                     ScriptedEngine::blended(20, 5)};
  session_.add(frame());
  session_.add(frame());
  session_.add(frame(), cv::Point(7, 1));
  const cv::Rect box = session_.steadyBox();
  for (const Stage stage : {Stage::kCopying, Stage::kStitching}) {
    const FrameResult cancelled = addCancelledAt(stage, cv::Point(40, 10));
    EXPECT_EQ(cancelled.frame, 3);
    EXPECT_EQ(cancelled.reason, Refusal::kNone);
    EXPECT_EQ(explain(cancelled), "");
    EXPECT_EQ(session_.steadyBox(), box);
    // Without a hint it would make the hints of others void.
    addCancelledAt(stage);
  }
  const FrameResult next = session_.add(frame(), cv::Point(5, 5));
  EXPECT_EQ(next.frame, 3);
  EXPECT_EQ(next.placement, cv::Point(50, 5));
  EXPECT_TRUE(engine_.calls.back().motorFlag);
  EXPECT_EQ(engine_.calls.back().motor, cv::Point(12, 6));
}

TEST_F(SessionProgress, ACancelledFrameIsNoFailureBesideAFirstFrame) {
  session_.add(frame());
  session_.add(frame());
  session_.add(frame());
  addCancelledAt(Stage::kCopying);
  EXPECT_FALSE(addCancelledAt(Stage::kStitching).becameFirst);
  EXPECT_EQ(session_.firstFrame(), 0);
  EXPECT_TRUE(session_.add(frame()).becameFirst);
  EXPECT_EQ(session_.firstFrame(), 3);
}

TEST(SessionCallback, AStopTakesEffectWhenTheFrameIsDecided) {
  ScriptedEngine engine;
  engine.answers = {ScriptedEngine::blended(30, 0)};
  Session* stopping = nullptr;
  SessionOptions options = grayOptions(kRows, kCols);
  int stopsInTheFrame = 0;
  options.onProgress = [&](const Progress& progress) {
    if (progress.stage == Stage::kStitching) stopping->stop();
    stopsInTheFrame = engine.stops;
    return true;
  };
  Session session(options);
  stopping = &session;
  session.add(frame());
  EXPECT_EQ(session.add(frame()).verdict, Verdict::kJoined);
  EXPECT_EQ(stopsInTheFrame, 0);
  EXPECT_EQ(engine.stops, 1);
  EXPECT_EQ(errorOf([&] { session.add(frame()); }).code, framequilt::ErrorCode::kStopped);
  EXPECT_EQ(session.mosaic().cols, kCols + 30);
}

TEST(SessionCallback, AStopOfAFrameThatIsRefusedForItsShapeTakesEffectToo) {
  ScriptedEngine engine;
  Session session(grayOptions(kRows, kCols));
  session.stop();
  EXPECT_EQ(errorOf([&] { session.add(cv::Mat(3, 3, CV_8UC1)); }).code,
            framequilt::ErrorCode::kStopped);
  EXPECT_EQ(engine.stops, 1);
}

TEST(SessionCallback, GivesNoFrame) {
  ScriptedEngine engine;
  Session* giving = nullptr;
  SessionOptions options = grayOptions(kRows, kCols);
  std::vector<ThrownError> errors;
  options.onProgress = [&](const Progress&) {
    errors.push_back(errorOf([&] { giving->add(frame()); }));
    return true;
  };
  Session session(options);
  giving = &session;
  EXPECT_EQ(session.add(frame()).frame, 0);
  const ThrownError busy = {
      framequilt::ErrorCode::kBusy,
      "frame 0 is in work on this thread: give the next one when add has returned"};
  EXPECT_EQ(errors, (std::vector<ThrownError>{busy, busy}));
  // The session goes on.
  errors.clear();
  EXPECT_EQ(session.add(frame()).frame, 1);
  EXPECT_EQ(errors.size(), 3U);
}

TEST_F(SessionProgress, AFrameBesideAFullMosaicMayBeCancelled) {
  engine_.answers = {ScriptedEngine::full(ScriptedEngine::blended(30, 0))};
  session_.add(frame());
  session_.add(frame());
  EXPECT_EQ(addCancelledAt(Stage::kCopying).verdict, Verdict::kCancelled);
  EXPECT_EQ(addCancelledAt(Stage::kStitching).reason, Refusal::kMosaicFull);
}
