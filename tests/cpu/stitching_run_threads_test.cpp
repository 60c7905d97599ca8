// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <thread>

#include "cpu/corner_worker.h"
#include "cpu/offset_estimation.h"
#include "cpu/run_state.h"
#include "cpu/stitching_run.h"
#include "features/features_state.h"
#include "tests/cpu/run_fixture.h"
#include "tests/cpu/thread_calls.h"
#include "tests/support/recorded_reports.h"

namespace {

bool start() { return initJointCpu(20, 30, 3, 1, 400, 500); }

class RunThreads : public testing::Test {
 protected:
  void TearDown() override {
    uninitJointCpu();
    EXPECT_EQ(threadCalls().running, 0);
    watchThreads();
  }
};

TEST_F(RunThreads, StartCreatesTwoAndStopJoinsBoth) {
  watchThreads();
  ASSERT_TRUE(start());
  EXPECT_EQ(threadCalls().creations, 2);
  EXPECT_EQ(threadCalls().running, 2);
  EXPECT_FALSE(pthread_equal(one_pid, two_pid));
  uninitJointCpu();
  EXPECT_EQ(threadCalls().joins, 2);
  EXPECT_EQ(threadCalls().running, 0);
}

TEST_F(RunThreads, WorkerOneIsCreatedFirstAndNeitherIsGivenAnything) {
  watchThreads();
  ASSERT_TRUE(start());
  EXPECT_EQ(threadCalls().bodies[0], &findHarrisCornerCoordianteThreadOne);
  EXPECT_EQ(threadCalls().bodies[1], &findHarrisCornerCoordianteThreadTwo);
  EXPECT_EQ(threadCalls().special, 0) << "default attributes, no argument";
}

TEST_F(RunThreads, SecondStartJoinsTheOldThreadsSilentlyAndCreatesTwo) {
  const RecordedReports reports;
  watchThreads();
  ASSERT_TRUE(start());
  ASSERT_TRUE(start());
  EXPECT_EQ(reports.ofCaller(), Lines{});
  EXPECT_EQ(threadCalls().creations, 4);
  EXPECT_EQ(threadCalls().joins, 2);
  EXPECT_EQ(threadCalls().running, 2);
  uninitJointCpu();
  EXPECT_EQ(threadCalls().joins, 4);
  EXPECT_EQ(reports.ofCaller(),
            (Lines{"pthread_join model_pid success", "pthread_join match_pid success"}));
  EXPECT_EQ(reports.ofWorkers(), Lines(2, "findHarrisCornerCoordianteThreadTwo in"));
}

TEST_F(RunThreads, JoinThatFailsIsToldAndItsThreadLeaves) {
  const RecordedReports reports;
  watchThreads();
  ASSERT_TRUE(start());
  threadCalls().failing = 1;
  uninitJointCpu();
  EXPECT_EQ(reports.ofCaller(),
            (Lines{"pthread_join model_pid failed", "pthread_join match_pid success"}));
  // Nobody joins it.
  while (threadCalls().running > 0) std::this_thread::yield();
  watchThreads();
  ASSERT_TRUE(start());
  EXPECT_EQ(threadCalls().creations, 2);
}

TEST_F(RunThreads, FirstThreadRefused) {
  const RecordedReports reports;
  watchThreads(1);
  EXPECT_FALSE(start());
  EXPECT_EQ(reports.ofCaller(), Lines{"ALG_template_model_init_process_pthread faled"});
  EXPECT_EQ(threadCalls().creations, 1) << "the second is not tried";
  EXPECT_EQ(threadCalls().running, 0);
  EXPECT_EQ(theSorImageTemp, nullptr);
  EXPECT_TRUE(uninitJointCpu());
  EXPECT_EQ(reports.ofCaller(),
            (Lines{"ALG_template_model_init_process_pthread faled", "pthread_join model_pid failed",
                   "pthread_join match_pid failed"}));
}

TEST_F(RunThreads, SecondThreadRefusedLeavesTheFirstUntilTheStop) {
  const RecordedReports reports;
  watchThreads(2);
  EXPECT_FALSE(start());
  EXPECT_EQ(reports.ofCaller(), Lines{"ALG_search_match_init_process_pthread faled"});
  EXPECT_EQ(threadCalls().running, 1);
  EXPECT_TRUE(startOneThFlag);
  EXPECT_EQ(theSorImageTemp, nullptr);
  EXPECT_TRUE(uninitJointCpu());
  EXPECT_EQ(threadCalls().joins, 1);
  EXPECT_EQ(threadCalls().running, 0);
  EXPECT_EQ(reports.ofCaller(),
            (Lines{"ALG_search_match_init_process_pthread faled", "pthread_join model_pid success",
                   "pthread_join match_pid failed"}));
}

TEST_F(RunThreads, FailedStartSetsNoSizes) {
  ASSERT_TRUE(start());
  uninitJointCpu();
  watchThreads(2);
  EXPECT_FALSE(initJointCpu(88, 99, 1, 7, 1, 2));
  EXPECT_EQ(RealImgRow, 88);
  EXPECT_EQ(RealImgCol, 99);
  EXPECT_EQ(imgScaleRow, 20);
  EXPECT_EQ(pvalue, 1);
  EXPECT_EQ(MAXROW, 400);
  EXPECT_EQ(theSorImageInfoCpu.rows, 20);
}

TEST_F(RunThreads, StartAfterAFailedStartNeedsNoStop) {
  for (const int refused : {1, 2}) {
    watchThreads(refused);
    EXPECT_FALSE(start());
    EXPECT_TRUE(start());
    EXPECT_EQ(threadCalls().running, 2);
    uninitJointCpu();
    EXPECT_EQ(threadCalls().running, 0);
  }
}

TEST_F(RunThreads, SecondStartThatFailsEndsTheFirstRun) {
  for (const int refused : {3, 4}) {
    watchThreads(refused);
    ASSERT_TRUE(start());
    EXPECT_FALSE(start());
    EXPECT_EQ(threadCalls().joins, 2);
    EXPECT_EQ(threadCalls().running, refused - 3);
    uninitJointCpu();
    EXPECT_EQ(threadCalls().running, 0);
  }
}

TEST_F(RunThreads, EstimationWithOneWorkerMissingReturns) {
  for (const int refused : {1, 2}) {
    watchThreads(refused);
    ASSERT_FALSE(start());
    Bytes image(area(20, 30, 3), 100);
    int dx = 1, dy = 2, matchCount = 3;
    EXPECT_FALSE(imageMosaicFun(image.data(), image.data(), {0, 3, 20, 30}, dx, dy, matchCount));
    EXPECT_FALSE(threadOneCalcFlag);
    EXPECT_FALSE(threadTwoCalcFlag);
    EXPECT_EQ(FeatureDescriber1, nullptr);
    EXPECT_EQ(dx + dy + matchCount, 6);
    uninitJointCpu();
  }
}

}  // namespace
