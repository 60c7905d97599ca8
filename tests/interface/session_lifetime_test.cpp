// SPDX-License-Identifier: Apache-2.0
// Opening, stopping and ending a session, and what it leaves behind.
#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <opencv2/core.hpp>

#include "framequilt/session.h"
#include "framequilt/tuning.h"
#include "tests/support/scoped_value.h"
#include "tests/support/scripted_engine.h"
#include "tests/support/session_frames.h"
#include "tests/support/thrown_error.h"

using framequilt::ErrorCode;
using framequilt::Session;
using framequilt::SessionOptions;
using framequilt::Verdict;

namespace {

constexpr int kRows = 8;
constexpr int kCols = 10;

SessionOptions options(int rows = kRows, int cols = kCols, int factor = 1) {
  SessionOptions options = grayOptions(rows, cols);
  options.scale = factor;
  return options;
}

cv::Mat frame(int value, int rows = kRows, int cols = kCols) {
  return cv::Mat(rows, cols, CV_8UC1, cv::Scalar(value));
}

const ThrownError kAlreadyOpen = {ErrorCode::kSessionOpen,
                                  "another session is open: stop it first"};

ThrownError errorOfOpening(const SessionOptions& asked) {
  return errorOf([&] { const Session session(asked); });
}

}  // namespace

TEST(SessionLifetime, OneAtATime) {
  ScriptedEngine engine;
  Session session(options());
  EXPECT_EQ(errorOfOpening(options()), kAlreadyOpen);
  // The open one is not disturbed.
  EXPECT_EQ(engine.starts, 1);
  EXPECT_EQ(engine.stops, 0);
  EXPECT_EQ(errorOfOpening(options()), kAlreadyOpen);
  EXPECT_EQ(session.add(frame(1)).verdict, Verdict::kWaiting);
}

TEST(SessionLifetime, AnotherMayBeOpenedOnceOneIsStopped) {
  ScriptedEngine engine;
  Session stopped(options());
  stopped.stop();
  Session session(options());
  EXPECT_EQ(errorOfOpening(options()), kAlreadyOpen);
  // A stopped one has no say any more.
  stopped.stop();
  EXPECT_EQ(errorOfOpening(options()), kAlreadyOpen);
  EXPECT_EQ(engine.starts, 2);
  EXPECT_EQ(engine.stops, 1);
}

TEST(SessionLifetime, AnotherMayBeOpenedOnceOneIsGone) {
  ScriptedEngine engine;
  { const Session gone(options()); }
  EXPECT_EQ(engine.stops, 1);
  EXPECT_EQ(errorOfOpening(options()).text, "nothing");
}

TEST(SessionLifetime, AnotherMayBeOpenedOnceOneHasFailedToOpen) {
  ScriptedEngine engine;
  EXPECT_EQ(errorOfOpening(options(0, 0)).code, ErrorCode::kInvalidOption);
  engine.onStart = [] { return false; };
  EXPECT_EQ(errorOfOpening(options()).code, ErrorCode::kStartFailed);
  engine.onStart = [] { return true; };
  EXPECT_EQ(errorOfOpening(options()).text, "nothing");
}

TEST(SessionLifetime, TheNextMayHaveAnotherShape) {
  ScriptedEngine engine;
  engine.answers = {ScriptedEngine::blended(3, 1), ScriptedEngine::blended(7, 5)};
  {
    Session session(options());
    session.add(frame(1));
    session.add(frame(2));
    session.add(frame(3));
  }
  engine.calls.clear();
  Session session(options(20, 30, 2));
  EXPECT_TRUE(session.mosaic().empty());
  EXPECT_EQ(session.add(frame(1, 20, 30)).verdict, Verdict::kWaiting);
  const framequilt::FrameResult joined = session.add(frame(2, 20, 30));
  EXPECT_EQ(joined.verdict, Verdict::kJoined);
  EXPECT_EQ(joined.frame, 1);
  EXPECT_EQ(joined.placement, cv::Point(6, 2));
  EXPECT_EQ(session.mosaic().size(), cv::Size(18, 11));
}

TEST(SessionLifetime, TheEngineRunsUntilTheStopAndNoLonger) {
  ScriptedEngine engine;
  {
    Session session(options());
    EXPECT_EQ(engine.starts, 1);
    EXPECT_EQ(engine.stops, 0);
    session.stop();
    EXPECT_EQ(engine.stops, 1);
    session.stop();
    EXPECT_EQ(engine.stops, 1);
  }
  EXPECT_EQ(engine.stops, 1);
}

TEST(SessionLifetime, TheGlobalScaleIsTheSessionsWhileItIsOpen) {
  const ScopedValue<int> former(scale, 5);
  ScriptedEngine engine;
  {
    const Session session(options(kRows, kCols, 2));
    EXPECT_EQ(scale, 2);
  }
  EXPECT_EQ(scale, 5);
  Session session(options(kRows, kCols, framequilt::kAutoScale));
  EXPECT_EQ(scale, 1);
  session.stop();
  EXPECT_EQ(scale, 5);
  // Whoever writes it now is left alone.
  scale = 7;
  session.stop();
  EXPECT_EQ(scale, 7);
}

TEST(SessionLifetime, TheEngineStartsWithTheSessionsScale) {
  ScriptedEngine engine;
  int atStart = 0;
  engine.onStart = [&] {
    atStart = scale;
    return true;
  };
  const Session session(options(kRows, kCols, 2));
  EXPECT_EQ(atStart, 2);
}

TEST(SessionLifetime, AnEngineThatDoesNotStartIsStopped) {
  const ScopedValue<int> former(scale, 5);
  ScriptedEngine engine;
  engine.onStart = [] { return false; };
  EXPECT_EQ(errorOfOpening(options(kRows, kCols, 2)),
            (ThrownError{ErrorCode::kStartFailed,
                         "the worker threads could not be started: close other programs and try "
                         "again"}));
  EXPECT_EQ(engine.stops, 1);
  EXPECT_EQ(scale, 5);
}

TEST(SessionLifetime, AnEngineWithoutMemoryToStartIsStopped) {
  const ScopedValue<int> former(scale, 5);
  ScriptedEngine engine;
  engine.onStart = []() -> bool { throw std::bad_alloc(); };
  EXPECT_EQ(errorOfOpening(options(kRows, kCols, 2)).code, ErrorCode::kOutOfMemory);
  EXPECT_EQ(engine.stops, 1);
  EXPECT_EQ(scale, 5);
  engine.onStart = [] { return true; };
  EXPECT_EQ(errorOfOpening(options()).text, "nothing");
}

TEST(SessionStop, EndsWhatTheSessionTakes) {
  ScriptedEngine engine;
  Session session(options());
  session.add(frame(1));
  session.stop();
  EXPECT_EQ(errorOf([&] { session.add(frame(2)); }),
            (ThrownError{ErrorCode::kStopped, "the session was stopped: open another one"}));
  EXPECT_TRUE(engine.calls.empty());
}

TEST(SessionStop, LeavesTheMosaic) {
  ScriptedEngine engine;
  engine.answers = {[](ScriptedEngine::Run& run) {
    run.mosaic.setTo(9);
    return ScriptedEngine::blended(3, -1)(run);
  }};
  auto session = std::make_unique<Session>(options());
  session->add(frame(1));
  session->add(frame(2));
  const cv::Mat mosaic = session->mosaic();
  session->stop();
  EXPECT_EQ(session->mosaic().data, mosaic.data);
  EXPECT_EQ(session->steadyBox(), cv::Rect(0, -1, 13, 9));
  EXPECT_EQ(session->copyRegion({2, 3, 1, 1}).at<unsigned char>(0, 0), 9);
  EXPECT_EQ(session->scale(), 1);
  EXPECT_EQ(session->firstFrame(), 0);
  // Also beyond the session.
  session.reset();
  EXPECT_EQ(mosaic.size(), cv::Size(13, 9));
  EXPECT_EQ(mosaic.at<unsigned char>(8, 12), 9);
}

TEST(Session, NamesWhatDoesTheWork) {
  ScriptedEngine engine;
  EXPECT_EQ(Session(options()).backend(), "host");
}
