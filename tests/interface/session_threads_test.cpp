// SPDX-License-Identifier: Apache-2.0
// A session while other threads look at it, and a session that threads hand to each other.
#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <opencv2/core.hpp>
#include <thread>
#include <vector>

#include "framequilt/session.h"
#include "tests/support/recorded_reports.h"
#include "tests/support/scene.h"
#include "tests/support/session_frames.h"
#include "tests/support/thrown_error.h"

using framequilt::FrameResult;
using framequilt::Session;
using framequilt::SessionOptions;
using framequilt::Verdict;

namespace {

// Wide frames, so that the mosaic soon grows beyond its first matrix: at the left, and back at the
// right of the first frame.
constexpr int kRows = 120;
constexpr int kCols = 1500;
const std::vector<int> kWay = {3200, 2500, 1800, 1100, 400, 900, 1600, 2300, 3000, 3700};

class SessionThreads : public testing::Test {
 protected:
  Frame frame(std::size_t index) const { return scene_.cut(kWay[index], 0, kRows, kCols); }
  static cv::Point placement(std::size_t index) { return {kWay[index] - kWay[0], 0}; }

  SessionOptions options() const { return optionsFor(frame(0)); }

  void addAll(Session& session) const {
    for (std::size_t i = 0; i < kWay.size(); ++i) {
      const FrameResult result = session.add(viewOf(frame(i)));
      if (i > 0) {
        EXPECT_EQ(result.verdict, Verdict::kJoined) << explain(result);
        EXPECT_EQ(result.placement, placement(i));
      }
    }
  }

  const Scene scene_{kRows, 5200, 1, 31};
  const RecordedReports quiet_;
};

/// Looks at a session again and again until it is told to end, at least once.
class Onlooker {
 public:
  explicit Onlooker(const Session& session, cv::Rect untouched)
      : thread_([this, &session, untouched] { look(session, untouched); }) {}
  void end() {
    goesOn_ = false;
    thread_.join();
  }

  bool boxesGrew = true;
  bool boxesWereFilled = true;
  bool untouchedWasSteady = true;

 private:
  void look(const Session& session, const cv::Rect& untouched) {
    cv::Rect former;
    cv::Mat seen;
    do {
      const cv::Rect box = session.steadyBox();
      if (!former.empty() && (box & former) != former) boxesGrew = false;
      if (!box.empty()) {
        former = box;
        // The box may have grown since, but holds this part still; the strip has no gaps.
        if (cv::countNonZero(session.copyRegion(box)) != box.area()) boxesWereFilled = false;
      }
      const cv::Mat now = session.copyRegion(untouched);
      if (cv::countNonZero(now) == 0) continue;  // Before the first pair.
      if (!seen.empty() && cv::norm(now, seen, cv::NORM_INF) != 0.0) untouchedWasSteady = false;
      seen = now;
    } while (goesOn_);
  }

  std::atomic<bool> goesOn_{true};
  std::thread thread_;
};

}  // namespace

TEST_F(SessionThreads, OthersMayLookWhileFramesAreAdded) {
  Session session(options());
  for (std::size_t i = 0; i < 8; ++i) session.add(viewOf(frame(i)));
  // Three times over the same way; the leftmost columns are those of the fifth frame alone.
  Onlooker one(session, {-2800, 0, 400, kRows});
  Onlooker two(session, {-2800, 0, 400, kRows});
  for (std::size_t i = 8; i < kWay.size(); ++i) session.add(viewOf(frame(i)));
  one.end();
  two.end();
  for (const Onlooker* onlooker : {&one, &two}) {
    EXPECT_TRUE(onlooker->boxesGrew);
    EXPECT_TRUE(onlooker->boxesWereFilled);
    EXPECT_TRUE(onlooker->untouchedWasSteady);
  }
}

TEST_F(SessionThreads, OthersMayLookFromTheBeginningToTheStop) {
  Session session(options());
  // The right end of the first frame is left for good by the second.
  Onlooker onlooker(session, {1000, 0, 100, kRows});
  for (std::size_t i = 0; i < 5; ++i) session.add(viewOf(frame(i)));
  session.stop();
  onlooker.end();
  EXPECT_TRUE(onlooker.boxesGrew);
  EXPECT_TRUE(onlooker.boxesWereFilled);
  EXPECT_TRUE(onlooker.untouchedWasSteady);
  EXPECT_EQ(session.steadyBox(), cv::Rect(-2800, 0, 2800 + kCols, kRows));
}

TEST_F(SessionThreads, LookingChangesNothing) {
  Session alone(options());
  addAll(alone);
  const cv::Mat expected = alone.mosaic();
  alone.stop();
  Session session(options());
  Onlooker onlooker(session, {0, 0, 10, 10});
  addAll(session);
  onlooker.end();
  ASSERT_EQ(session.mosaic().size(), expected.size());
  EXPECT_EQ(cv::norm(session.mosaic(), expected, cv::NORM_INF), 0.0);
}

TEST_F(SessionThreads, FramesOfSeveralThreadsAreTakenOneAfterTheOther) {
  Session session(options());
  std::atomic<int> joined{0};
  // Two frames of one place each: whichever is taken first, the others overlap with it enough.
  const auto addSome = [&](std::size_t first) {
    for (std::size_t i = first; i < first + 3; ++i) {
      if (session.add(viewOf(frame(i % 2))).verdict == Verdict::kJoined) ++joined;
    }
  };
  std::thread one(addSome, 0);
  std::thread two(addSome, 1);
  one.join();
  two.join();
  EXPECT_GE(joined, 1);
  EXPECT_EQ(session.steadyBox().size(), cv::Size(700 + kCols, kRows));
}

TEST_F(SessionThreads, AStopWaitsForTheFrameInWork) {
  for (int round = 0; round < 8; ++round) {
    Session session(options());
    session.add(viewOf(frame(0)));
    std::atomic<int> taken{1};
    std::thread stitching([&] {
      for (std::size_t i = 1; i < kWay.size(); ++i) {
        try {
          session.add(viewOf(frame(i)));
        } catch (const framequilt::Error& error) {
          EXPECT_EQ(error.code(), framequilt::ErrorCode::kStopped) << error.what();
          return;
        }
        ++taken;
      }
    });
    while (taken <= round % 5) std::this_thread::yield();
    session.stop();
    // Another run can begin at once, whatever the other thread does.
    Session next(options());
    stitching.join();
    addAll(next);
    EXPECT_FALSE(next.mosaic().empty());
  }
}

TEST_F(SessionThreads, StopsOfManyThreadsAreOne) {
  for (int round = 0; round < 8; ++round) {
    Session session(options());
    session.add(viewOf(frame(0)));
    session.add(viewOf(frame(1)));
    std::vector<std::thread> stopping;
    for (int i = 0; i < 4; ++i) stopping.emplace_back([&] { session.stop(); });
    for (std::thread& thread : stopping) thread.join();
    EXPECT_EQ(session.mosaic().size(), cv::Size(700 + kCols, kRows));
  }
}

TEST_F(SessionThreads, OneAfterTheOtherMayUseASession) {
  std::unique_ptr<Session> session;
  std::thread([&] { session = std::make_unique<Session>(options()); }).join();
  for (std::size_t i = 0; i < 5; ++i) {
    std::thread([&] {
      const FrameResult result = session->add(viewOf(frame(i)));
      EXPECT_EQ(result.placement, placement(i));
    }).join();
  }
  cv::Mat mosaic;
  std::thread([&] {
    mosaic = session->mosaic();
    session->stop();
  }).join();
  EXPECT_EQ(mosaic.size(), cv::Size(2800 + kCols, kRows));
  std::thread([&] { session.reset(); }).join();
  EXPECT_EQ(cv::countNonZero(mosaic), mosaic.rows * mosaic.cols);
}

TEST_F(SessionThreads, OnlyOneOfManyOpensASession) {
  std::atomic<int> opened{0};
  std::atomic<int> refused{0};
  std::atomic<int> tried{0};
  constexpr int kThreads = 4;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      std::unique_ptr<Session> session;
      const ThrownError error = errorOf([&] { session = std::make_unique<Session>(options()); });
      session != nullptr ? ++opened : ++refused;
      EXPECT_TRUE(session != nullptr || error.code == framequilt::ErrorCode::kSessionOpen);
      // The open one stays until everyone has tried.
      ++tried;
      tried.notify_all();
      for (int so = tried; so < kThreads; so = tried) tried.wait(so);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(opened, 1);
  EXPECT_EQ(refused, kThreads - 1);
}
