// SPDX-License-Identifier: Apache-2.0
#include "cpu/stitching_run.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/wait.h>

#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <new>
#include <opencv2/core.hpp>

#include "imaging/gray.h"
#include "tests/cpu/run_fixture.h"
#include "tests/support/captured_output.h"
#include "tests/support/recorded_reports.h"

namespace {

/// Stops the run that the test leaves open, and gives tuning its defaults back.
class StitchingRun : public testing::Test {
 protected:
  void TearDown() override {
    uninitJointCpu();
    scale = 1;
  }
};

const Lines kJoined = {"pthread_join model_pid success", "pthread_join match_pid success"};
const Lines kNothingToJoin = {"pthread_join model_pid failed", "pthread_join match_pid failed"};

Lines linesOfStop() {
  const RecordedReports reports;
  EXPECT_TRUE(uninitJointCpu());
  return reports.ofCaller();
}

TEST_F(StitchingRun, StartIsSilentButForTheSecondWorker) {
  const RecordedReports reports;
  EXPECT_TRUE(initJointCpu(20, 30, 3, 1, 400, 500));
  EXPECT_EQ(reports.ofCaller(), Lines{});
  EXPECT_TRUE(uninitJointCpu());
  EXPECT_EQ(reports.ofCaller(), kJoined);
  EXPECT_EQ(reports.ofWorkers(), Lines{"findHarrisCornerCoordianteThreadTwo in"});
}

TEST_F(StitchingRun, StopWithoutStartHasNothingToJoin) {
  EXPECT_EQ(standardOutputOf([] { EXPECT_TRUE(uninitJointCpu()); }),
            "pthread_join model_pid failed\npthread_join match_pid failed\n");
}

TEST_F(StitchingRun, SecondStopHasNothingToJoin) {
  ASSERT_TRUE(initJointCpu(20, 30, 3, 1, 400, 500));
  EXPECT_EQ(linesOfStop(), kJoined);
  EXPECT_EQ(linesOfStop(), kNothingToJoin);
}

TEST_F(StitchingRun, FlagsFollowTheRun) {
  ASSERT_TRUE(initJointCpu(20, 30, 3, 1, 400, 500));
  EXPECT_TRUE(startOneThFlag);
  EXPECT_TRUE(startTwoThFlag);
  EXPECT_FALSE(threadOneCalcFlag);
  EXPECT_FALSE(threadTwoCalcFlag);
  uninitJointCpu();
  EXPECT_FALSE(startOneThFlag);
  EXPECT_FALSE(startTwoThFlag);
  EXPECT_EQ(one_pid, 0U);
  EXPECT_EQ(two_pid, 0U);
}

TEST_F(StitchingRun, StopWithdrawsRequests) {
  threadOneCalcFlag = true;
  threadTwoCalcFlag = true;
  uninitJointCpu();
  EXPECT_FALSE(threadOneCalcFlag);
  EXPECT_FALSE(threadTwoCalcFlag);
}

TEST_F(StitchingRun, ArgumentsAreRecorded) {
  ASSERT_TRUE(initJointCpu(21, 35, 3, 4, 400, 500));
  EXPECT_EQ(RealImgRow, 21);
  EXPECT_EQ(RealImgCol, 35);
  EXPECT_EQ(pvalue, 4);
  EXPECT_EQ(MAXROW, 400);
  EXPECT_EQ(MAXCOL, 500);
}

TEST_F(StitchingRun, FrameRecordsKeepTheirReservedField) {
  theSorImageInfoCpu = {7, 1, 1, 1};
  thedestImageInfoCpu = {8, 1, 1, 1};
  ASSERT_TRUE(initJointCpu(21, 35, 3, 1, 400, 500));
  int reserved = 7;
  for (const imgInfo& info : {theSorImageInfoCpu, thedestImageInfoCpu}) {
    EXPECT_EQ(info.reserved, reserved++);
    EXPECT_EQ(info.channels, 3);
    EXPECT_EQ(info.rows, 21);
    EXPECT_EQ(info.cols, 35);
  }
}

struct Derived {
  int scale, budget, workingRows, workingCols, numpoint, num5000;
};

TEST_F(StitchingRun, SizesAndBudgetsAreDerived) {
  // Frames of 103 x 58. The first product is (budget + 8) * (580 - 80 * scale).
  const Derived cases[] = {
      {1, 1, 103, 58, 181, 1267},       // 4500 / 16 = 281.25
      {1, 0, 103, 58, 150, 1050},       // 4000 / 16
      {1, 2, 103, 58, 212, 1484},       // 5000 / 16 = 312.5
      {2, 1, 51, 29, 136, 952},         // 3780 / 16 = 236.25
      {3, 1, 34, 19, 91, 637},          // 3060 / 16 = 191.25
      {1, -9, 103, 58, -131, -917},     // -500 / 16 = -31.25, toward zero
      {8, 1, 12, 7, -133, -931},        // 9 * -60 / 16 = -33.75, toward zero
      {1, INT_MAX, 103, 58, 118, 826},  // wraps to 3500
  };
  for (const Derived& expected : cases) {
    SCOPED_TRACE(testing::Message() << "scale " << expected.scale << " budget " << expected.budget);
    scale = expected.scale;
    ASSERT_TRUE(initJointCpu(103, 58, 1, expected.budget, 400, 500));
    EXPECT_EQ(imgScaleRow, expected.workingRows);
    EXPECT_EQ(imgScaleCol, expected.workingCols);
    EXPECT_EQ(numpoint, expected.numpoint);
    EXPECT_EQ(num5000, expected.num5000);
    uninitJointCpu();
  }
}

TEST_F(StitchingRun, GrayTablesAreRefilledAtEveryStart) {
  for (int start = 0; start < 2; ++start) {
    for (unsigned int* table : {R1, G1, B1}) std::fill_n(table, 256, 999U);
    ASSERT_TRUE(initJointCpu(20, 30, 1, 1, 400, 500));
    for (unsigned int i = 0; i < 256; ++i) {
      ASSERT_EQ(R1[i], i * 1224 / 4096);
      ASSERT_EQ(G1[i], i * 2404 / 4096);
      ASSERT_EQ(B1[i], i * 467 / 4096);
    }
    EXPECT_EQ(R1[255], 76U);
    EXPECT_EQ(G1[255], 149U);
    EXPECT_EQ(B1[255], 29U);
  }
}

TEST_F(StitchingRun, RecordAndBoxAreZeroAtTheStart) {
  std::memset(&flagsCpu, 0x55, sizeof flagsCpu);
  outbordLeftCpu = {1, 2};
  outbordRightCpu = {3, 4};
  ASSERT_TRUE(initJointCpu(20, 30, 1, 1, 400, 500));
  Bytes record(sizeof flagsCpu);
  std::memcpy(record.data(), &flagsCpu, record.size());
  EXPECT_EQ(record, Bytes(40, 0));
  EXPECT_EQ(outbordLeftCpu, (SPoint{0, 0}));
  EXPECT_EQ(outbordRightCpu, (SPoint{0, 0}));
}

TEST_F(StitchingRun, MosaicOfAnEarlierRunStaysUntilTheStop) {
  mosaicImgCpu = cv::Mat::ones(3, 4, CV_8UC1);
  const cv::Mat kept = mosaicImgCpu;
  ASSERT_TRUE(initJointCpu(20, 30, 1, 1, 400, 500));
  EXPECT_EQ(mosaicImgCpu.rows, 3);
  uninitJointCpu();
  EXPECT_TRUE(mosaicImgCpu.empty());
  EXPECT_EQ(cv::countNonZero(kept), 12) << "a matrix that was handed out outlives the run";
}

TEST_F(StitchingRun, StopGivesTheCornerListsStorageBack) {
  HarrissCornerSPointOneArray.assign(10, SPoint{});
  HarrissCornerSPointTwoArray.reserve(10);
  uninitJointCpu();
  EXPECT_EQ(HarrissCornerSPointOneArray.capacity(), 0U);
  EXPECT_EQ(HarrissCornerSPointTwoArray.capacity(), 0U);
}

// --- Buffers ---

void expectZeros(const unsigned char* buffer, std::size_t bytes) {
  ASSERT_NE(buffer, nullptr);
  ASSERT_GE(malloc_usable_size(const_cast<unsigned char*>(buffer)), bytes);
  EXPECT_TRUE(std::all_of(buffer, buffer + bytes, [](unsigned char byte) { return byte == 0; }));
}

TEST_F(StitchingRun, BuffersAreZeroAtTheirSizes) {
  for (const int factor : {1, 2, 3}) {
    for (const int channels : {1, 2, 3}) {
      SCOPED_TRACE(testing::Message() << "scale " << factor << " channels " << channels);
      scale = factor;
      ASSERT_TRUE(initJointCpu(50, 41, channels, 1, 400, 500));
      const std::size_t working = area(50 / factor, 41 / factor, channels);
      expectZeros(theSorImageTemp, working);
      expectZeros(theSorImageScale, working);
      // The motion measure reads it at the size of a full frame.
      expectZeros(thedestImageScale, area(50, 41, channels));
      expectZeros(thedestImage_pre, area(50, 41, channels));
      uninitJointCpu();
    }
  }
}

TEST_F(StitchingRun, SecondStartKeepsBuffersThatAreLargeEnough) {
  ASSERT_TRUE(initJointCpu(50, 40, 3, 1, 400, 500));
  unsigned char* const kept[] = {theSorImageTemp, thedestImageScale, theSorImageScale,
                                 thedestImage_pre};
  theSorImageTemp[0] = 17;
  ASSERT_TRUE(initJointCpu(40, 40, 3, 1, 400, 500));
  unsigned char* const now[] = {theSorImageTemp, thedestImageScale, theSorImageScale,
                                thedestImage_pre};
  EXPECT_TRUE(std::equal(std::begin(kept), std::end(kept), std::begin(now)));
  EXPECT_EQ(theSorImageTemp[0], 17);
}

TEST_F(StitchingRun, SecondStartOfALargerShapeHasLargerBuffers) {
  ASSERT_TRUE(initJointCpu(10, 10, 1, 1, 400, 500));
  ASSERT_TRUE(initJointCpu(300, 400, 3, 1, 400, 500));
  for (unsigned char* buffer :
       {theSorImageTemp, thedestImageScale, theSorImageScale, thedestImage_pre}) {
    expectZeros(buffer, area(300, 400, 3));
  }
}

TEST_F(StitchingRun, BufferOfTheHostIsTakenAtItsWord) {
  unsigned char* const mine = fresh<unsigned char>(area(50, 40), 9);
  theSorImageTemp = mine;
  ASSERT_TRUE(initJointCpu(50, 40, 1, 1, 400, 500));
  EXPECT_EQ(theSorImageTemp, mine);
  EXPECT_EQ(theSorImageTemp[1999], 9);
}

TEST_F(StitchingRun, SizesThatCannotBeAreBadAllocAndTheRunCanBeStopped) {
  const int shapes[][3] = {
      {-4, 5, 3},
      {4, -5, 3},
      {4, 5, -3},         // negative products
      {46341, 46341, 1},  // 2^31 + 4633
      {65536, 65536, 1},  // 0 in 32 bits
      {INT_MAX, INT_MAX, INT_MAX},
  };
  for (const auto& [rows, cols, channels] : shapes) {
    SCOPED_TRACE(testing::Message() << rows << " x " << cols << " x " << channels);
    EXPECT_THROW(initJointCpu(rows, cols, channels, 1, 400, 500), std::bad_alloc);
    EXPECT_EQ(linesOfStop(), kJoined);
    EXPECT_EQ(theSorImageTemp, nullptr);
    EXPECT_EQ(thedestImage_pre, nullptr);
  }
  EXPECT_TRUE(initJointCpu(20, 30, 3, 1, 400, 500)) << "the next start is not affected";
}

TEST_F(StitchingRun, OnlyTheFullSizeOverflowsAtHigherScale) {
  scale = 100;
  EXPECT_THROW(initJointCpu(46341, 46341, 1, 1, 400, 500), std::bad_alloc);
  EXPECT_EQ(linesOfStop(), kJoined);
}

TEST_F(StitchingRun, StopReleasesWhateverAHostHasSet) {
  unsigned char** const bytes[] = {&theSorImageTemp,
                                   &thedestImageScale,
                                   &theSorImageScale,
                                   &SorImageOnergb_gray,
                                   &DestImageTworgb_gray,
                                   &gray_pointdownscal,
                                   &gray_pointdownscal1,
                                   &OverlapImageOne,
                                   &OverlapImageTwo,
                                   &OverLapImageOneGray,
                                   &OverLapImageTwoGray,
                                   &OverLapImageOneGrayTemp,
                                   &OverLapImageTwoGrayTemp,
                                   &resiz_One,
                                   &resiz_Two,
                                   &resiz_OneBound,
                                   &resiz_TwoBound,
                                   &resiz_OneBoundFilter,
                                   &resiz_TwoBoundFilter,
                                   &AreaImageOneWeight,
                                   &AreaImageOneGary,
                                   &AreaImageTwoGary,
                                   &thedestImage_pre,
                                   &PreFrameImageGrayCpu,
                                   &CurFrameImageGrayCpu,
                                   &PreFrameImageGrayBoundCpu,
                                   &PreFrameImageGrayBoundTempCpu,
                                   &CurFrameImageGrayBoundCpu,
                                   &CurFrameImageGrayBoundTempCpu};
  float** const floats[] = {&grad_x2,
                            &grad_x21,
                            &grad_y2,
                            &grad_y21,
                            &grad_xy,
                            &grad_xy1,
                            &grad_bound,
                            &grad_bound1,
                            &grad_bound_temp,
                            &grad_bound_temp1,
                            &Coonervalue,
                            &Coonervalue1,
                            &dst_row_bound_out1,
                            &dst_out1,
                            &dst_row_bound_out2,
                            &dst_out2,
                            &AreaImageOneGaryFloat,
                            &AreaImageTwoGaryFloat};
  static_assert(std::size(bytes) + std::size(floats) == 47);
  for (unsigned char** slot : bytes) *slot = new unsigned char[1];
  for (float** slot : floats) *slot = new float[1];
  EXPECT_TRUE(uninitJointCpu());
  for (std::size_t i = 0; i < std::size(bytes); ++i) EXPECT_EQ(*bytes[i], nullptr) << i;
  for (std::size_t i = 0; i < std::size(floats); ++i) EXPECT_EQ(*floats[i], nullptr) << i;
}

// --- Scale 0 ---

/// Sanitizers turn the trap into an exit of their own.
bool diedOfTheDivision(int status) {
  if (WIFSIGNALED(status)) return WTERMSIG(status) == SIGFPE;
  return WIFEXITED(status) && WEXITSTATUS(status) != 0;
}

TEST(StitchingRunDeathTest, ScaleZeroDividesByZero) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(
      {
        scale = 0;
        initJointCpu(20, 30, 3, 1, 400, 500);
        std::_Exit(0);
      },
      diedOfTheDivision, "");
}

}  // namespace
