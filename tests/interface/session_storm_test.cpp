// SPDX-License-Identifier: Apache-2.0
// Threads that open sessions, stop each other's, add frames and look, in any order.
#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <opencv2/core.hpp>
#include <thread>
#include <utility>
#include <vector>

#include "framequilt/session.h"
#include "tests/support/random_images.h"
#include "tests/support/recorded_reports.h"
#include "tests/support/scene.h"
#include "tests/support/session_frames.h"

using framequilt::Error;
using framequilt::ErrorCode;
using framequilt::Session;
using framequilt::SessionOptions;
using framequilt::Verdict;

namespace {

constexpr int kRows = 180;
constexpr int kCols = 240;
constexpr int kFrames = 6;
constexpr unsigned kThreads = 4;
constexpr int kActions = 100;  // Of each thread.

/// What the threads share: the session that was opened last, perhaps stopped since.
class Slot {
 public:
  std::shared_ptr<Session> get() const {
    const std::lock_guard lock(mutex_);
    return session_;
  }
  /// The former one ends where its last user lets go of it.
  void put(std::shared_ptr<Session> session) {
    const std::lock_guard lock(mutex_);
    session_.swap(session);
  }

 private:
  mutable std::mutex mutex_;
  std::shared_ptr<Session> session_;
};

class SessionStorm : public testing::Test {
 protected:
  SessionStorm() {
    const Scene scene(kRows, kCols + kFrames * 60, 1, 31);
    for (int i = 0; i < kFrames; ++i) frames_.push_back(scene.cut(60 * i, 0, kRows, kCols));
  }

  SessionOptions options() const { return optionsFor(frames_[0]); }

  /// The mosaic of all frames that nobody disturbs.
  cv::Mat undisturbed() const {
    Session session(options());
    for (const Frame& frame : frames_) session.add(viewOf(frame));
    return session.mosaic();
  }

  /// One thread of the storm.
  void rage(unsigned seed) {
    Random random(seed);
    for (int i = 0; i < kActions; ++i) {
      const int action = random.between(0, 9);
      const auto& frame = frames_[static_cast<std::size_t>(random.between(0, kFrames - 1))];
      try {
        act(action, frame);
      } catch (const Error& error) {
        const bool known = action < 2 ? error.code() == ErrorCode::kSessionOpen
                                      : error.code() == ErrorCode::kStopped;
        EXPECT_TRUE(known) << "action " << action << ": " << error.what();
      }
    }
  }

  std::atomic<int> opened_{0};
  Slot slot_;

 private:
  void act(int action, const Frame& frame) {
    if (action < 2) {
      slot_.put(std::make_shared<Session>(options()));
      ++opened_;
      return;
    }
    const std::shared_ptr<Session> session = slot_.get();
    if (session == nullptr) return;
    if (action == 2) {
      session->stop();
    } else if (action < 5) {
      look(*session);
    } else {
      EXPECT_NE(session->add(viewOf(frame)).verdict, Verdict::kCancelled);
    }
  }

  static void look(const Session& session) {
    const cv::Rect box = session.steadyBox();
    const cv::Mat copy = session.copyRegion(box);
    EXPECT_EQ(copy.size(), box.size());
    // Frames stay, so that what lay in the box still does; the first one fills its part.
    const cv::Rect first = box & cv::Rect(0, 0, kCols, kRows);
    EXPECT_EQ(cv::countNonZero(copy(first - box.tl())), first.area());
  }

  const RecordedReports quiet_;
  std::vector<Frame> frames_;
};

}  // namespace

TEST_F(SessionStorm, LeavesNothingBehind) {
  const cv::Mat expected = undisturbed();
  // Offsets of small frames are found to two pixels.
  ASSERT_GE(expected.cols, kCols + (kFrames - 1) * 58);
  for (unsigned round = 0; round < 3; ++round) {
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < kThreads; ++i) {
      threads.emplace_back([this, seed = kThreads * round + i] { rage(seed); });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_GT(opened_.exchange(0), 0) << round;
    slot_.put(nullptr);
    const cv::Mat mosaic = undisturbed();
    ASSERT_EQ(mosaic.size(), expected.size()) << round;
    EXPECT_EQ(cv::norm(mosaic, expected, cv::NORM_INF), 0.0) << round;
  }
}

// The stops of one thread meet the frames of another at every point of their way.
TEST_F(SessionStorm, OfOpensAndStops) {
  std::atomic<bool> ended{false};
  std::thread stopping([&] {
    while (!ended) {
      if (const std::shared_ptr<Session> session = slot_.get()) session->stop();
      std::this_thread::yield();
    }
  });
  for (int round = 0; round < 300; ++round) {
    const auto session = std::make_shared<Session>(options());
    slot_.put(session);
    session->stop();
    // Whoever stopped it, the next one can be opened.
    slot_.put(nullptr);
  }
  ended = true;
  stopping.join();
  EXPECT_FALSE(undisturbed().empty());
}
