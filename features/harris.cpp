// SPDX-License-Identifier: Apache-2.0
#include "features/harris.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "features/features_state.h"
#include "features/harris_rows.h"
#include "features/selection.h"
#include "framequilt/tuning.h"
#include "imaging/filter.h"
#include "imaging/imaging_state.h"
#include "imaging/pixel_math.h"
#include "imaging/resize.h"
#include "imaging/run_buffer.h"
#include "interface/report.h"

namespace {

using framequilt::drop;
using framequilt::ensureRoom;
using framequilt::planeSize;
using framequilt::rowStart;

constexpr float kHarrisK = 0.007F;
using framequilt::kHarrisMargin;
/// A corner whose response is below this share of another's is clearly weaker.
constexpr float kRobust = 0.5F;

/// What one of the two corner searches works in; they run side by side and share none of it.
struct HarrisPlanes {
  unsigned char* reduced;
  float*& gx2;
  float*& gy2;
  float*& gxy;
  float*& bound;
  float*& boundTemp;
  float* kernel;

  /// Room for a padded plane of the reduced image in each.
  void allocate(std::size_t elements) {
    for (float** plane : {&gx2, &gy2, &gxy, &bound, &boundTemp}) ensureRoom(*plane, elements);
  }

  void release() {
    for (float** plane : {&gx2, &gy2, &gxy, &bound, &boundTemp}) drop(*plane);
  }
};

void clear(float* plane, std::size_t elements) { std::fill_n(plane, elements, 0.0F); }

/// The image that corners are searched in, at `rows` x `cols`. Without memory for it the resize and
/// the gradients refuse.
void reduce(unsigned char* gray, imgInfo info, int rows, int cols, unsigned char* reduced) {
  const std::size_t bytes = planeSize(rows, cols);
  if (pointdownscal == 1) {
    if (reduced != nullptr) std::memcpy(reduced, gray, bytes);
    return;
  }
  if (reduced != nullptr) std::memset(reduced, 0, bytes);
  // The search size follows the frame: a hinted strip is smaller and fills only the beginning, a
  // size left by an earlier run may be smaller than the image.
  const std::size_t capacity = std::max(bytes, framequilt::framePlane(8));
  framequilt::resizeWithinFrame(gray, info.rows, info.cols, pointdownscal, info.channels, reduced,
                                capacity);
}

/// Separable smoothing of a rows x cols plane in place, padded by `border`. Padding sets all of
/// both planes that it works in.
void smooth(const HarrisPlanes& planes, float* plane, int rows, int cols, int border) {
  const int taps = framequilt::smoothingTaps();
  const int paddedRows = rows + 2 * border;
  const int paddedCols = cols + 2 * border;
  opencvcopyFilter2DBorderCh1(plane, rows, cols, border, planes.boundTemp, planes.bound);
  opencvFilter2DRowCalcCh1(planes.bound, planes.kernel, paddedRows, paddedCols, taps,
                           planes.boundTemp);
  opencvFilter2DColCalcCh1(planes.boundTemp, planes.kernel, paddedRows, paddedCols, taps,
                           planes.bound);
  opencvcopyFilter2DTakeOutBoundCh1(planes.bound, paddedRows, paddedCols, border, plane);
}

/// Appends the well-spread strongest maxima of the response.
void selectCorners(float* response, float mean, int rows, int cols, std::vector<SPoint>& corners) {
  std::vector<float> values;
  std::vector<SPoint> points;
  responseValueMaxSuppression(response, mean, rows, cols, values, points);
  int count = 0;
  goToFirstGetRidOfSomeSPoints(values, points, numpoint, num5000, scale, pvalue, count);
  goToSecondGetRidOfSomeSPoints(values, points, count, pointdownscal, kRobust, corners);
}

/// Response of the reduced image in `planes.bound`, step by step. False, after a line, when the
/// gradients refuse.
bool respondPlainly(const HarrisPlanes& planes, int rows, int cols, int border, float& mean) {
  const std::size_t pixels = planeSize(rows, cols);
  // The gradients leave the outermost pixels alone.
  for (float* plane : {planes.gx2, planes.gy2, planes.gxy}) clear(plane, pixels);
  if (!findGradSquareCrossTerms(planes.reduced, rows, cols, planes.gx2, planes.gy2, planes.gxy)) {
    framequilt::report("findGradSquareCrossTerms failed");
    return false;
  }

  for (float* plane : {planes.gx2, planes.gy2, planes.gxy}) {
    smooth(planes, plane, rows, cols, border);
  }

  float sum = 0.0F;
  clear(planes.bound, pixels);
  calcResponseValue(planes.gx2, planes.gy2, planes.gxy, kHarrisK, rows, cols, planes.bound, mean,
                    sum);
  return true;
}

/// The same, in one pass where that can be.
bool respond(const HarrisPlanes& planes, int rows, int cols, float& mean) {
  const int taps = framequilt::smoothingTaps();
  if (planes.reduced == nullptr || taps != framequilt::kHarrisTaps) {
    return respondPlainly(planes, rows, cols, taps / 2, mean);
  }
  const float sum = framequilt::harrisResponse(planes.reduced, rows, cols,
                                               {planes.kernel, kHarrisK}, planes.bound);
  mean = sum / static_cast<float>(framequilt::product32(rows, cols));
  return true;
}

bool findCorners(HarrisPlanes planes, unsigned char* gray, imgInfo info,
                 std::vector<SPoint>& corners) {
  if (gray == nullptr) {
    framequilt::report("findHarrisCornerCoordianteFun ptr is null");
    return false;
  }
  const int rows = gray_pointdownscal_row;
  const int cols = gray_pointdownscal_col;
  const int border = framequilt::smoothingTaps() / 2;
  const std::size_t padded = planeSize(rows + 2 * border, cols + 2 * border);
  planes.allocate(std::max(padded, planeSize(imgScaleRow, imgScaleCol)));

  reduce(gray, info, rows, cols, planes.reduced);
  float mean = 0.0F;
  if (!respond(planes, rows, cols, mean)) return false;
  selectCorners(planes.bound, mean, rows, cols, corners);
  if (corners.empty()) {
    framequilt::report("HarrissCornerSPoint size is 0");
    return false;
  }
  planes.release();
  return true;
}

/// Gradient products at column `c` of `row`, whose neighbours lie `cols` before and behind.
void gradientProducts(const unsigned char* row, int cols, int c, float& gx2, float& gy2,
                      float& gxy) {
  const unsigned char* above = row + c - cols;
  const unsigned char* here = row + c;
  const unsigned char* below = row + c + cols;
  const int sx = (above[1] + 2 * here[1] + below[1]) - (above[-1] + 2 * here[-1] + below[-1]);
  const int sy = (below[-1] + 2 * below[0] + below[1]) - (above[-1] + 2 * above[0] + above[1]);
  // The cross term is built from magnitudes, so it has no sign: both diagonals look alike.
  const int gx = std::abs(sx) >> 2;
  const int gy = std::abs(sy) >> 2;
  gx2 = static_cast<float>(gx * gx);
  gy2 = static_cast<float>(gy * gy);
  gxy = static_cast<float>(gx * gy);
}

void gradients(const unsigned char* src, int rows, int cols, float* gx2, float* gy2, float* gxy) {
  for (int r = 1; r < rows - 1; ++r) {
    const std::ptrdiff_t start = rowStart(r, cols);
    for (int c = 1; c < cols - 1; ++c) {
      const std::ptrdiff_t i = start + c;
      gradientProducts(src + start, cols, c, gx2[i], gy2[i], gxy[i]);
    }
  }
}

bool refuseNullGradient() {
  framequilt::report("ptr is null");
  return false;
}

}  // namespace

bool findHarrisCornerCoordianteFun1(unsigned char* gray, imgInfo info,
                                    std::vector<SPoint>& corners) {
  return findCorners(
      {resiz_OneBound, grad_x2, grad_y2, grad_xy, grad_bound, grad_bound_temp, filter2DKer}, gray,
      info, corners);
}

bool findHarrisCornerCoordianteFun2(unsigned char* gray, imgInfo info,
                                    std::vector<SPoint>& corners) {
  return findCorners(
      {resiz_TwoBound, grad_x21, grad_y21, grad_xy1, grad_bound1, grad_bound_temp1, filter2DKer1},
      gray, info, corners);
}

bool findGradSquareCrossTerms(unsigned char* src, int rows, int cols, float* gx2, float* gy2,
                              float* gxy) {
  if (src == nullptr || gx2 == nullptr || gy2 == nullptr || gxy == nullptr) {
    return refuseNullGradient();
  }
  gradients(src, rows, cols, gx2, gy2, gxy);
  return true;
}

bool findGradSquareCrossTermsTwo(unsigned char* srcA, unsigned char* srcB, int rows, int cols,
                                 float* gx2A, float* gx2B, float* gy2A, float* gy2B, float* gxyA,
                                 float* gxyB) {
  if (srcA == nullptr || gx2A == nullptr || gy2A == nullptr || gxyA == nullptr) {
    return refuseNullGradient();
  }
  gradients(srcA, rows, cols, gx2A, gy2A, gxyA);
  gradients(srcB, rows, cols, gx2B, gy2B, gxyB);
  return true;
}

bool calcResponseValue(float* gx2, float* gy2, float* gxy, float k, int rows, int cols,
                       float* response, float& mean, float& sum) {
  if (gx2 == nullptr || gy2 == nullptr || gxy == nullptr || response == nullptr) {
    framequilt::report("calcResponseValue ptr null");
    return false;
  }
  for (int r = kHarrisMargin; r < rows - kHarrisMargin; ++r) {
    for (int c = kHarrisMargin; c < cols - kHarrisMargin; ++c) {
      const std::ptrdiff_t i = rowStart(r, cols) + c;
      const float a = gx2[i];
      const float b = gy2[i];
      const float x = gxy[i];
      const float value = (a * b - x * x) - ((a + b) * k) * (a + b);
      if (value > 0.0F) {
        response[i] = value;
        sum += value;
      }
    }
  }
  mean = sum / static_cast<float>(framequilt::product32(rows, cols));
  return true;
}
