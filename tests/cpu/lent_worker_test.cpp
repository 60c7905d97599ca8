// SPDX-License-Identifier: Apache-2.0
// The worker of a lane that works for others between its jobs.
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <functional>
#include <future>
#include <thread>

#include "cpu/corner_lane.h"

namespace {

using framequilt::CornerLane;

std::atomic<bool> run, request;
pthread_t id;
CornerLane* lane = nullptr;
/// The lane's own job.
std::function<bool()> job;

void* serve(void* /*unused*/) {
  lane->serve([] { return job(); });
  return nullptr;
}

class LentWorker : public testing::Test {
 protected:
  void SetUp() override {
    lane = &lane_;
    run = true;
    request = false;
    job = [] { return true; };
  }
  void TearDown() override {
    lane_.dismiss();
    if (id != 0) {
      EXPECT_TRUE(lane_.join());
    }
  }

  /// The worker serves then, not only exists.
  void start() {
    ASSERT_TRUE(lane_.start(serve));
    lane_.request();
    ASSERT_TRUE(lane_.await());
  }

  CornerLane lane_{run, request, id, /*lends=*/true};
};

TEST_F(LentWorker, WorksOnItsOwnThreadAndServesAfterwards) {
  start();
  std::thread::id worker, server;
  job = [&] {
    server = std::this_thread::get_id();
    return true;
  };
  for (int i = 0; i < 3; ++i) {
    const std::function<void()> work = [&] { worker = std::this_thread::get_id(); };
    ASSERT_TRUE(lane_.lend(work));
    lane_.awaitLent();
    EXPECT_NE(worker, std::this_thread::get_id());
    lane_.request();
    EXPECT_TRUE(lane_.await());
    EXPECT_EQ(server, worker);
    worker = server = {};
  }
}

TEST_F(LentWorker, IsNotThereBeforeTheStartAndAfterTheEnd) {
  const std::function<void()> work = [] { ADD_FAILURE() << "nobody is there"; };
  EXPECT_FALSE(lane_.lend(work));
  start();
  lane_.dismiss();
  EXPECT_FALSE(lane_.lend(work));
  EXPECT_TRUE(lane_.join());
  EXPECT_FALSE(lane_.lend(work));
}

TEST_F(LentWorker, IsNotLentTwiceNorInItsJob) {
  start();
  std::promise<void> goOn;
  const std::function<void()> waiting = [&] { goOn.get_future().wait(); };
  const std::function<void()> other = [] { ADD_FAILURE() << "it is busy"; };
  ASSERT_TRUE(lane_.lend(waiting));
  EXPECT_FALSE(lane_.lend(other));
  goOn.set_value();
  lane_.awaitLent();

  std::promise<void> end;
  job = [&] {
    end.get_future().wait();
    return true;
  };
  lane_.request();
  EXPECT_FALSE(lane_.lend(other));
  end.set_value();
  EXPECT_TRUE(lane_.await());
}

TEST_F(LentWorker, DoesWhatItWasGivenBeforeItLeaves) {
  start();
  for (int i = 0; i < 50; ++i) {
    std::atomic<bool> done{false};
    const std::function<void()> work = [&] { done = true; };
    ASSERT_TRUE(lane_.lend(work));
    lane_.dismiss();
    lane_.awaitLent();
    EXPECT_TRUE(done);
    EXPECT_TRUE(lane_.join());
    run = true;
    start();
  }
}

TEST_F(LentWorker, OfALaneThatDoesNotLendIsNot) {
  CornerLane keeping(run, request, id);
  lane = &keeping;
  ASSERT_TRUE(keeping.start(serve));
  keeping.request();
  ASSERT_TRUE(keeping.await());
  const std::function<void()> work = [] { ADD_FAILURE() << "not lent"; };
  EXPECT_FALSE(keeping.lend(work));
  keeping.dismiss();
  EXPECT_TRUE(keeping.join());
}

}  // namespace
