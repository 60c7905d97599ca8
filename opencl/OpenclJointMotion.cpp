// SPDX-License-Identifier: Apache-2.0
#include "opencl/OpenclJointMotion.h"

#include <cstddef>

#include "cpu/placement_rules.h"
#include "imaging/pixel_math.h"
#include "interface/debug.h"
#include "interface/report.h"
#include "opencl/OpenclJointKernels.h"

namespace {

using framequilt::Bytes;
using framequilt::HostBuffer;
using framequilt::Mapping;
using framequilt::pixelGrid;
using framequilt::planeSize;

/// Mean of a plane of bytes: a 32-bit sum, divided in whole numbers.
int meanOf(const unsigned char* plane, int rows, int cols) {
  const std::size_t pixels = planeSize(rows, cols);
  int sum = 0;
  for (std::size_t i = 0; i < pixels; ++i) sum = framequilt::sum32(sum, plane[i]);
  return sum / framequilt::product32(rows, cols);
}

/// Smooths both gray images and maps the difference that is left in the first.
int differenceOf(Bytes previous, Bytes current, int rows, int cols, cl_int statusSoFar) {
  cl_int status = statusSoFar;
  status |= Filter2DModeKernel(previous.memory, PreFrameImageGrayBoundCL,
                               PreFrameImageGrayBoundTempCL, rows, cols);
  status |= Filter2DModeKernel(current.memory, CurFrameImageGrayBoundCL,
                               CurFrameImageGrayBoundTempCL, rows, cols);
  status |= framequilt::absoluteDifference(pixelGrid(rows, cols), previous, current, rows, cols);
  Mapping difference(previous.memory, planeSize(rows, cols), CL_MAP_READ, Mapping::Wait::kForAll);
  status |= difference.status();
  const int motion = status == CL_SUCCESS && difference.bytes() != nullptr
                         ? meanOf(difference.bytes(), rows, cols)
                         : kUnmeasuredMotionCL;
  errNum = status | difference.unmap();
  return motion;
}

int motionOf(HostBuffer& previous, HostBuffer& current, int rows, int cols, bool colour) {
  if (!colour) return differenceOf(previous.bytes(), current.bytes(), rows, cols, CL_SUCCESS);
  const framequilt::Grid grid = pixelGrid(rows, cols);
  const Bytes previousGray{PreFrameImageGrayCL};
  const Bytes currentGray{CurFrameImageGrayCL};
  const cl_int status = framequilt::toGrayOne(grid, previous.bytes(), rows, cols, previousGray) |
                        framequilt::toGrayOne(grid, current.bytes(), rows, cols, currentGray);
  return differenceOf(previousGray, currentGray, rows, cols, status);
}

}  // namespace

cl_int Filter2DModeKernel(cl_mem image, cl_mem tmpA, cl_mem tmpB, int rows, int cols) {
  const int border = framequilt::smoothingBorderCL();
  const int paddedRows = rows + 2 * border;
  const int paddedCols = cols + 2 * border;
  const framequilt::Grid padded = pixelGrid(paddedRows, paddedCols);
  cl_int all = CL_SUCCESS;
  // A refused step is named, and the chain goes on.
  const auto step = [&all](cl_int status, const char* name) {
    if (status != CL_SUCCESS) framequilt::debug(name);
    all |= status;
  };
  step(framequilt::padRowsMode(padded, Bytes{image}, rows, cols, border, Bytes{tmpA}, Bytes{tmpB}),
       "opencvcopyFilter2DBorderRowUcharModeKernel");
  step(framequilt::padColsMode(framequilt::borderGrid(paddedRows, border), Bytes{tmpB}, paddedRows,
                               cols, border, Bytes{tmpA}, Bytes{tmpB}),
       "opencvcopyFilter2DBorderColUcharModeKernel");
  step(framequilt::smoothDownModeKernel(padded, Bytes{tmpA}, paddedRows, paddedCols, Bytes{tmpB}),
       "opencvFilter2DRowCalcUcharWin5ModeKernel");
  step(framequilt::smoothAcrossModeKernel(padded, Bytes{tmpB}, paddedRows, paddedCols, Bytes{tmpA}),
       "opencvFilter2DColCalcUcharWin5ModeKernel");
  step(framequilt::takeOut(pixelGrid(rows, cols), Bytes{tmpA}, rows, cols, border, Bytes{image}),
       "opencvcopyFilter2DTakeOutBoundUcharKernel");
  return all;
}

int imageMotionModelCL(unsigned char* previous, unsigned char* current, int rows, int cols,
                       int channels, int /*channels2*/) {
  if (previous == nullptr || current == nullptr) {
    framequilt::report("ptr is null");
    return 0;
  }
  if (planeSize(rows, cols) == 0 || framequilt::product32(rows, cols) == 0) return 0;

  const bool colour = framequilt::isColour(channels);
  const std::size_t bytes = planeSize(rows, cols, colour ? 3 : 1);
  // Gray frames are smoothed where they lie: in copies, so that the caller's stay as they are.
  const auto mode = colour ? HostBuffer::Mode::kShared : HostBuffer::Mode::kCopied;
  HostBuffer one(previous, bytes, mode);
  HostBuffer two(current, bytes, mode);
  errNum = one.status() | two.status();
  int motion = kUnmeasuredMotionCL;
  if (errNum != CL_SUCCESS) {
    framequilt::debug("failed clEnqueueReadBuffer111");
  } else {
    motion = motionOf(one, two, rows, cols, colour);
  }
  if (errNum == CL_SUCCESS) {
    one.settle();
    two.settle();
  }
  errNum |= one.release() | two.release();
  if (errNum != CL_SUCCESS) framequilt::debug("Filter2DModeKernel");
  return motion;
}
