// SPDX-License-Identifier: Apache-2.0
#include "tests/opencl/run_objects.h"

#include "opencl/OpenclJointState.h"
#include "tests/opencl/recorded_messages.h"

const std::vector<KernelOfRun>& kernelsOfRun() {
  static const std::vector<KernelOfRun> all = {
      {"opencvcopyFilter2DBorderRowUhcarMode", &opencvcopyFilter2DBorderRowUcharModeKernel,
       debugText("clCreateKernel opencvFilter2DRowCalcFloatWin5ModeKernel failed")},
      {"opencvcopyFilter2DBorderColUcharMode", &opencvcopyFilter2DBorderColUcharModeKernel,
       debugText("clCreateKernel opencvFilter2DRowCalcFloatWin5ModeKernel failed")},
      {"opencvFilter2DRowCalcUcharWin5Mode", &opencvFilter2DRowCalcUcharWin5ModeKernel,
       debugText("clCreateKernel opencvFilter2DRowCalcFloatWin5ModeKernel failed")},
      {"opencvFilter2DColCalcUcharWin5Mode", &opencvFilter2DColCalcUcharWin5ModeKernel,
       debugText("clCreateKernel opencvFilter2DColCalcFloatWin5ModeKernel failed")},
      {"pretJudgeImageCh3Kernel", &pretJudgeCh3Kernel,
       debugText("clCreateKernel pretJudgeCh3Kernel failed")},
      {"pretJudgeImageCh1Kernel", &pretJudgeCh1Kernel,
       debugText("clCreateKernel pretJudgeCh1Kernel failed")},
      {"opencvInterLineARResizeDownCh3Kernel", &opencvInterLineARResizeCh3Kernel,
       debugText("clCreateKernel opencvInterLineARResizeCh3Kernel failed")},
      {"opencvInterLineARResizeDownCh1Kernel", &opencvInterLineARResizeCh1Kernel,
       debugText("clCreateKernel opencvInterLineARResizeCh1Kernel failed")},
      {"opencvInterLineARResizeDownCh1Kernel2", &opencvInterLineARResizeCh1Kernel2,
       debugText("clCreateKernel opencvInterLineARResizeCh1Kernel failed")},
      {"rgb2GaryKernel", &rgb2GaryUcharKernel,
       debugText("rgb2GaryUcharKernel opencvInterLineARResizeCh1Kernel failed")},
      {"rgb2GaryKernel2", &rgb2GaryUcharKernel2,
       debugText("rgb2GaryUcharKernel opencvInterLineARResizeCh1Kernel failed")},
      {"rgb2GaryTwoKernel", &rgb2GaryTwoUcharKernel,
       debugText("rgb2GaryTwoUcharKernel opencvInterLineARResizeCh1Kernel failed")},
      {"rgb2GaryFloatTwoCh3Kernel", &rgb2GaryFloatTwoCh3Kernel,
       debugText("rgb2GaryFloatTwoCh3Kernel opencvInterLineARResizeCh1Kernel failed")},
      {"rgb2GaryFloatTwoCh1Kernel", &rgb2GaryFloatTwoCh1Kernel,
       debugText("rgb2GaryFloatTwoCh1Kernel opencvInterLineARResizeCh1Kernel failed")},
      {"findGradSquareCrossTermsKernel", &findGradCrossTermsKernel,
       debugText("findGradCrossTermsKernel opencvInterLineARResizeCh1Kernel failed")},
      {"findGradSquareCrossTermsKernel2", &findGradCrossTermsKernel2,
       debugText("findGradSquareCrossTermsKernel opencvInterLineARResizeCh1Kernel failed")},
      {"opencvcopyFilter2DBorderRowUchar", &opencvcopyFilter2DBorderRowUcharKernel,
       debugText("opencvcopyFilter2DBorderRowUchar opencvInterLineARResizeCh1Kernel failed")},
      {"opencvcopyFilter2DBorderColUchar", &opencvcopyFilter2DBorderColUcharKernel,
       debugText("opencvcopyFilter2DBorderColUcharKernel opencvInterLineARResizeCh1Kernel failed")},
      {"absCalcKernel", &absCalcUcharKernel,
       debugText("absCalcUcharKernel opencvInterLineARResizeCh1Kernel failed")},
      {"opencvcopyFilter2DBorderRowFloat", &opencvcopyFilter2DBorderRowFloatKernel,
       debugText("opencvcopyFilter2DBorderRowFloatKernel opencvInterLineARResizeCh1Kernel failed")},
      {"opencvcopyFilter2DBorderRowFloat2", &opencvcopyFilter2DBorderRowFloatKernel2,
       debugText("opencvcopyFilter2DBorderRowFloatKernel opencvInterLineARResizeCh1Kernel failed")},
      {"opencvcopyFilter2DBorderColFloat", &opencvcopyFilter2DBorderColFloatKernel,
       debugText("opencvcopyFilter2DBorderRowFloatKernel opencvInterLineARResizeCh1Kernel failed")},
      {"opencvcopyFilter2DBorderColFloat2", &opencvcopyFilter2DBorderColFloatKernel2,
       "clCreateKernel opencvcopyFilter2DBorderColFloatKernel failed"},
      {"opencvFilter2DRowCalcFloatWin5", &opencvFilter2DRowCalcFloatWin5Kernel,
       "clCreateKernel opencvFilter2DRowCalcFloatWin5 failed"},
      {"opencvFilter2DRowCalcFloatWin52", &opencvFilter2DRowCalcFloatWin5Kernel2,
       "clCreateKernel opencvFilter2DRowCalcFloatWin5 failed"},
      {"opencvFilter2DColCalcFloatWin5", &opencvFilter2DColCalcFloatWin5Kernel,
       "clCreateKernel opencvFilter2DColCalcFloatWin5Kernel failed"},
      {"opencvFilter2DColCalcFloatWin52", &opencvFilter2DColCalcFloatWin5Kernel2,
       "clCreateKernel opencvFilter2DColCalcFloatWin5Kernel failed"},
      {"opencvcopyFilter2DTakeOutBoundFloat", &opencvcopyFilter2DTakeOutBoundFloatKernel,
       "clCreateKernel opencvcopyFilter2DTakeOutBoundFloatKernel failed"},
      {"opencvcopyFilter2DTakeOutBoundFloat2", &opencvcopyFilter2DTakeOutBoundFloatKernel2,
       "clCreateKernel opencvcopyFilter2DTakeOutBoundFloatKernel failed"},
      {"opencvfilter2DCalcCharWin3Kernel", &opencvfilter2DCalcCharWin3UcharKernel,
       "clCreateKernel opencvfilter2DCalcCharWin3Kernel failed"},
      {"opencvcopyFilter2DTakeOutBoundUchar", &opencvcopyFilter2DTakeOutBoundUcharKernel,
       "clCreateKernel opencvfilter2DCalcCharWin3Kernel failed"},
      {"getFusionImageKernelCh3", &getFusionImageCh3Kernel,
       "clCreateKernel getFusionImageCh3Kernel failed"},
      {"getFusionImageKernelCh1", &getFusionImageCh1Kernel,
       "clCreateKernel getFusionImageCh1Kernel failed"},
      {"getRowRange", &getRowRangeKernel, "clCreateKernel getRowRangeKernel failed"},
      {"getRowRange2", &getRowRange2Kernel, "clCreateKernel getRowRange2Kernel failed"},
      {"getWeightImageKernel", &getWeightImageClKernel,
       "clCreateKernel getWeightImageClKernel failed"},
  };
  return all;
}

const std::vector<BufferOfRun>& buffersOfRun() {
  static const std::vector<BufferOfRun> all = {
      {&PreFrameImageGrayCL, Extent::kPlane, {debugText("PreFrameImageGrayCL failed")}},
      {&CurFrameImageGrayCL, Extent::kPlane, {debugText("CurFrameImageGrayCL failed")}},
      {&PreFrameImageGrayBoundTempCL,
       Extent::kFourMore,
       {debugText("PreFrameImageGrayBoundTempCL failed")}},
      {&CurFrameImageGrayBoundTempCL,
       Extent::kFourMore,
       {debugText("CurFrameImageGrayBoundTempCL failed")}},
      {&PreFrameImageGrayBoundCL,
       Extent::kFourMore,
       {debugText("PreFrameImageGrayBoundCL failed")}},
      {&CurFrameImageGrayBoundCL,
       Extent::kFourMore,
       {debugText("CurFrameImageGrayBoundCL failed")}},
      {&gray_pointdownscalClOne, Extent::kPlane, {debugText("gray_pointdownscalClOne failed")}},
      {&grad_x2ClOne, Extent::kFloats, {debugText("grad_x2ClOne failed")}},
      {&grad_y2ClOne, Extent::kFloats, {debugText("grad_y2ClOne failed")}},
      {&grad_xyClOne, Extent::kFloats, {debugText("grad_xyClOne failed")}},
      {&grad_x2ClTwo, Extent::kFloats, {debugText("grad_x2ClTwo failed")}},
      {&grad_y2ClTwo, Extent::kFloats, {debugText("grad_y2ClTwo failed")}},
      {&grad_xyClTwo, Extent::kFloats, {debugText("grad_xyClTwo failed")}},
      {&SorImageOnergb_grayCl, Extent::kPlane, {}},
      {&grad_bound_tempOneCl, Extent::kFloats, {}},
      {&grad_boundOneCl, Extent::kFloats, {}},
      {&DestImageTworgb_grayCl, Extent::kPlane, {}},
      {&grad_bound_tempTwoCl, Extent::kFloats, {}},
      {&grad_boundTwoCl, Extent::kFloats, {}},
      {&gray_pointdownscalClTwo, Extent::kPlane, {}},
      {&OverLapImageOneGrayCl, Extent::kPlane, {}},
      {&OverLapImageTwoGrayCl, Extent::kPlane, {}},
      {&OverLapImageOneGrayTempCl, Extent::kPlane, {}},
      {&OverLapImageTwoGrayTempCl, Extent::kPlane, {}},
      {&dst_row_bound_outOneCl, Extent::kTwoMore, {}},
      {&dst_row_bound_outTwoCl, Extent::kTwoMore, {}},
      {&dst_outOneCl, Extent::kTwoMore, {}},
      {&dst_outTwoCl, Extent::kTwoMore, {}},
      {&AreaImageOneGaryFloatCL, Extent::kFloats, {}},
      {&AreaImageTwoGaryFloatCL, Extent::kFloats, {}},
      {&AreaImageOneWeightCL, Extent::kPlane, {}},
      {&ImageReCL, Extent::kFrame, {}},
      {&SorTempImageCL, Extent::kPlane, {}},
      {&DestTempImageCL, Extent::kPlane, {debugText("DestTempImageCL failed")}},
  };
  return all;
}

const std::vector<std::size_t>& buffersInOrderOfRelease() {
  static const std::vector<std::size_t> order = [] {
    std::vector<std::size_t> rows = {2, 3, 0, 1, 4, 5};
    for (std::size_t row = 6; row < buffersOfRun().size(); ++row) {
      if (row != kKeptBuffer) rows.push_back(row);
    }
    return rows;
  }();
  return order;
}

std::size_t BufferOfRun::bytes(std::size_t rows, std::size_t cols, std::size_t channels) const {
  switch (extent) {
    case Extent::kFloats:
      return 4 * rows * cols;
    case Extent::kFourMore:
      return (rows + 4) * (cols + 4);
    case Extent::kTwoMore:
      return (rows + 2) * (cols + 2);
    case Extent::kFrame:
      return channels * rows * cols;
    case Extent::kPlane:
      break;
  }
  return rows * cols;
}
