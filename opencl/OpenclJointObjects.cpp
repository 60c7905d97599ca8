// SPDX-License-Identifier: Apache-2.0
#include "opencl/OpenclJointObjects.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "imaging/pixel_math.h"
#include "interface/debug.h"
#include "interface/report.h"
#include "opencl/OpenclJointOverlap.h"
#include "opencl/OpenclJointState.h"

namespace {

using framequilt::planeSize;

/// Where the message about a kernel goes.
enum class Channel { kDebug, kLine };

struct KernelRow {
  const char* name;  ///< In the kernel file.
  cl_kernel& kernel;
  const char* failure;
  Channel channel;
};

/// In the order of creation and release. Names and messages are as hosts know them.
const KernelRow kKernels[] = {
    {"opencvcopyFilter2DBorderRowUhcarMode", opencvcopyFilter2DBorderRowUcharModeKernel,
     "clCreateKernel opencvFilter2DRowCalcFloatWin5ModeKernel failed", Channel::kDebug},
    {"opencvcopyFilter2DBorderColUcharMode", opencvcopyFilter2DBorderColUcharModeKernel,
     "clCreateKernel opencvFilter2DRowCalcFloatWin5ModeKernel failed", Channel::kDebug},
    {"opencvFilter2DRowCalcUcharWin5Mode", opencvFilter2DRowCalcUcharWin5ModeKernel,
     "clCreateKernel opencvFilter2DRowCalcFloatWin5ModeKernel failed", Channel::kDebug},
    {"opencvFilter2DColCalcUcharWin5Mode", opencvFilter2DColCalcUcharWin5ModeKernel,
     "clCreateKernel opencvFilter2DColCalcFloatWin5ModeKernel failed", Channel::kDebug},
    {"pretJudgeImageCh3Kernel", pretJudgeCh3Kernel, "clCreateKernel pretJudgeCh3Kernel failed",
     Channel::kDebug},
    {"pretJudgeImageCh1Kernel", pretJudgeCh1Kernel, "clCreateKernel pretJudgeCh1Kernel failed",
     Channel::kDebug},
    {"opencvInterLineARResizeDownCh3Kernel", opencvInterLineARResizeCh3Kernel,
     "clCreateKernel opencvInterLineARResizeCh3Kernel failed", Channel::kDebug},
    {"opencvInterLineARResizeDownCh1Kernel", opencvInterLineARResizeCh1Kernel,
     "clCreateKernel opencvInterLineARResizeCh1Kernel failed", Channel::kDebug},
    {"opencvInterLineARResizeDownCh1Kernel2", opencvInterLineARResizeCh1Kernel2,
     "clCreateKernel opencvInterLineARResizeCh1Kernel failed", Channel::kDebug},
    {"rgb2GaryKernel", rgb2GaryUcharKernel,
     "rgb2GaryUcharKernel opencvInterLineARResizeCh1Kernel failed", Channel::kDebug},
    {"rgb2GaryKernel2", rgb2GaryUcharKernel2,
     "rgb2GaryUcharKernel opencvInterLineARResizeCh1Kernel failed", Channel::kDebug},
    {"rgb2GaryTwoKernel", rgb2GaryTwoUcharKernel,
     "rgb2GaryTwoUcharKernel opencvInterLineARResizeCh1Kernel failed", Channel::kDebug},
    {"rgb2GaryFloatTwoCh3Kernel", rgb2GaryFloatTwoCh3Kernel,
     "rgb2GaryFloatTwoCh3Kernel opencvInterLineARResizeCh1Kernel failed", Channel::kDebug},
    {"rgb2GaryFloatTwoCh1Kernel", rgb2GaryFloatTwoCh1Kernel,
     "rgb2GaryFloatTwoCh1Kernel opencvInterLineARResizeCh1Kernel failed", Channel::kDebug},
    {"findGradSquareCrossTermsKernel", findGradCrossTermsKernel,
     "findGradCrossTermsKernel opencvInterLineARResizeCh1Kernel failed", Channel::kDebug},
    {"findGradSquareCrossTermsKernel2", findGradCrossTermsKernel2,
     "findGradSquareCrossTermsKernel opencvInterLineARResizeCh1Kernel failed", Channel::kDebug},
    {"opencvcopyFilter2DBorderRowUchar", opencvcopyFilter2DBorderRowUcharKernel,
     "opencvcopyFilter2DBorderRowUchar opencvInterLineARResizeCh1Kernel failed", Channel::kDebug},
    {"opencvcopyFilter2DBorderColUchar", opencvcopyFilter2DBorderColUcharKernel,
     "opencvcopyFilter2DBorderColUcharKernel opencvInterLineARResizeCh1Kernel failed",
     Channel::kDebug},
    {"absCalcKernel", absCalcUcharKernel,
     "absCalcUcharKernel opencvInterLineARResizeCh1Kernel failed", Channel::kDebug},
    {"opencvcopyFilter2DBorderRowFloat", opencvcopyFilter2DBorderRowFloatKernel,
     "opencvcopyFilter2DBorderRowFloatKernel opencvInterLineARResizeCh1Kernel failed",
     Channel::kDebug},
    {"opencvcopyFilter2DBorderRowFloat2", opencvcopyFilter2DBorderRowFloatKernel2,
     "opencvcopyFilter2DBorderRowFloatKernel opencvInterLineARResizeCh1Kernel failed",
     Channel::kDebug},
    {"opencvcopyFilter2DBorderColFloat", opencvcopyFilter2DBorderColFloatKernel,
     "opencvcopyFilter2DBorderRowFloatKernel opencvInterLineARResizeCh1Kernel failed",
     Channel::kDebug},
    {"opencvcopyFilter2DBorderColFloat2", opencvcopyFilter2DBorderColFloatKernel2,
     "clCreateKernel opencvcopyFilter2DBorderColFloatKernel failed", Channel::kLine},
    {"opencvFilter2DRowCalcFloatWin5", opencvFilter2DRowCalcFloatWin5Kernel,
     "clCreateKernel opencvFilter2DRowCalcFloatWin5 failed", Channel::kLine},
    {"opencvFilter2DRowCalcFloatWin52", opencvFilter2DRowCalcFloatWin5Kernel2,
     "clCreateKernel opencvFilter2DRowCalcFloatWin5 failed", Channel::kLine},
    {"opencvFilter2DColCalcFloatWin5", opencvFilter2DColCalcFloatWin5Kernel,
     "clCreateKernel opencvFilter2DColCalcFloatWin5Kernel failed", Channel::kLine},
    {"opencvFilter2DColCalcFloatWin52", opencvFilter2DColCalcFloatWin5Kernel2,
     "clCreateKernel opencvFilter2DColCalcFloatWin5Kernel failed", Channel::kLine},
    {"opencvcopyFilter2DTakeOutBoundFloat", opencvcopyFilter2DTakeOutBoundFloatKernel,
     "clCreateKernel opencvcopyFilter2DTakeOutBoundFloatKernel failed", Channel::kLine},
    {"opencvcopyFilter2DTakeOutBoundFloat2", opencvcopyFilter2DTakeOutBoundFloatKernel2,
     "clCreateKernel opencvcopyFilter2DTakeOutBoundFloatKernel failed", Channel::kLine},
    {"opencvfilter2DCalcCharWin3Kernel", opencvfilter2DCalcCharWin3UcharKernel,
     "clCreateKernel opencvfilter2DCalcCharWin3Kernel failed", Channel::kLine},
    {"opencvcopyFilter2DTakeOutBoundUchar", opencvcopyFilter2DTakeOutBoundUcharKernel,
     "clCreateKernel opencvfilter2DCalcCharWin3Kernel failed", Channel::kLine},
    {"getFusionImageKernelCh3", getFusionImageCh3Kernel,
     "clCreateKernel getFusionImageCh3Kernel failed", Channel::kLine},
    {"getFusionImageKernelCh1", getFusionImageCh1Kernel,
     "clCreateKernel getFusionImageCh1Kernel failed", Channel::kLine},
    {"getRowRange", getRowRangeKernel, "clCreateKernel getRowRangeKernel failed", Channel::kLine},
    {"getRowRange2", getRowRange2Kernel, "clCreateKernel getRowRange2Kernel failed",
     Channel::kLine},
    {"getWeightImageKernel", getWeightImageClKernel, "clCreateKernel getWeightImageClKernel failed",
     Channel::kLine},
};

/// What a buffer has room for.
enum class Extent { kPlane, kPlaneBound2, kPlaneBound4, kFloats, kPaddedFloats, kFrame };

struct BufferRow {
  cl_mem& buffer;
  Extent extent;
  const char* failure;  ///< Null: nothing is said.
};

/// In the order of creation.
const BufferRow kBuffers[] = {
    {PreFrameImageGrayCL, Extent::kPlane, "PreFrameImageGrayCL failed"},
    {CurFrameImageGrayCL, Extent::kPlane, "CurFrameImageGrayCL failed"},
    {PreFrameImageGrayBoundTempCL, Extent::kPlaneBound4, "PreFrameImageGrayBoundTempCL failed"},
    {CurFrameImageGrayBoundTempCL, Extent::kPlaneBound4, "CurFrameImageGrayBoundTempCL failed"},
    {PreFrameImageGrayBoundCL, Extent::kPlaneBound4, "PreFrameImageGrayBoundCL failed"},
    {CurFrameImageGrayBoundCL, Extent::kPlaneBound4, "CurFrameImageGrayBoundCL failed"},
    {gray_pointdownscalClOne, Extent::kPlane, "gray_pointdownscalClOne failed"},
    {grad_x2ClOne, Extent::kFloats, "grad_x2ClOne failed"},
    {grad_y2ClOne, Extent::kFloats, "grad_y2ClOne failed"},
    {grad_xyClOne, Extent::kFloats, "grad_xyClOne failed"},
    {grad_x2ClTwo, Extent::kFloats, "grad_x2ClTwo failed"},
    {grad_y2ClTwo, Extent::kFloats, "grad_y2ClTwo failed"},
    {grad_xyClTwo, Extent::kFloats, "grad_xyClTwo failed"},
    {SorImageOnergb_grayCl, Extent::kPlane, nullptr},
    {grad_bound_tempOneCl, Extent::kPaddedFloats, nullptr},
    {grad_boundOneCl, Extent::kPaddedFloats, nullptr},
    {DestImageTworgb_grayCl, Extent::kPlane, nullptr},
    {grad_bound_tempTwoCl, Extent::kPaddedFloats, nullptr},
    {grad_boundTwoCl, Extent::kPaddedFloats, nullptr},
    {gray_pointdownscalClTwo, Extent::kPlane, nullptr},
    {OverLapImageOneGrayCl, Extent::kPlane, nullptr},
    {OverLapImageTwoGrayCl, Extent::kPlane, nullptr},
    {OverLapImageOneGrayTempCl, Extent::kPlane, nullptr},
    {OverLapImageTwoGrayTempCl, Extent::kPlane, nullptr},
    {dst_row_bound_outOneCl, Extent::kPlaneBound2, nullptr},
    {dst_row_bound_outTwoCl, Extent::kPlaneBound2, nullptr},
    {dst_outOneCl, Extent::kPlaneBound2, nullptr},
    {dst_outTwoCl, Extent::kPlaneBound2, nullptr},
    {AreaImageOneGaryFloatCL, Extent::kFloats, nullptr},
    {AreaImageTwoGaryFloatCL, Extent::kFloats, nullptr},
    {AreaImageOneWeightCL, Extent::kPlane, nullptr},
    {ImageReCL, Extent::kFrame, nullptr},
    {SorTempImageCL, Extent::kPlane, nullptr},
    {DestTempImageCL, Extent::kPlane, "DestTempImageCL failed"},
};

/// Half the window of the corner smoothing.
constexpr int kWindowHalf = 2;

/// Bytes of a plane of the working size with `margin` more rows and columns.
std::size_t workingPlane(int margin) {
  return planeSize(imgScaleRowCL + margin, imgScaleColCL + margin);
}

std::size_t bytesOf(Extent extent, int channels) {
  switch (extent) {
    case Extent::kPlaneBound2:
      return workingPlane(2);
    case Extent::kPlaneBound4:
      return workingPlane(4);
    case Extent::kFloats:
      return workingPlane(0) * sizeof(cl_float);
    case Extent::kPaddedFloats:
      return framequilt::paddedSearchPixels() * sizeof(cl_float);
    case Extent::kFrame:
      return planeSize(imgScaleRowCL, imgScaleColCL, channels);
    case Extent::kPlane:
      break;
  }
  return workingPlane(0);
}

void say(const KernelRow& row) {
  if (row.channel == Channel::kDebug) {
    framequilt::debug(row.failure);
  } else {
    framequilt::report(row.failure);
  }
}

template <class Handle, class Release>
void releaseAndForget(Handle& handle, Release release) {
  if (handle != nullptr) release(handle);
  handle = nullptr;
}

/// Whether an existing buffer serves a run in `ctx` that needs `bytes`.
bool fits(cl_mem buffer, cl_context ctx, std::size_t bytes) {
  cl_context owner = nullptr;
  std::size_t size = 0;
  clGetMemObjectInfo(buffer, CL_MEM_CONTEXT, sizeof(cl_context), &owner, nullptr);
  clGetMemObjectInfo(buffer, CL_MEM_SIZE, sizeof(size), &size, nullptr);
  return owner == ctx && size >= bytes;
}

void createBuffer(cl_context ctx, const BufferRow& row, std::size_t bytes) {
  if (row.buffer != nullptr && !fits(row.buffer, ctx, bytes)) {
    releaseAndForget(row.buffer, clReleaseMemObject);
  }
  if (row.buffer != nullptr) return;
  row.buffer = clCreateBuffer(ctx, CL_MEM_READ_WRITE, bytes, nullptr, nullptr);
  if (row.buffer == nullptr && row.failure != nullptr) framequilt::debug(row.failure);
}

/// The first six are released in another order than they are created in.
constexpr std::size_t kReleasedFirst[] = {2, 3, 0, 1, 4, 5};

}  // namespace

bool createKernel(cl_program prog) {
  for (const KernelRow& row : kKernels) {
    if (row.kernel != nullptr) continue;
    row.kernel = clCreateKernel(prog, row.name, nullptr);
    if (row.kernel != nullptr) continue;
    say(row);
    return false;
  }
  return true;
}

bool releaseKernel() {
  for (const KernelRow& row : kKernels) releaseAndForget(row.kernel, clReleaseKernel);
  return true;
}

bool CreateMemObjectsImg(cl_context ctx, int /*rows*/, int /*cols*/, int channels) {
  for (const BufferRow& row : kBuffers) createBuffer(ctx, row, bytesOf(row.extent, channels));
  return true;
}

bool clReleaseMemObjectsImg() {
  framequilt::unmapOverlaps();
  for (const std::size_t i : kReleasedFirst) {
    releaseAndForget(kBuffers[i].buffer, clReleaseMemObject);
  }
  for (std::size_t i = std::size(kReleasedFirst); i < std::size(kBuffers); ++i) {
    if (&kBuffers[i].buffer == &grad_bound_tempOneCl) continue;
    releaseAndForget(kBuffers[i].buffer, clReleaseMemObject);
  }
  return true;
}

void Cleanup() {
  clReleaseMemObjectsImg();
  releaseKernel();
  releaseAndForget(commandQueue, clReleaseCommandQueue);
  releaseAndForget(program, clReleaseProgram);
  releaseAndForget(context, clReleaseContext);
}

namespace framequilt {

std::size_t paddedSearchPixels() {
  // The padded image of the corner search is the larger one for tiny frames.
  return std::max(workingPlane(0), planeSize(imgScaleRowCL / 2 + 2 * kWindowHalf,
                                             imgScaleColCL / 2 + 2 * kWindowHalf));
}

}  // namespace framequilt
