// SPDX-License-Identifier: Apache-2.0
// What a run leaves when it is stopped, and when one of the other backend takes its place.
#include <gtest/gtest.h>

#include <cstddef>
#include <opencv2/core.hpp>
#include <thread>

#include "cpu/run_state.h"
#include "cpu/stitching_run.h"
#include "features/features_state.h"
#include "imaging/assistant.h"

namespace {

void start() { ASSERT_TRUE(initJointCpu(40, 60, 1, 1, 400, 500)); }

TEST(GivingWay, LeavesNoBuffersAndNoMosaic) {
  start();
  mosaicImgCpu.create(3, 4, CV_8UC1);
  HarrissCornerSPointOneArray.resize(9);
  framequilt::giveWayCpu();
  EXPECT_EQ(theSorImageScale, nullptr);
  EXPECT_EQ(thedestImage_pre, nullptr);
  EXPECT_EQ(HarrissCornerSPointOneArray.capacity(), 0U);
  EXPECT_TRUE(mosaicImgCpu.empty());
  EXPECT_FALSE(startOneThFlag);
  uninitJointCpu();
}

TEST(GivingWay, OfNoRunChangesNothing) {
  mosaicImgCpu.create(3, 4, CV_8UC1);
  framequilt::giveWayCpu();
  EXPECT_FALSE(mosaicImgCpu.empty());
  mosaicImgCpu.release();
}

TEST(WorkerOfARun, IsLentUntilTheRunEndsOrGivesWay) {
  // Worth waking a thread, not starting one.
  constexpr std::size_t kPixels = 300000;
  const bool hasTwo = std::thread::hardware_concurrency() > 1;
  EXPECT_FALSE(framequilt::paysForTwo(kPixels));
  start();
  EXPECT_EQ(framequilt::paysForTwo(kPixels), hasTwo);
  framequilt::giveWayCpu();
  EXPECT_FALSE(framequilt::paysForTwo(kPixels));
  start();
  EXPECT_EQ(framequilt::paysForTwo(kPixels), hasTwo);
  uninitJointCpu();
  EXPECT_FALSE(framequilt::paysForTwo(kPixels));
}

}  // namespace
