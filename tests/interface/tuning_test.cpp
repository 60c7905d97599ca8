// SPDX-License-Identifier: Apache-2.0
#include <framequilt/framequilt.h>
#include <framequilt/tuning.h>
#include <gtest/gtest.h>

#include <iterator>
#include <vector>

#include "tests/support/same_types.h"

namespace {

template <class T, std::size_t N>
std::vector<T> contents(const T (&array)[N]) {
  return {std::begin(array), std::end(array)};
}

TEST(TuningDefaults, HostBackend) {
  EXPECT_EQ(MAXROW, 20000);
  EXPECT_EQ(MAXCOL, 20000);
  EXPECT_EQ(scale, 1);
  EXPECT_EQ(pvalue, 1);
  EXPECT_EQ(demesion, 200);
  EXPECT_EQ(brightThCpu0, 40.0F);
  EXPECT_EQ(defintThCpu0, 30.0F);
  EXPECT_EQ(motionValueThCpu0, 5);
  EXPECT_EQ(ImageOverlap_minCpu, 0.1F);
  EXPECT_EQ(ImageOverlap_maxCpu, 0.9F);
  EXPECT_EQ(countJ, 10000);
}

// A host declares the parameters itself, so their types are part of the library's face.

TEST(Tuning, WholeNumbersAreThirtyTwoBits) {
  EXPECT_EQ(sizeof(int), 4U);
  EXPECT_TRUE((kAreAll<int, decltype(MAXROW), decltype(MAXCOL), decltype(scale), decltype(pvalue),
                       decltype(demesion), decltype(motionValueThCpu0), decltype(countJ)>));
  EXPECT_TRUE((kAreAll<int, decltype(MAXROWCL), decltype(MAXCOLCL), decltype(scaleCL),
                       decltype(pvalueCL), decltype(demesionCL), decltype(motionValueThCL0),
                       decltype(filter2DKerSizeCL), decltype(AMDidx), decltype(NVIDIAidx)>));
  EXPECT_TRUE((kAreAll<int, decltype(motionValueThCpu), decltype(motionValueThCL),
                       decltype(RealImgRow), decltype(RealImgCol), decltype(imgScaleRow),
                       decltype(imgScaleCol), decltype(numpoint), decltype(num5000)>));
  EXPECT_TRUE((kAreAll<int, decltype(pointdownscal), decltype(gray_pointdownscal_row),
                       decltype(gray_pointdownscal_col), decltype(GStitchMode),
                       decltype(GstaticDynamicFlag)>));
  EXPECT_TRUE((kAreAll<int[4], decltype(filter2DKerSize)>));
}

TEST(Tuning, LimitsAndKernelsAreSinglePrecision) {
  EXPECT_TRUE(
      (kAreAll<float, decltype(brightThCpu0), decltype(defintThCpu0), decltype(ImageOverlap_minCpu),
               decltype(ImageOverlap_maxCpu), decltype(brightThCL0), decltype(defintThCL0),
               decltype(ImageOverlap_minCL), decltype(ImageOverlap_maxCL)>));
  EXPECT_TRUE((kAreAll<float, decltype(brightThCpu), decltype(defintThCpu), decltype(brightThCL),
                       decltype(defintThCL)>));
  EXPECT_TRUE((kAreAll<float[5], decltype(filter2DKer), decltype(filter2DKer1),
                       decltype(filter2DKerModel)>));
  EXPECT_TRUE((kAreAll<float[9], decltype(filterH2Dker), decltype(filterH2DefKer)>));
}

TEST(Tuning, DeviceFlagsAreOneByte) {
  EXPECT_EQ(sizeof(openclDeviceFlag), 1U);
  EXPECT_EQ(sizeof(cudaDeviceFlag), 1U);
}

TEST(TuningDefaults, Kernels) {
  const std::vector<float> corner = {0.187627F, 0.206068F, 0.212609F, 0.206068F, 0.187627F};
  EXPECT_EQ(contents(filter2DKer), corner);
  EXPECT_EQ(contents(filter2DKer1), corner);
  EXPECT_EQ(contents(filter2DKerModel),
            (std::vector<float>{0.0554487F, 0.244201F, 0.40262F, 0.244201F, 0.0554487F}));
  EXPECT_EQ(contents(filterH2Dker), (std::vector<float>{0.0625F, 0.125F, 0.0625F, 0.125F, 0.25F,
                                                        0.125F, 0.0625F, 0.125F, 0.0625F}));
  EXPECT_EQ(contents(filterH2DefKer),
            (std::vector<float>{-1.0F, -2.0F, -1.0F, 2.0F, 4.0F, 2.0F, -1.0F, -2.0F, -1.0F}));
  EXPECT_EQ(filter2DKerSize[0], 5);
  EXPECT_EQ(std::size(filter2DKerSize), 4U);
}

TEST(TuningDefaults, OpenclBackend) {
  EXPECT_EQ(MAXROWCL, 30000);
  EXPECT_EQ(MAXCOLCL, 30000);
  EXPECT_EQ(scaleCL, 1);
  EXPECT_EQ(pvalueCL, 1);
  EXPECT_EQ(demesionCL, 200);
  EXPECT_EQ(brightThCL0, 40.0F);
  EXPECT_EQ(defintThCL0, 30.0F);
  EXPECT_EQ(motionValueThCL0, 5);
  EXPECT_EQ(ImageOverlap_minCL, 0.1F);
  EXPECT_EQ(ImageOverlap_maxCL, 0.9F);
  EXPECT_EQ(filter2DKerSizeCL, 5);
  EXPECT_EQ(AMDidx, -1);
  EXPECT_EQ(NVIDIAidx, -1);
}

TEST(TuningDefaults, LimitsInForceAreZeroBeforeTheFirstFrame) {
  EXPECT_EQ(brightThCpu, 0.0F);
  EXPECT_EQ(defintThCpu, 0.0F);
  EXPECT_EQ(motionValueThCpu, 0);
  EXPECT_EQ(brightThCL, 0.0F);
  EXPECT_EQ(defintThCL, 0.0F);
  EXPECT_EQ(motionValueThCL, 0);
}

TEST(TuningDefaults, NothingRuns) {
  EXPECT_EQ(RealImgRow, 0);
  EXPECT_EQ(RealImgCol, 0);
  EXPECT_EQ(imgScaleRow, 0);
  EXPECT_EQ(imgScaleCol, 0);
  EXPECT_EQ(numpoint, 0);
  EXPECT_EQ(num5000, 0);
  EXPECT_EQ(pointdownscal, 0);
  EXPECT_EQ(gray_pointdownscal_row, 0);
  EXPECT_EQ(gray_pointdownscal_col, 0);
  EXPECT_EQ(GStitchMode, 0);
  EXPECT_EQ(GstaticDynamicFlag, 0);
  EXPECT_FALSE(openclDeviceFlag);
  EXPECT_FALSE(cudaDeviceFlag);
}

}  // namespace
