// SPDX-License-Identifier: Apache-2.0
#include "imaging/overlap.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "framequilt/tuning.h"
#include "imaging/filter.h"
#include "imaging/gray.h"
#include "imaging/imaging_state.h"
#include "imaging/pixel_math.h"
#include "interface/report.h"

namespace {

using framequilt::planeSize;
using framequilt::rowStart;

/// Padding of the 3 x 3 smoothing, and of the 9-tap edge response on each side of a row.
constexpr int kSmoothBorder = 1;
constexpr int kEdgeBorder = 4;
/// Columns at the left and right edge whose response is not trusted; the sides differ.
constexpr int kBlankLeft = 10;
constexpr int kBlankRight = 11;
/// A weaker response is texture noise.
constexpr int kStrongResponse = 10;

/// One side of the overlap and the planes that it is measured in.
struct Side {
  unsigned char* image;
  int rows, cols;
  unsigned char *plane, *bound, *filtered;

  bool complete() const {
    return image != nullptr && plane != nullptr && bound != nullptr && filtered != nullptr;
  }
};

Side mosaicSide(unsigned char* image, int rows, int cols) {
  return {image, rows, cols, resiz_One, resiz_OneBound, resiz_OneBoundFilter};
}

Side frameSide(unsigned char* image, int rows, int cols) {
  return {image, rows, cols, resiz_Two, resiz_TwoBound, resiz_TwoBoundFilter};
}

bool refuseNull() {
  framequilt::report("ptr is null");
  return false;
}

/// Bytes of a working plane with the margin that both measures clear.
std::size_t clearedBytes() { return planeSize(imgScaleRow + 8, imgScaleCol + 8); }

void clear(unsigned char* plane, std::size_t bytes) { std::memset(plane, 0, bytes); }

/// Gray of both sides into `bound`, with the size of the first for both.
void toGray(const Side& one, const Side& two, int channels) {
  if (channels < 2) {
    const std::size_t bytes = planeSize(one.rows, one.cols);
    std::memcpy(one.bound, one.image, bytes);
    std::memcpy(two.bound, two.image, bytes);
  } else {
    rgb2GrayTwo(one.image, two.image, one.rows, one.cols, one.bound, two.bound);
  }
}

/// From the padded gray image in `plane` to the smoothed one in `bound`.
void smooth(const Side& side) {
  const int paddedRows = side.rows + 2 * kSmoothBorder;
  const int paddedCols = side.cols + 2 * kSmoothBorder;
  opencvfilter2DCalcCh1(side.plane, filterH2Dker, paddedRows, paddedCols, 3, side.filtered);
  clear(side.bound, clearedBytes());
  opencvcopyFilter2DTakeOutBoundCh1(side.filtered, paddedRows, paddedCols, kSmoothBorder,
                                    side.bound);
}

/// Every second pixel of the top-left quarter of `bound` into a plane of half the size; both loops
/// end at the halved sides of image 1, so that the rest of the plane keeps what it held.
void sampleTopLeftQuarter(const Side& side, int rows1, int cols1) {
  const int halfCols = side.cols / 2;
  for (int r = 0; r < rows1 / 2; r += 2) {
    for (int c = 0; c < cols1 / 2; c += 2) {
      side.plane[rowStart(r / 2, halfCols) + c / 2] = side.bound[rowStart(r, side.cols) + c];
    }
  }
}

/// Horizontal edge response of the sampled plane, in place.
void respond(const Side& side) {
  const int rows = side.rows / 2;
  const int cols = side.cols / 2;
  clear(side.bound, clearedBytes());
  opencvcopyFilter2DBorderColCh1(side.plane, rows, cols, kEdgeBorder, side.bound);
  const int paddedCols = cols + 2 * kEdgeBorder;
  opencvFilter2DColCalcChUchar(side.bound, rows, paddedCols, 9, side.filtered);
  opencvcopyFilter2DTakeOutBoundColCh1(side.filtered, rows, paddedCols, kEdgeBorder, side.plane);
  framequilt::blankResponseFrame(side.plane, rows, cols);
}

/// Mean of the strong responses, read with the geometry of image 1. Row r starts at half of
/// r * cols1, truncated: half a pixel further each row when cols1 is odd.
float meanStrongResponse(const unsigned char* plane, int rows1, int cols1) {
  float sum = 0.0F;
  int count = 0;
  for (int r = 0; r < rows1 / 2; ++r) {
    const unsigned char* row = plane + rowStart(r, cols1) / 2;
    for (int c = 0; c < cols1 / 2; ++c) {
      if (row[c] <= kStrongResponse) continue;
      sum += static_cast<float>(row[c]);
      ++count;
    }
  }
  return sum / static_cast<float>(count);
}

template <class T>
bool zeroRows(T* image, int cols, int startRow, int endRow) {
  if (image == nullptr) {
    framequilt::report("corresRowAllColZero ptr is null");
    return false;
  }
  if (startRow < endRow && cols > 0) {
    std::fill(image + rowStart(startRow, cols), image + rowStart(endRow, cols), T{0});
  }
  return true;
}

template <class T>
bool zeroCols(T* image, int rows, int cols, int startCol, int endCol) {
  if (image == nullptr) {
    // The row members' text: hosts compare it.
    framequilt::report("corresRowAllColZero ptr is null");
    return false;
  }
  if (startCol >= endCol) return true;
  for (int r = 0; r < rows; ++r) {
    T* row = image + rowStart(r, cols);
    std::fill(row + startCol, row + endCol, T{0});
  }
  return true;
}

}  // namespace

namespace framequilt {

void blankResponseFrame(unsigned char* plane, int rows, int cols) {
  if (rows < 1 || cols < 1) return;
  corresRowAllColZero(plane, rows, cols, 0, 1);
  corresRowAllColZero(plane, rows, cols, rows - 1, rows);
  corresColAllRowZero(plane, rows, cols, 0, kBlankLeft);
  corresColAllRowZero(plane, rows, cols, std::max(0, cols - kBlankRight), cols);
}

}  // namespace framequilt

bool calcOverLapImageBright(unsigned char* image1, unsigned char* image2, int rows1, int cols1,
                            int rows2, int cols2, int channels, float& bright1, float& bright2) {
  const Side one = mosaicSide(image1, rows1, cols1);
  const Side two = frameSide(image2, rows2, cols2);
  if (!one.complete() || !two.complete()) return refuseNull();

  toGray(one, two, channels);
  opencvcopyFilter2DBorderCh1(one.bound, rows1, cols1, kSmoothBorder, one.filtered, one.plane);
  opencvcopyFilter2DBorderCh1(two.bound, rows2, cols2, kSmoothBorder, two.filtered, two.plane);
  // The first image's padded size for both.
  const std::size_t padded = planeSize(rows1 + 2 * kSmoothBorder, cols1 + 2 * kSmoothBorder);
  clear(one.filtered, padded);
  clear(two.filtered, padded);
  smooth(one);
  smooth(two);

  bright1 = 0.0F;
  bright2 = 0.0F;
  int count = 0;
  for (int r = 2; r < rows1 - 2; r += 2) {
    for (int c = 2; c < cols1 - 2; c += 2) {
      bright1 += static_cast<float>(one.bound[rowStart(r, cols1) + c]);
      bright2 += static_cast<float>(two.bound[rowStart(r, cols2) + c]);
      ++count;
    }
  }
  bright1 /= static_cast<float>(count);
  bright2 /= static_cast<float>(count);
  return true;
}

bool calcOverLapImageDefinition(unsigned char* image1, unsigned char* image2, int rows1, int cols1,
                                int rows2, int cols2, int /*channels*/, float& definition1,
                                float& definition2) {
  const Side one = mosaicSide(image1, rows1, cols1);
  const Side two = frameSide(image2, rows2, cols2);
  if (!one.complete() || !two.complete()) return refuseNull();

  sampleTopLeftQuarter(one, rows1, cols1);
  sampleTopLeftQuarter(two, rows1, cols1);
  respond(one);
  respond(two);
  definition1 = meanStrongResponse(one.plane, rows1, cols1);
  definition2 = meanStrongResponse(two.plane, rows1, cols1);
  return true;
}

bool corresRowAllColZero(unsigned char* image, int /*rows*/, int cols, int startRow, int endRow) {
  return zeroRows(image, cols, startRow, endRow);
}

bool corresRowAllColZeroFloat(float* image, int /*rows*/, int cols, int startRow, int endRow) {
  return zeroRows(image, cols, startRow, endRow);
}

bool corresColAllRowZero(unsigned char* image, int rows, int cols, int startCol, int endCol) {
  return zeroCols(image, rows, cols, startCol, endCol);
}

bool corresColAllRowZeroFloat(float* image, int rows, int cols, int startCol, int endCol) {
  return zeroCols(image, rows, cols, startCol, endCol);
}
