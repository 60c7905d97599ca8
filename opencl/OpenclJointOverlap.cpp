// SPDX-License-Identifier: Apache-2.0
#include "opencl/OpenclJointOverlap.h"

#include <cstddef>
#include <limits>

#include "cpu/placement_rules.h"
#include "imaging/filter.h"
#include "imaging/overlap.h"
#include "imaging/pixel_math.h"
#include "imaging/run_buffer.h"
#include "interface/never_destroyed.h"
#include "interface/report.h"
#include "opencl/OpenclJointKernels.h"

namespace {

using framequilt::Bytes;
using framequilt::HostBuffer;
using framequilt::Mapping;
using framequilt::pixelGrid;
using framequilt::planeSize;
using framequilt::rowStart;

constexpr float kUnmeasured = std::numeric_limits<float>::quiet_NaN();
/// Padding of the 3 x 3 smoothing, and of the 9-tap edge response on each side of a row.
constexpr int kSmoothBorder = 1;
constexpr int kEdgeBorder = 4;
constexpr int kEdgeTaps = 9;
/// A weaker response is texture noise.
constexpr int kStrongResponse = 10;

bool refuseNull() {
  framequilt::report("ptr is null");
  return false;
}

/// The gray parts from the brightness measure to the end of the sharpness measure. Never destroyed:
/// at the end of the process there may be no runtime left to unmap with.
struct GrayParts {
  Mapping one, two;
};
GrayParts& grayParts() {
  static const framequilt::NeverDestroyed<GrayParts> parts;
  return *parts;
}

/// One side of the overlap and the device planes that it is smoothed in.
struct Side {
  unsigned char* image;
  int rows, cols;
  cl_mem gray, padded, filtered, smoothed;
};

cl_int coloursToGray(const Side& one, const Side& two) {
  const std::size_t bytes = planeSize(one.rows, one.cols, 3);
  HostBuffer a(one.image, bytes);
  HostBuffer b(two.image, bytes);
  const cl_int status = a.status() | b.status();
  if (status != CL_SUCCESS) return status;
  // The measure ends with a wait.
  a.settle();
  b.settle();
  return framequilt::toGrayOfBoth(pixelGrid(one.rows, one.cols), a.bytes(), b.bytes(), one.rows,
                                  one.cols, Bytes{one.gray}, Bytes{two.gray});
}

cl_int copyGray(const Side& side, std::size_t bytes) {
  if (side.gray == nullptr || commandQueue == nullptr) return CL_INVALID_MEM_OBJECT;
  // Blocking: the image is the caller's.
  return clEnqueueWriteBuffer(commandQueue, side.gray, CL_TRUE, 0, bytes, side.image, 0, nullptr,
                              nullptr);
}

/// Gray of both sides, with the size of the first for both.
cl_int toGray(const Side& one, const Side& two, int channels) {
  if (framequilt::isColour(channels)) return coloursToGray(one, two);
  const std::size_t bytes = planeSize(one.rows, one.cols);
  return copyGray(one, bytes) | copyGray(two, bytes);
}

cl_int smooth(const Side& side) {
  const int paddedRows = side.rows + 2 * kSmoothBorder;
  const int paddedCols = side.cols + 2 * kSmoothBorder;
  const framequilt::Grid padded = pixelGrid(paddedRows, paddedCols);
  cl_int status = framequilt::padRows(padded, Bytes{side.gray}, side.rows, side.cols, kSmoothBorder,
                                      Bytes{side.padded});
  status |= framequilt::padCols(framequilt::borderGrid(paddedRows, kSmoothBorder),
                                Bytes{side.padded}, paddedRows, side.cols, kSmoothBorder);
  status |= framequilt::smooth3x3(padded, Bytes{side.padded}, paddedRows, paddedCols,
                                  Bytes{side.filtered});
  status |= framequilt::takeOut(pixelGrid(side.rows, side.cols), Bytes{side.filtered}, side.rows,
                                side.cols, kSmoothBorder, Bytes{side.smoothed});
  return status;
}

Mapping mapped(cl_mem plane, const Side& side, Mapping::Wait wait) {
  return Mapping(plane, planeSize(side.rows, side.cols), CL_MAP_READ, wait);
}

/// Maps the gray parts, which stay mapped, and averages the smoothed ones.
cl_int measureMapped(const Side& one, const Side& two, float& bright1, float& bright2) {
  GrayParts& parts = grayParts();
  parts.one = mapped(one.gray, one, Mapping::Wait::kNot);
  parts.two = mapped(two.gray, two, Mapping::Wait::kNot);
  const Mapping first = mapped(one.smoothed, one, Mapping::Wait::kNot);
  const Mapping second = mapped(two.smoothed, two, Mapping::Wait::kForAll);
  const cl_int status = parts.one.status() | parts.two.status() | first.status() | second.status();
  if (status != CL_SUCCESS) return status;
  OverLapImageOneGrayCL = parts.one.bytes();
  OverLapImageTwoGrayCL = parts.two.bytes();

  bright1 = 0.0F;
  bright2 = 0.0F;
  int count = 0;
  for (int r = 2; r < one.rows - 2; r += 2) {
    for (int c = 2; c < one.cols - 2; c += 2) {
      bright1 += static_cast<float>(first.bytes()[rowStart(r, one.cols) + c]);
      bright2 += static_cast<float>(second.bytes()[rowStart(r, two.cols) + c]);
      ++count;
    }
  }
  bright1 /= static_cast<float>(count);
  bright2 /= static_cast<float>(count);
  return CL_SUCCESS;
}

/// A gray part and the host planes of its edge response.
struct Sharpness {
  const unsigned char* gray;
  int rows, cols;  // Of the gray part.
  unsigned char *plane, *bound, *filtered;

  bool complete() const {
    return gray != nullptr && plane != nullptr && bound != nullptr && filtered != nullptr;
  }
};

/// Every second pixel of every second row.
void sample(const Sharpness& part) {
  const int halfRows = part.rows / 2;
  const int halfCols = part.cols / 2;
  for (int r = 0; r < halfRows; ++r) {
    for (int c = 0; c < halfCols; ++c) {
      part.plane[rowStart(r, halfCols) + c] =
          part.gray[rowStart(2 * r, part.cols) + std::ptrdiff_t{2} * c];
    }
  }
}

/// Horizontal edge response of the sampled plane, in place.
void respond(const Sharpness& part) {
  const int rows = part.rows / 2;
  const int cols = part.cols / 2;
  const int paddedCols = cols + 2 * kEdgeBorder;
  opencvcopyFilter2DBorderColCh1(part.plane, rows, cols, kEdgeBorder, part.bound);
  opencvFilter2DColCalcChUchar(part.bound, rows, paddedCols, kEdgeTaps, part.filtered);
  opencvcopyFilter2DTakeOutBoundColCh1(part.filtered, rows, paddedCols, kEdgeBorder, part.plane);
  framequilt::blankResponseFrame(part.plane, rows, cols);
}

float meanStrongResponse(const Sharpness& part) {
  const std::size_t pixels = planeSize(part.rows / 2, part.cols / 2);
  float sum = 0.0F;
  int count = 0;
  for (std::size_t i = 0; i < pixels; ++i) {
    if (part.plane[i] <= kStrongResponse) continue;
    sum += static_cast<float>(part.plane[i]);
    ++count;
  }
  return sum / static_cast<float>(count);
}

float sharpnessOf(const Sharpness& part) {
  if (!part.complete()) return kUnmeasured;
  sample(part);
  respond(part);
  return meanStrongResponse(part);
}

}  // namespace

bool calcOverLapImageBrightCL(unsigned char* a, unsigned char* b, int rowsA, int colsA,
                              int /*unused*/, int colsB, int channels, float& brightA,
                              float& brightB) {
  if (a == nullptr || b == nullptr) return refuseNull();
  framequilt::unmapOverlaps();
  const Side one = {a,
                    rowsA,
                    colsA,
                    OverLapImageOneGrayCl,
                    dst_row_bound_outOneCl,
                    dst_outOneCl,
                    OverLapImageOneGrayTempCl};
  const Side two = {b,
                    rowsA,
                    colsB,
                    OverLapImageTwoGrayCl,
                    dst_row_bound_outTwoCl,
                    dst_outTwoCl,
                    OverLapImageTwoGrayTempCl};
  brightA = kUnmeasured;
  brightB = kUnmeasured;
  errNum = toGray(one, two, channels);
  if (errNum == CL_SUCCESS) errNum = smooth(one) | smooth(two);
  if (errNum == CL_SUCCESS) errNum = measureMapped(one, two, brightA, brightB);
  if (errNum != CL_SUCCESS) {
    // The step that would have waited may be the one that failed.
    framequilt::finishQueue();
    framequilt::unmapOverlaps();
  }
  return true;
}

bool calcOverLapImageDefinitionCL(unsigned char* a, unsigned char* b, int rowsA, int colsA,
                                  int rowsB, int colsB, int /*channels*/, float& defA,
                                  float& defB) {
  if (a == nullptr || b == nullptr) return refuseNull();
  const framequilt::AtScopeEnd unmap([] { framequilt::unmapOverlaps(); });
  defA = sharpnessOf(
      {OverLapImageOneGrayCL, rowsA, colsA, resiz_OneCL, resiz_OneBoundCL, resiz_OneBoundFilterCL});
  defB = sharpnessOf(
      {OverLapImageTwoGrayCL, rowsB, colsB, resiz_TwoCL, resiz_TwoBoundCL, resiz_TwoBoundFilterCL});
  return true;
}

namespace framequilt {

void unmapOverlaps() {
  grayParts().one.unmap();
  grayParts().two.unmap();
  OverLapImageOneGrayCL = nullptr;
  OverLapImageTwoGrayCL = nullptr;
}

}  // namespace framequilt
