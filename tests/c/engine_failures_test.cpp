// SPDX-License-Identifier: Apache-2.0
// Failures that only an engine in disguise brings about, as codes.
#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <opencv2/core.hpp>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "framequilt/framequilt_c.h"
#include "tests/support/scripted_engine.h"

namespace {

constexpr int kRows = 50;
constexpr int kCols = 100;

framequilt_options options() {
  framequilt_options options;
  EXPECT_EQ(framequilt_init_options(&options, sizeof options), FRAMEQUILT_OK);
  options.rows = kRows;
  options.cols = kCols;
  options.channels = 1;
  return options;
}

/// Closed in the end.
class OpenedSession {
 public:
  OpenedSession() {
    const framequilt_options given = options();
    EXPECT_EQ(framequilt_open(&given, &session_), FRAMEQUILT_OK);
  }
  ~OpenedSession() { EXPECT_EQ(framequilt_close(session_), FRAMEQUILT_OK); }
  OpenedSession(const OpenedSession&) = delete;
  OpenedSession& operator=(const OpenedSession&) = delete;

  framequilt_code add() const {
    const std::vector<unsigned char> pixels(std::size_t{kRows} * kCols, 9);
    framequilt_frame frame{};
    frame.size = sizeof frame;
    frame.pixels = pixels.data();
    frame.rows = kRows;
    frame.cols = kCols;
    frame.channels = 1;
    frame.order = FRAMEQUILT_GRAY;
    framequilt_result result{};
    result.size = sizeof result;
    return framequilt_add(session_, &frame, &result);
  }
  std::string lastError() const { return framequilt_last_error(session_); }
  framequilt_session* get() const { return session_; }

 private:
  framequilt_session* session_ = nullptr;
};

std::string lastErrorOfThread() { return framequilt_last_error(nullptr); }

ScriptedEngine::Answer throwing(const std::function<void()>& action) {
  return [=](ScriptedEngine::Run&) {
    action();
    return 0;
  };
}

struct Failed {
  framequilt_code code;
  std::string text;
};

/// What a second frame ends in that meets this answer; a third one joins.
Failed failureOf(const std::function<void()>& action) {
  ScriptedEngine engine;
  engine.answers = {throwing(action), ScriptedEngine::blended(30, 0)};
  const OpenedSession session;
  EXPECT_EQ(session.add(), FRAMEQUILT_OK);
  const framequilt_code code = session.add();
  EXPECT_EQ(session.lastError(), lastErrorOfThread());
  EXPECT_EQ(session.add(), FRAMEQUILT_OK);
  return {code, session.lastError()};
}

}  // namespace

TEST(CEngineFailures, OfMemory) {
  const Failed failed = failureOf([] { throw std::bad_alloc(); });
  EXPECT_EQ(failed.code, FRAMEQUILT_E_MEMORY);
  EXPECT_EQ(failed.text,
            "out of memory: the mosaic so far stays; use scale 2 or begin another mosaic");
}

TEST(CEngineFailures, OfTheEngine) {
  const Failed failed =
      failureOf([] { throw cv::Exception(cv::Error::StsBadSize, "no luck", "f", "file", 1); });
  EXPECT_EQ(failed.code, FRAMEQUILT_E_ENGINE);
  EXPECT_EQ(failed.text,
            "stitching failed (no luck): the mosaic so far stays; use scale 2 or begin another "
            "mosaic");
}

TEST(CEngineFailures, OfKindsThatNobodyKnows) {
  const Failed failed = failureOf([] { throw std::runtime_error("something else"); });
  EXPECT_EQ(failed.code, FRAMEQUILT_E_ENGINE);
  EXPECT_EQ(failed.text, "something else");
  EXPECT_EQ(failureOf([] { throw 5; }).code, FRAMEQUILT_E_ENGINE);
}

TEST(CEngineFailures, LongTextsAreCut) {
  const Failed failed = failureOf([] { throw std::runtime_error(std::string(5000, 'x')); });
  EXPECT_EQ(failed.text, std::string(1023, 'x'));
}

TEST(CEngineFailures, OfTheStart) {
  ScriptedEngine engine;
  engine.onStart = [] { return false; };
  const framequilt_options given = options();
  framequilt_session* session = nullptr;
  EXPECT_EQ(framequilt_open(&given, &session), FRAMEQUILT_E_START);
  EXPECT_EQ(session, nullptr);
  EXPECT_NE(lastErrorOfThread(), "");
  engine.onStart = []() -> bool { throw std::bad_alloc(); };
  EXPECT_EQ(framequilt_open(&given, &session), FRAMEQUILT_E_MEMORY);
  EXPECT_EQ(lastErrorOfThread(), "out of memory: use scale 2 or smaller frames");
  // Nothing is left open.
  engine.onStart = [] { return true; };
  const OpenedSession opened;
}

TEST(CEngineFailures, AreKeptForEachThread) {
  EXPECT_EQ(framequilt_stop(nullptr), FRAMEQUILT_E_ARGUMENT);
  const std::string mine = lastErrorOfThread();
  EXPECT_NE(mine, "");
  std::string atFirst = "unset", theirs;
  std::thread([&] {
    atFirst = lastErrorOfThread();
    framequilt_reason_words(99, nullptr);
    theirs = lastErrorOfThread();
  }).join();
  EXPECT_EQ(atFirst, "");
  EXPECT_EQ(theirs, "words is a null pointer: give one that is not");
  EXPECT_EQ(lastErrorOfThread(), mine);
}

TEST(CEngineFailures, CallsFromTwoThreadsDoNotMeet) {
  ScriptedEngine engine;
  const OpenedSession session;
  framequilt_code code = FRAMEQUILT_OK;
  // While the engine is at work on the second frame.
  engine.answers = {[&](ScriptedEngine::Run&) {
    std::thread([&] { code = session.add(); }).join();
    return -1;
  }};
  EXPECT_EQ(session.add(), FRAMEQUILT_OK);
  EXPECT_EQ(session.add(), FRAMEQUILT_OK);
  EXPECT_EQ(code, FRAMEQUILT_E_BUSY);
  EXPECT_EQ(session.lastError(), "");
}
