// SPDX-License-Identifier: Apache-2.0
// What the engine throws becomes an error with clear words, and the session goes on.
#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <opencv2/core.hpp>
#include <string>

#include "framequilt/session.h"
#include "tests/support/scripted_engine.h"
#include "tests/support/session_frames.h"
#include "tests/support/thrown_error.h"

using framequilt::Criterion;
using framequilt::ErrorCode;
using framequilt::FrameResult;
using framequilt::Session;
using framequilt::SessionOptions;
using framequilt::Verdict;

namespace {

constexpr int kRows = 50;
constexpr int kCols = 100;

SessionOptions options(Criterion criterion = Criterion::kMotion) {
  SessionOptions options = grayOptions(kRows, kCols);
  options.criterion = criterion;
  return options;
}

cv::Mat frame(int value = 9) { return cv::Mat(kRows, kCols, CV_8UC1, cv::Scalar(value)); }

ScriptedEngine::Answer throwing(const std::function<void()>& action) {
  return [=](ScriptedEngine::Run&) {
    action();
    return 0;
  };
}

const ScriptedEngine::Answer kNoMemory = throwing([] { throw std::bad_alloc(); });

cv::Exception matrixError(int code) { return {code, "no luck", "function", "file", 1}; }

const ThrownError kOutOfMemory = {
    ErrorCode::kOutOfMemory,
    "out of memory: the mosaic so far stays; use scale 2 or begin another mosaic"};

/// What a second frame throws that meets this answer.
ThrownError errorOfAnswer(const ScriptedEngine::Answer& answer) {
  ScriptedEngine engine;
  engine.answers = {answer};
  Session session(options());
  session.add(frame());
  return errorOf([&] { session.add(frame()); });
}

}  // namespace

TEST(SessionErrors, OfMemorySaySo) {
  EXPECT_EQ(errorOfAnswer(kNoMemory), kOutOfMemory);
  EXPECT_EQ(errorOfAnswer(throwing([] { throw matrixError(cv::Error::StsNoMem); })), kOutOfMemory);
}

TEST(SessionErrors, OfOtherKindsNameTheCause) {
  EXPECT_EQ(
      errorOfAnswer(throwing([] { throw matrixError(cv::Error::StsBadSize); })),
      (ThrownError{ErrorCode::kEngineFailed,
                   "stitching failed (no luck): the mosaic so far stays; use scale 2 or begin "
                   "another mosaic"}));
}

TEST(SessionErrors, LeaveTheMosaicAndTheSessionGoesOn) {
  ScriptedEngine engine;
  engine.answers = {ScriptedEngine::blended(30, 0), kNoMemory,
                    throwing([] { throw matrixError(cv::Error::StsBadSize); }),
                    ScriptedEngine::blended(20, 5)};
  Session session(options());
  session.add(frame());
  session.add(frame());
  const cv::Rect box = session.steadyBox();
  const cv::Mat mosaic = session.mosaic();
  EXPECT_EQ(errorOf([&] { session.add(frame()); }).code, ErrorCode::kOutOfMemory);
  EXPECT_EQ(errorOf([&] { session.add(frame()); }).code, ErrorCode::kEngineFailed);
  EXPECT_EQ(session.steadyBox(), box);
  EXPECT_EQ(session.mosaic().data, mosaic.data);
  const FrameResult next = session.add(frame());
  EXPECT_EQ(next.verdict, Verdict::kJoined);
  EXPECT_EQ(next.frame, 2);
  EXPECT_EQ(next.placement, cv::Point(50, 5));
  EXPECT_EQ(session.steadyBox(), cv::Rect(0, 0, 150, 55));
}

TEST(SessionErrors, LeaveAFirstFrameAsItWas) {
  for (const Criterion criterion : {Criterion::kMotion, Criterion::kOverlap}) {
    ScriptedEngine engine;
    engine.overwritesFrames = criterion == Criterion::kOverlap;
    engine.answers = {kNoMemory, kNoMemory, kNoMemory, ScriptedEngine::blended(20, 5)};
    Session session(options(criterion));
    session.add(frame(4));
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(errorOf([&] { session.add(frame(5)); }), kOutOfMemory);
    }
    const FrameResult joined = session.add(frame(6));
    EXPECT_EQ(joined.verdict, Verdict::kJoined);
    EXPECT_EQ(joined.frame, 1);
    EXPECT_EQ(engine.calls.back().frameIndex, 0);
    EXPECT_EQ(engine.calls.back().reference.at(0), 4);
    EXPECT_EQ(engine.calls.back().frame.at(0), 6);
  }
}

TEST(SessionErrors, LeaveHintsAsTheyWere) {
  ScriptedEngine engine;
  engine.answers = {ScriptedEngine::blended(30, 0), ScriptedEngine::measured(1, 1), kNoMemory,
                    ScriptedEngine::measured(1, 1)};
  Session session(options());
  session.add(frame());
  session.add(frame());
  session.add(frame(), cv::Point(7, 1));
  EXPECT_EQ(errorOf([&] { session.add(frame(), cv::Point(40, 10)); }), kOutOfMemory);
  session.add(frame(), cv::Point(5, 5));
  EXPECT_EQ(engine.calls.back().motor, cv::Point(12, 6));
}
