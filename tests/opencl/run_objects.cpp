// SPDX-License-Identifier: Apache-2.0
#include "tests/opencl/run_objects.h"

#include "opencl/OpenclJointState.h"
#include "tests/opencl/journal.h"

const std::vector<KernelOfRun>& kernelsOfRun() {
  static const std::vector<KernelOfRun> all = {
      {"opencvcopyFilter2DBorderRowUhcarMode", &opencvcopyFilter2DBorderRowUcharModeKernel,
       Journal::debug("clCreateKernel opencvFilter2DRowCalcFloatWin5ModeKernel failed")},
      {"opencvcopyFilter2DBorderColUcharMode", &opencvcopyFilter2DBorderColUcharModeKernel,
       Journal::debug("clCreateKernel opencvFilter2DRowCalcFloatWin5ModeKernel failed")},
      {"opencvFilter2DRowCalcUcharWin5Mode", &opencvFilter2DRowCalcUcharWin5ModeKernel,
       Journal::debug("clCreateKernel opencvFilter2DRowCalcFloatWin5ModeKernel failed")},
      {"opencvFilter2DColCalcUcharWin5Mode", &opencvFilter2DColCalcUcharWin5ModeKernel,
       Journal::debug("clCreateKernel opencvFilter2DColCalcFloatWin5ModeKernel failed")},
      {"pretJudgeImageCh3Kernel", &pretJudgeCh3Kernel,
       Journal::debug("clCreateKernel pretJudgeCh3Kernel failed")},
      {"pretJudgeImageCh1Kernel", &pretJudgeCh1Kernel,
       Journal::debug("clCreateKernel pretJudgeCh1Kernel failed")},
      {"opencvInterLineARResizeDownCh3Kernel", &opencvInterLineARResizeCh3Kernel,
       Journal::debug("clCreateKernel opencvInterLineARResizeCh3Kernel failed")},
      {"opencvInterLineARResizeDownCh1Kernel", &opencvInterLineARResizeCh1Kernel,
       Journal::debug("clCreateKernel opencvInterLineARResizeCh1Kernel failed")},
      {"opencvInterLineARResizeDownCh1Kernel2", &opencvInterLineARResizeCh1Kernel2,
       Journal::debug("clCreateKernel opencvInterLineARResizeCh1Kernel failed")},
      {"rgb2GaryKernel", &rgb2GaryUcharKernel,
       Journal::debug("rgb2GaryUcharKernel opencvInterLineARResizeCh1Kernel failed")},
      {"rgb2GaryKernel2", &rgb2GaryUcharKernel2,
       Journal::debug("rgb2GaryUcharKernel opencvInterLineARResizeCh1Kernel failed")},
      {"rgb2GaryTwoKernel", &rgb2GaryTwoUcharKernel,
       Journal::debug("rgb2GaryTwoUcharKernel opencvInterLineARResizeCh1Kernel failed")},
      {"rgb2GaryFloatTwoCh3Kernel", &rgb2GaryFloatTwoCh3Kernel,
       Journal::debug("rgb2GaryFloatTwoCh3Kernel opencvInterLineARResizeCh1Kernel failed")},
      {"rgb2GaryFloatTwoCh1Kernel", &rgb2GaryFloatTwoCh1Kernel,
       Journal::debug("rgb2GaryFloatTwoCh1Kernel opencvInterLineARResizeCh1Kernel failed")},
      {"findGradSquareCrossTermsKernel", &findGradCrossTermsKernel,
       Journal::debug("findGradCrossTermsKernel opencvInterLineARResizeCh1Kernel failed")},
      {"findGradSquareCrossTermsKernel2", &findGradCrossTermsKernel2,
       Journal::debug("findGradSquareCrossTermsKernel opencvInterLineARResizeCh1Kernel failed")},
      {"opencvcopyFilter2DBorderRowUchar", &opencvcopyFilter2DBorderRowUcharKernel,
       Journal::debug("opencvcopyFilter2DBorderRowUchar opencvInterLineARResizeCh1Kernel failed")},
      {"opencvcopyFilter2DBorderColUchar", &opencvcopyFilter2DBorderColUcharKernel,
       Journal::debug(
           "opencvcopyFilter2DBorderColUcharKernel opencvInterLineARResizeCh1Kernel failed")},
      {"absCalcKernel", &absCalcUcharKernel,
       Journal::debug("absCalcUcharKernel opencvInterLineARResizeCh1Kernel failed")},
      {"opencvcopyFilter2DBorderRowFloat", &opencvcopyFilter2DBorderRowFloatKernel,
       Journal::debug(
           "opencvcopyFilter2DBorderRowFloatKernel opencvInterLineARResizeCh1Kernel failed")},
      {"opencvcopyFilter2DBorderRowFloat2", &opencvcopyFilter2DBorderRowFloatKernel2,
       Journal::debug(
           "opencvcopyFilter2DBorderRowFloatKernel opencvInterLineARResizeCh1Kernel failed")},
      {"opencvcopyFilter2DBorderColFloat", &opencvcopyFilter2DBorderColFloatKernel,
       Journal::debug(
           "opencvcopyFilter2DBorderRowFloatKernel opencvInterLineARResizeCh1Kernel failed")},
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
      {&PreFrameImageGrayCL, Extent::kPlane, {Journal::debug("PreFrameImageGrayCL failed")}},
      {&CurFrameImageGrayCL, Extent::kPlane, {Journal::debug("CurFrameImageGrayCL failed")}},
      {&PreFrameImageGrayBoundTempCL,
       Extent::kFourMore,
       {Journal::debug("PreFrameImageGrayBoundTempCL failed")}},
      {&CurFrameImageGrayBoundTempCL,
       Extent::kFourMore,
       {Journal::debug("CurFrameImageGrayBoundTempCL failed")}},
      {&PreFrameImageGrayBoundCL,
       Extent::kFourMore,
       {Journal::debug("PreFrameImageGrayBoundCL failed")}},
      {&CurFrameImageGrayBoundCL,
       Extent::kFourMore,
       {Journal::debug("CurFrameImageGrayBoundCL failed")}},
      {&gray_pointdownscalClOne,
       Extent::kPlane,
       {Journal::debug("gray_pointdownscalClOne failed")}},
      {&grad_x2ClOne, Extent::kFloats, {Journal::debug("grad_x2ClOne failed")}},
      {&grad_y2ClOne, Extent::kFloats, {Journal::debug("grad_y2ClOne failed")}},
      {&grad_xyClOne, Extent::kFloats, {Journal::debug("grad_xyClOne failed")}},
      {&grad_x2ClTwo, Extent::kFloats, {Journal::debug("grad_x2ClTwo failed")}},
      {&grad_y2ClTwo, Extent::kFloats, {Journal::debug("grad_y2ClTwo failed")}},
      {&grad_xyClTwo, Extent::kFloats, {Journal::debug("grad_xyClTwo failed")}},
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
      {&DestTempImageCL, Extent::kPlane, {Journal::debug("DestTempImageCL failed")}},
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
