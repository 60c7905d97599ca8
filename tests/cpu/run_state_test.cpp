// SPDX-License-Identifier: Apache-2.0
// A program of its own: what a host finds before its first run.
#include "cpu/run_state.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "features/features_state.h"
#include "imaging/imaging_state.h"
#include "opencl/OpenclJointState.h"

namespace {

template <class Record>
bool isZero(const Record& record) {
  unsigned char bytes[sizeof record];
  std::memcpy(bytes, &record, sizeof record);
  return std::all_of(std::begin(bytes), std::end(bytes),
                     [](unsigned char byte) { return byte == 0; });
}

TEST(StateAtLoad, NoBufferExists) {
  unsigned char* const bytes[] = {theSorImageScale,
                                  thedestImageScale,
                                  theSorImageTemp,
                                  thedestImage_pre,
                                  SorImageOneIn,
                                  DestImageTwoIn,
                                  SorTempGrayImage,
                                  DestTempGrayImage,
                                  SorImageOnergb_gray,
                                  DestImageTworgb_gray,
                                  gray_pointdownscal,
                                  gray_pointdownscal1,
                                  OverlapImageOne,
                                  OverlapImageTwo,
                                  OverLapImageOneGray,
                                  OverLapImageTwoGray,
                                  OverLapImageOneGrayTemp,
                                  OverLapImageTwoGrayTemp,
                                  resiz_One,
                                  resiz_Two,
                                  resiz_OneBound,
                                  resiz_TwoBound,
                                  resiz_OneBoundFilter,
                                  resiz_TwoBoundFilter,
                                  PreFrameImageGrayCpu,
                                  CurFrameImageGrayCpu,
                                  PreFrameImageGrayBoundCpu,
                                  PreFrameImageGrayBoundTempCpu,
                                  CurFrameImageGrayBoundCpu,
                                  CurFrameImageGrayBoundTempCpu,
                                  AreaImageOneWeight,
                                  AreaImageOneGary,
                                  AreaImageTwoGary};
  for (const unsigned char* buffer : bytes) EXPECT_EQ(buffer, nullptr);
  float* const floats[] = {Coonervalue,
                           Coonervalue1,
                           dst_row_bound_out1,
                           dst_out1,
                           dst_row_bound_out2,
                           dst_out2,
                           grad_x2,
                           grad_y2,
                           grad_xy,
                           grad_x21,
                           grad_y21,
                           grad_xy1,
                           grad_bound,
                           grad_bound_temp,
                           grad_bound1,
                           grad_bound_temp1,
                           AreaImageOneGaryFloat,
                           AreaImageTwoGaryFloat,
                           dist_valueCpu};
  for (const float* buffer : floats) EXPECT_EQ(buffer, nullptr);
  for (const unsigned short* buffer :
       {FeatureDescriber1, FeatureDescriber2, DescribleSymbol, DescribleSymbol1}) {
    EXPECT_EQ(buffer, nullptr);
  }
}

TEST(StateAtLoad, ListsAndMatricesOfBothBackendsAreEmpty) {
  for (const std::vector<SPoint>& corners :
       {HarrissCornerSPointOneArray, HarrissCornerSPointTwoArray, HarrissCornerSPointOneArrayCL,
        HarrissCornerSPointTwoArrayCL}) {
    EXPECT_TRUE(corners.empty());
  }
  EXPECT_TRUE(mosaicImgCpu.empty());
  EXPECT_TRUE(mosaicImgCL.empty());
}

TEST(StateAtLoad, NoThreadRunsAndNothingIsAsked) {
  EXPECT_EQ(one_pid, 0U);
  EXPECT_EQ(two_pid, 0U);
  EXPECT_FALSE(startOneThFlag);
  EXPECT_FALSE(startTwoThFlag);
  EXPECT_FALSE(threadOneCalcFlag);
  EXPECT_FALSE(threadTwoCalcFlag);
}

TEST(StateAtLoad, RecordsAndHintAreZero) {
  EXPECT_TRUE(isZero(flagsCpu));
  EXPECT_TRUE(isZero(outbordLeftCpu));
  EXPECT_TRUE(isZero(outbordRightCpu));
  EXPECT_TRUE(isZero(theSorImageInfoCpu));
  EXPECT_TRUE(isZero(thedestImageInfoCpu));
  EXPECT_TRUE(isZero(InfoTh));
  EXPECT_EQ(cpuMotordx, 0);
  EXPECT_EQ(cpuMotordy, 0);
  EXPECT_FALSE(cpuMotorflage);
}

/// Hosts look at them as bytes.
TEST(RunState, FlagsAreOneByteEach) {
  EXPECT_EQ(sizeof startOneThFlag, 1U);
  EXPECT_EQ(sizeof startTwoThFlag, 1U);
  EXPECT_EQ(sizeof threadOneCalcFlag, 1U);
  EXPECT_EQ(sizeof threadTwoCalcFlag, 1U);
  EXPECT_EQ(sizeof cpuMotorflage, 1U);
}

}  // namespace
