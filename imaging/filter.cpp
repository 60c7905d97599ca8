// SPDX-License-Identifier: Apache-2.0
#include "imaging/filter.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "framequilt/tuning.h"
#include "imaging/pixel_math.h"
#include "interface/report.h"

namespace {

using framequilt::lowByte;
using framequilt::rowStart;

bool refuseNull() {
  framequilt::report("ptr is NULL");
  return false;
}

/// Index in [0, n) that `i` mirrors to without repeating the edge, back and forth as often as
/// needed.
int reflect101(int i, int n) {
  if (n == 1) return 0;
  while (i < 0 || i >= n) i = i < 0 ? -i : 2 * (n - 1) - i;
  return i;
}

template <class T>
void copyElements(const T* src, std::ptrdiff_t count, T* dst) {
  if (count > 0) std::memcpy(dst, src, static_cast<std::size_t>(count) * sizeof(T));
}

/// One source row with `border` mirrored elements on each side.
template <class T>
void padRow(const T* src, int cols, int border, T* dst) {
  for (int t = 0; t < border; ++t) {
    dst[t] = src[reflect101(t - border, cols)];
    dst[cols + border + t] = src[reflect101(cols + t, cols)];
  }
  copyElements(src, cols, dst + border);
}

/// What a float sum becomes in a plane of T.
inline void store(float sum, float& element) { element = sum; }
inline void store(float sum, unsigned char& element) {
  element = lowByte(framequilt::truncateToInt(sum));
}

/// out[c] = sum over j of kernel[j] * first[c + j * stride], in single precision and in that order.
/// Sums of a stretch of columns grow side by side, which the compiler turns into vectors.
template <class T>
void weightedSums(const T* first, std::ptrdiff_t stride, const float* kernel, int taps, int count,
                  T* out) {
  constexpr int kStretch = 64;
  for (int start = 0; start < count; start += kStretch) {
    const int width = std::min(kStretch, count - start);
    float sums[kStretch] = {};
    for (int j = 0; j < taps; ++j) {
      const T* tap = first + start + j * stride;
      for (int c = 0; c < width; ++c) sums[c] += kernel[j] * static_cast<float>(tap[c]);
    }
    for (int c = 0; c < width; ++c) store(sums[c], out[start + c]);
  }
}

}  // namespace

namespace framequilt {

int smoothingTaps() noexcept { return std::clamp(filter2DKerSize[0], 0, 5); }

}  // namespace framequilt

template <class T>
bool opencvcopyFilter2DBorderCh1(T* src, int rows, int cols, int border, T* dstA, T* dstB) {
  if (src == nullptr || dstB == nullptr) return refuseNull();
  if (rows < 1 || cols < 1 || border < 0) return true;

  const int paddedCols = cols + 2 * border;
  for (int r = -border; r < rows + border; ++r) {
    const T* from = src + rowStart(reflect101(r, rows), cols);
    padRow(from, cols, border, dstB + rowStart(r + border, paddedCols));
  }
  if (dstA != nullptr) copyElements(dstB, rowStart(rows + 2 * border, paddedCols), dstA);
  return true;
}

template <class T>
bool opencvFilter2DRowCalcCh1(T* src, float* kernel, int rows, int cols, int taps, T* dst) {
  if (src == nullptr || dst == nullptr) return refuseNull();
  const int half = taps / 2;
  for (int r = half; r < rows - half; ++r) {
    weightedSums(src + rowStart(r - half, cols), cols, kernel, taps, cols, dst + rowStart(r, cols));
  }
  return true;
}

template <class T>
bool opencvFilter2DColCalcCh1(T* src, float* kernel, int rows, int cols, int taps, T* dst) {
  if (src == nullptr || dst == nullptr) return refuseNull();
  const int half = taps / 2;
  for (int r = 0; r < rows; ++r) {
    const std::ptrdiff_t start = rowStart(r, cols);
    weightedSums(src + start, 1, kernel, taps, cols - 2 * half, dst + start + half);
  }
  return true;
}

template <class T>
bool opencvfilter2DCalcCh1(T* src, float* /*kernel*/, int rows, int cols, int /*taps*/, T* dst) {
  if (src == nullptr || dst == nullptr) return refuseNull();
  for (int r = 1; r < rows - 1; ++r) {
    const T* above = src + rowStart(r - 1, cols);
    const T* here = src + rowStart(r, cols);
    const T* below = src + rowStart(r + 1, cols);
    T* out = dst + rowStart(r, cols);
    for (int c = 1; c < cols - 1; ++c) {
      const int sum = (above[c - 1] + 2 * above[c] + above[c + 1]) +
                      (2 * here[c - 1] + 4 * here[c] + 2 * here[c + 1]) +
                      (below[c - 1] + 2 * below[c] + below[c + 1]);
      out[c] = lowByte(sum >> 4);
    }
  }
  return true;
}

template <class T>
bool opencvcopyFilter2DTakeOutBoundCh1(T* src, int rows, int cols, int border, T* dst) {
  if (src == nullptr || dst == nullptr) return refuseNull();
  const int innerRows = rows - 2 * border;
  const int innerCols = cols - 2 * border;
  for (int r = 0; r < innerRows; ++r) {
    copyElements(src + rowStart(r + border, cols) + border, innerCols,
                 dst + rowStart(r, innerCols));
  }
  return true;
}

bool opencvcopyFilter2DBorderColCh1(unsigned char* src, int rows, int cols, int border,
                                    unsigned char* dst) {
  if (src == nullptr || dst == nullptr) return refuseNull();
  if (cols < 1 || border < 0) return true;

  for (int r = 0; r < rows; ++r) {
    const unsigned char* row = src + rowStart(r, cols);
    unsigned char* out = dst + rowStart(r, cols + 2 * border);
    for (int t = 0; t < border; ++t) {
      out[t] = row[reflect101(border - t, cols)];
      out[cols + border + t] = row[std::max(0, cols - border - 1 + t)];
    }
    copyElements(row, cols, out + border);
  }
  return true;
}

bool opencvFilter2DColCalcChUchar(unsigned char* src, int rows, int cols, int /*taps*/,
                                  unsigned char* dst) {
  if (src == nullptr || dst == nullptr) return refuseNull();
  for (int r = 0; r < rows; ++r) {
    const unsigned char* row = src + rowStart(r, cols);
    unsigned char* out = dst + rowStart(r, cols);
    for (int c = 4; c < cols - 4; ++c) {
      const unsigned char* s = row + c;
      const int sum =
          4 * s[0] + 2 * (s[-1] + s[1]) - (s[-4] + s[-2] + s[2] + s[4]) - 2 * (s[-3] + s[3]);
      out[c] = lowByte(sum);
    }
  }
  return true;
}

bool opencvcopyFilter2DTakeOutBoundColCh1(unsigned char* src, int rows, int cols, int border,
                                          unsigned char* dst) {
  if (src == nullptr || dst == nullptr) return refuseNull();
  const int innerCols = cols - 2 * border;
  for (int r = 0; r < rows; ++r) {
    copyElements(src + rowStart(r, cols) + border, innerCols, dst + rowStart(r, innerCols));
  }
  return true;
}

template bool opencvcopyFilter2DBorderCh1<unsigned char>(unsigned char*, int, int, int,
                                                         unsigned char*, unsigned char*);
template bool opencvcopyFilter2DBorderCh1<float>(float*, int, int, int, float*, float*);
template bool opencvFilter2DRowCalcCh1<unsigned char>(unsigned char*, float*, int, int, int,
                                                      unsigned char*);
template bool opencvFilter2DRowCalcCh1<float>(float*, float*, int, int, int, float*);
template bool opencvFilter2DColCalcCh1<unsigned char>(unsigned char*, float*, int, int, int,
                                                      unsigned char*);
template bool opencvFilter2DColCalcCh1<float>(float*, float*, int, int, int, float*);
template bool opencvfilter2DCalcCh1<unsigned char>(unsigned char*, float*, int, int, int,
                                                   unsigned char*);
template bool opencvcopyFilter2DTakeOutBoundCh1<unsigned char>(unsigned char*, int, int, int,
                                                               unsigned char*);
template bool opencvcopyFilter2DTakeOutBoundCh1<float>(float*, int, int, int, float*);
