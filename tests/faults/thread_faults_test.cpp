// SPDX-License-Identifier: Apache-2.0
// Threads that cannot be had or not be joined: a worker of the run, and the one that helps for the
// length of a call.
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <new>

#include "cpu/corner_lane.h"
#include "imaging/assistant.h"
#include "tests/faults/fault_sweep.h"
#include "tests/support/process_threads.h"

namespace {

using framequilt::Assistant;
using framequilt::CornerLane;

TEST(ThreadFaults, LeaveTheWorkToTheCallerOrAreNotNoticed) {
  const FaultsOfProgram counted;
  sweepFaults("thread for a call", [](long failing) {
    std::atomic<int> done{0};
    FaultyCall call = callWithFault(failing, [&] {
      Assistant assistant(true, [&] { ++done; });
      const bool helps = assistant.works();
      assistant.join();
      EXPECT_FALSE(assistant.works());
      EXPECT_EQ(done, helps ? 1 : 0);
      return helps ? "as usual" : "alone";
    });
    const bool noThread =
        call.passed.failed == "pthread_create" || call.passed.failed == "operator new";
    EXPECT_EQ(call.outcome, noThread ? "alone" : "as usual") << call.passed.failed;
    return call;
  });
}

std::atomic<bool> run, request;
pthread_t id;
CornerLane* lane = nullptr;
std::atomic<bool> begun, finished;

void* serve(void* /*unused*/) {
  lane->serve([] {
    begun = true;
    while (run) std::this_thread::yield();
    finished = true;
    return true;
  });
  return nullptr;
}

TEST(ThreadFaults, OfAJoinLeaveNoWorkerInItsJob) {
  const FaultsOfProgram counted;
  const int threads = threadsAtRest();
  const long unjoined = unjoinedThreads();
  CornerLane own(run, request, id);
  lane = &own;
  for (int times = 0; times < 2; ++times) {
    run = true;
    begun = finished = false;
    ASSERT_TRUE(own.start(serve));
    own.request();
    while (!begun) std::this_thread::yield();
    own.dismiss();
    armFaults(1);
    EXPECT_FALSE(own.join());
    EXPECT_EQ(disarmFaults().failed, "pthread_join");
    EXPECT_TRUE(finished);
    EXPECT_EQ(id, 0U);
    EXPECT_EQ(unjoinedThreads(), unjoined);
    waitForThreads(threads);
  }
}

TEST(ThreadFaults, OfAJoinAreNotNoticedBeforeTheWorkerBegins) {
  const FaultsOfProgram counted;
  const int threads = threadsAtRest();
  CornerLane own(run, request, id);
  lane = &own;
  run = true;
  ASSERT_TRUE(own.start(serve));
  own.dismiss();
  armFaults(1);
  EXPECT_FALSE(own.join());
  disarmFaults();
  own.request();
  EXPECT_FALSE(own.await()) << "nobody serves";
  waitForThreads(threads);
}

bool lacksMemory = false;

void* serveOrLack(void* /*unused*/) {
  lane->serve([] {
    if (lacksMemory) throw std::bad_alloc();
    return false;
  });
  return nullptr;
}

TEST(ThreadFaults, OfMemoryAreToldFromOtherFailures) {
  CornerLane own(run, request, id);
  lane = &own;
  run = true;
  ASSERT_TRUE(own.start(serveOrLack));
  for (const bool lacks : {true, false}) {
    lacksMemory = lacks;
    own.request();
    EXPECT_FALSE(own.await());
    EXPECT_EQ(own.lackedMemory(), lacks);
  }
  own.dismiss();
  EXPECT_TRUE(own.join());
}

}  // namespace
