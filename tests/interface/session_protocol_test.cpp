// SPDX-License-Identifier: Apache-2.0
// Which frames the engine gets, and when a session begins anew.
#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <vector>

#include "framequilt/session.h"
#include "tests/support/scripted_engine.h"
#include "tests/support/session_frames.h"

using framequilt::Criterion;
using framequilt::FrameResult;
using framequilt::Refusal;
using framequilt::Session;
using framequilt::SessionOptions;
using framequilt::Verdict;

namespace {

// A tenth of the columns: one is too little, two are enough.
constexpr int kRows = 8;
constexpr int kCols = 10;

SessionOptions options(Criterion criterion = Criterion::kMotion) {
  SessionOptions options = grayOptions(kRows, kCols);
  options.criterion = criterion;
  return options;
}

cv::Mat frame(int value) { return cv::Mat(kRows, kCols, CV_8UC1, cv::Scalar(value)); }

std::vector<unsigned char> bytes(int value) {
  return std::vector<unsigned char>(kRows * kCols, static_cast<unsigned char>(value));
}

/// Hands over frames of value `first` to `last`; what became of the last one.
FrameResult addFrames(Session& session, int first, int last) {
  FrameResult result;
  for (int value = first; value <= last; ++value) result = session.add(frame(value));
  return result;
}

}  // namespace

TEST(SessionProtocol, TheFirstFrameWaitsForTheSecond) {
  ScriptedEngine engine;
  Session session(options());
  const FrameResult result = session.add(frame(1));
  EXPECT_EQ(result.verdict, Verdict::kWaiting);
  EXPECT_EQ(result.reason, Refusal::kNone);
  EXPECT_EQ(result.frame, 0);
  EXPECT_TRUE(engine.calls.empty());
  EXPECT_TRUE(session.mosaic().empty());
  EXPECT_TRUE(session.steadyBox().empty());
}

TEST(SessionProtocol, TheFirstPairGoesTogetherWithIndexZero) {
  ScriptedEngine engine;
  engine.answers = {ScriptedEngine::blended(3, 1)};
  Session session(options());
  EXPECT_EQ(addFrames(session, 1, 2).verdict, Verdict::kJoined);
  ASSERT_EQ(engine.calls.size(), 1U);
  EXPECT_EQ(engine.calls[0].frameIndex, 0);
  EXPECT_EQ(engine.calls[0].frameScale, 1);
  EXPECT_EQ(engine.calls[0].reference, bytes(1));
  EXPECT_EQ(engine.calls[0].frame, bytes(2));
  EXPECT_FALSE(engine.calls[0].motorFlag);
}

TEST(SessionProtocol, LaterFramesGoAlone) {
  ScriptedEngine engine;
  engine.answers = {ScriptedEngine::blended(3, 1), ScriptedEngine::blended(3, 1)};
  Session session(options());
  EXPECT_EQ(addFrames(session, 1, 3).frame, 2);
  ASSERT_EQ(engine.calls.size(), 2U);
  EXPECT_NE(engine.calls[1].frameIndex, 0);
  EXPECT_TRUE(engine.calls[1].reference.empty());
  EXPECT_EQ(engine.calls[1].frame, bytes(3));
}

TEST(SessionProtocol, TheFirstFrameIsOfferedAgainUntilAPairQualifies) {
  ScriptedEngine engine;
  engine.answers = {ScriptedEngine::noEstimate(), ScriptedEngine::measured(3, 1),
                    ScriptedEngine::blended(3, 1)};
  Session session(options());
  EXPECT_EQ(addFrames(session, 1, 2).verdict, Verdict::kRefused);
  EXPECT_EQ(addFrames(session, 3, 3).verdict, Verdict::kRefused);
  EXPECT_EQ(addFrames(session, 4, 4).verdict, Verdict::kJoined);
  for (const std::size_t call : {1U, 2U}) {
    EXPECT_EQ(engine.calls[call].frameIndex, 0);
    EXPECT_EQ(engine.calls[call].reference, bytes(1));
  }
  EXPECT_EQ(engine.calls[2].frame, bytes(4));
}

TEST(SessionProtocol, AQualifiedPairThatIsNotBlendedLeavesAReference) {
  ScriptedEngine engine;
  engine.answers = {ScriptedEngine::qualified(0, 0), ScriptedEngine::blended(3, 1)};
  Session session(options());
  EXPECT_EQ(addFrames(session, 1, 2).verdict, Verdict::kRefused);
  EXPECT_TRUE(session.mosaic().empty());
  const FrameResult third = session.add(frame(3));
  EXPECT_NE(engine.calls[1].frameIndex, 0);
  EXPECT_TRUE(engine.calls[1].reference.empty());
  EXPECT_EQ(third.verdict, Verdict::kJoined);
  EXPECT_EQ(third.placement, cv::Point(3, 1));
}

TEST(SessionProtocol, AFlagBesideAFailedEstimateCountsForNothing) {
  ScriptedEngine engine;
  engine.answers = {[](ScriptedEngine::Run& run) {
                      run.flags.stitch_flags = 1;
                      return -1;
                    },
                    ScriptedEngine::blended(3, 1)};
  Session session(options());
  addFrames(session, 1, 3);
  EXPECT_EQ(engine.calls[1].frameIndex, 0);
}

TEST(SessionProtocol, AfterThreeFailuresTheNewestFrameBecomesTheFirst) {
  ScriptedEngine engine;
  engine.answers = {ScriptedEngine::noEstimate(), ScriptedEngine::measured(4, 4),
                    ScriptedEngine::qualified(9, 0), ScriptedEngine::blended(-2, 5)};
  Session session(options());
  EXPECT_FALSE(addFrames(session, 1, 2).becameFirst);
  EXPECT_FALSE(addFrames(session, 3, 3).becameFirst);
  EXPECT_EQ(session.firstFrame(), 0);
  const FrameResult fourth = session.add(frame(4));
  EXPECT_TRUE(fourth.becameFirst);
  EXPECT_EQ(fourth.verdict, Verdict::kRefused);
  // The reason stays that of its own call.
  EXPECT_EQ(fourth.reason, Refusal::kMovedTooFar);
  EXPECT_EQ(session.firstFrame(), 3);
  const FrameResult fifth = session.add(frame(5));
  EXPECT_EQ(engine.calls[3].frameIndex, 0);
  EXPECT_EQ(engine.calls[3].reference, bytes(4));
  EXPECT_EQ(engine.calls[3].frame, bytes(5));
  EXPECT_EQ(fifth.verdict, Verdict::kJoined);
  EXPECT_EQ(fifth.placement, cv::Point(-2, 5));
  EXPECT_EQ(fifth.changed, cv::Rect(0, 0, kCols + 2, kRows + 5));
  EXPECT_EQ(session.firstFrame(), 3);
}

TEST(SessionProtocol, ANewFirstFrameHasThreeAttemptsToo) {
  ScriptedEngine engine;
  Session session(options());
  std::vector<bool> became;
  for (int value = 1; value <= 7; ++value) became.push_back(session.add(frame(value)).becameFirst);
  EXPECT_EQ(became, (std::vector<bool>{false, false, false, true, false, false, true}));
  EXPECT_EQ(session.firstFrame(), 6);
}

TEST(SessionProtocol, FailuresAlsoCountAfterAPairQualified) {
  ScriptedEngine engine;
  engine.answers = {ScriptedEngine::qualified(9, 0)};
  Session session(options());
  EXPECT_FALSE(addFrames(session, 1, 3).becameFirst);
  EXPECT_TRUE(session.add(frame(4)).becameFirst);
  session.add(frame(5));
  EXPECT_EQ(engine.calls.back().frameIndex, 0);
  EXPECT_EQ(engine.calls.back().reference, bytes(4));
}

TEST(SessionProtocol, FramesThatHardlyMovedAreNoFailures) {
  ScriptedEngine engine;
  engine.answers.assign(6, ScriptedEngine::qualified(1, 0));
  Session session(options());
  session.add(frame(1));
  for (int value = 2; value <= 7; ++value) {
    const FrameResult result = session.add(frame(value));
    EXPECT_EQ(result.reason, Refusal::kMovedTooLittle);
    EXPECT_FALSE(result.becameFirst);
  }
  EXPECT_EQ(session.firstFrame(), 0);
  // Nor do they excuse any.
  EXPECT_FALSE(addFrames(session, 8, 9).becameFirst);
  EXPECT_TRUE(session.add(frame(10)).becameFirst);
}

TEST(SessionProtocol, OnceAFrameJoinedFailuresDoNotBeginAnew) {
  ScriptedEngine engine;
  engine.answers = {ScriptedEngine::blended(3, 1)};
  Session session(options());
  addFrames(session, 1, 2);
  for (int value = 3; value <= 6; ++value) {
    const FrameResult result = session.add(frame(value));
    EXPECT_EQ(result.verdict, Verdict::kRefused);
    EXPECT_FALSE(result.becameFirst);
    EXPECT_NE(engine.calls.back().frameIndex, 0);
  }
  EXPECT_EQ(session.firstFrame(), 0);
}

TEST(SessionOverlapProtocol, TheFirstFrameIsOfferedAgainAsItWas) {
  ScriptedEngine engine;
  engine.overwritesFrames = true;
  Session session(options(Criterion::kOverlap));
  addFrames(session, 1, 3);
  EXPECT_EQ(engine.calls[1].frameIndex, 0);
  EXPECT_EQ(engine.calls[1].reference, bytes(1));
}

TEST(SessionOverlapProtocol, TheFrameThatBecameFirstIsOfferedAsItWas) {
  ScriptedEngine engine;
  engine.overwritesFrames = true;
  Session session(options(Criterion::kOverlap));
  EXPECT_TRUE(addFrames(session, 1, 4).becameFirst);
  session.add(frame(5));
  EXPECT_EQ(engine.calls.back().reference, bytes(4));
  EXPECT_EQ(engine.calls.back().frame, bytes(5));
}

TEST(SessionOverlapProtocol, TheCallersFramesStayAsTheyAre) {
  ScriptedEngine engine;
  engine.overwritesFrames = true;
  Session session(options(Criterion::kOverlap));
  for (int value = 0; value <= 5; ++value) {
    const cv::Mat given = frame(value);
    session.add(given);
    EXPECT_EQ(cv::norm(given, frame(value), cv::NORM_INF), 0);
  }
}

TEST(SessionProtocol, TheCallerMayUseItsBufferAgain) {
  ScriptedEngine engine;
  Session session(options());
  cv::Mat buffer = frame(1);
  session.add(buffer);
  buffer.setTo(2);
  session.add(buffer);
  EXPECT_EQ(engine.calls[0].reference, bytes(1));
  // Also that of a frame that became the first.
  session.add(buffer);
  buffer.setTo(4);
  EXPECT_TRUE(session.add(buffer).becameFirst);
  buffer.setTo(5);
  session.add(buffer);
  EXPECT_EQ(engine.calls.back().reference, bytes(4));
}
