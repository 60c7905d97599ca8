// SPDX-License-Identifier: Apache-2.0
// This program has a descriptor of its own in front of the library's: something can be made to
// happen in the middle of a worker's job.
#include <gtest/gtest.h>

#include <functional>
#include <new>

#include "cpu/offset_estimation.h"
#include "features/descriptor.h"
#include "tests/cpu/run_fixture.h"
#include "tests/support/library_definition.h"
#include "tests/support/recorded_reports.h"

namespace {

std::function<void()> inTheJobOfOne, inTheJobOfTwo;

class WorkerEnd : public RunForPairs {
 protected:
  void TearDown() override {
    inTheJobOfOne = inTheJobOfTwo = nullptr;
    RunForPairs::TearDown();
  }

  bool estimate() {
    int dx = 0, dy = 0, matchCount = 0;
    return imageMosaicFun(image_.data(), image_.data(), {0, 1, kRows, kCols}, dx, dy, matchCount);
  }

  Bytes image_ = texture(kRows, kCols, 41);
};

TEST_F(WorkerEnd, JobIsFinishedWhenTheRunFlagIsClearedDuringIt) {
  inTheJobOfOne = [] { startOneThFlag = false; };
  inTheJobOfTwo = [] { startTwoThFlag = false; };
  EXPECT_TRUE(estimate());
  EXPECT_FALSE(startOneThFlag);
  EXPECT_FALSE(startTwoThFlag);
  const RecordedReports reports;
  uninitJointCpu();
  EXPECT_EQ(reports.ofCaller(),
            (Lines{"pthread_join model_pid success", "pthread_join match_pid success"}));
}

/// A request that follows the job at once may still be served, so the thread's end is waited for.
TEST_F(WorkerEnd, EstimationAfterAWorkerLeftReturns) {
  static std::atomic<bool> running;
  running = true;
  struct AtThreadEnd {
    ~AtThreadEnd() { running = false; }
  };
  inTheJobOfOne = [] {
    thread_local const AtThreadEnd atThreadEnd;
    startOneThFlag = false;
  };
  EXPECT_TRUE(estimate());
  waitUntilClear(running);
  EXPECT_FALSE(estimate());
  EXPECT_FALSE(threadOneCalcFlag);
}

/// The withdrawn request stays withdrawn: the worker clears it once more and leaves.
TEST_F(WorkerEnd, StopDuringAJobWaitsForItsEnd) {
  std::atomic<bool> begun{false}, finished{false};
  inTheJobOfOne = [&] {
    begun = true;
    waitUntilClear(startOneThFlag);
    finished = true;
  };
  FeatureDescriber1 = fresh<unsigned short>(area(numpoint, demesion));
  SorImageOneIn = image_.data();
  InfoTh = {0, 1, kRows, kCols};
  threadOneCalcFlag = true;
  while (!begun) std::this_thread::yield();
  uninitJointCpu();
  EXPECT_TRUE(finished);
  EXPECT_EQ(DescribleSymbol, nullptr);
}

TEST_F(WorkerEnd, FailureInOneWorkerIsAFailedEstimationAndNoMore) {
  const auto fail = [] { throw std::bad_alloc(); };
  inTheJobOfOne = fail;
  EXPECT_FALSE(estimate());
  inTheJobOfOne = nullptr;
  inTheJobOfTwo = fail;
  EXPECT_FALSE(estimate());
  EXPECT_EQ(DescribleSymbol, nullptr);
  EXPECT_EQ(DescribleSymbol1, nullptr);
  EXPECT_EQ(FeatureDescriber1, nullptr);
  EXPECT_FALSE(threadOneCalcFlag);
  EXPECT_FALSE(threadTwoCalcFlag);
  inTheJobOfTwo = nullptr;
  EXPECT_TRUE(estimate());
}

}  // namespace

bool noRotaFeatureDescriber(unsigned char* image, int rows, int cols, int length, int patch,
                            std::vector<SPoint> corners, unsigned short* scratch,
                            unsigned short* descriptors) {
  static auto* const library = libraryDefinition(
      &noRotaFeatureDescriber, "_Z22noRotaFeatureDescriberPhiiiiSt6vectorI6SPointSaIS1_EEPtS4_");
  const auto& happening = descriptors == FeatureDescriber1 ? inTheJobOfOne : inTheJobOfTwo;
  if (happening) happening();
  return library(image, rows, cols, length, patch, corners, scratch, descriptors);
}
