// SPDX-License-Identifier: Apache-2.0
#include "imaging/motion.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "framequilt/tuning.h"
#include "imaging/filter.h"
#include "imaging/gray.h"
#include "imaging/imaging_state.h"
#include "imaging/pixel_math.h"
#include "interface/report.h"

namespace {

/// What an unmeasured motion counts as.
constexpr int kUnmeasured = framequilt::kLargestMotion;

/// A frame's gray plane and the two padded planes that it is smoothed in.
struct MotionPlanes {
  unsigned char *gray, *padded, *paddedTemp;

  bool complete() const { return gray != nullptr && padded != nullptr && paddedTemp != nullptr; }
};

void toGray(unsigned char* frame, int rows, int cols, int channels, unsigned char* gray) {
  if (channels < 2) {
    std::memcpy(gray, frame, framequilt::planeSize(rows, cols));
  } else {
    rgb2Gray(frame, rows, cols, gray);
  }
}

void smooth(const MotionPlanes& planes, int rows, int cols) {
  const int taps = framequilt::smoothingTaps();
  const int border = taps / 2;
  const int paddedRows = rows + 2 * border;
  const int paddedCols = cols + 2 * border;
  opencvcopyFilter2DBorderCh1(planes.gray, rows, cols, border, planes.padded, planes.paddedTemp);
  opencvFilter2DRowCalcCh1(planes.padded, filter2DKerModel, paddedRows, paddedCols, taps,
                           planes.paddedTemp);
  opencvFilter2DColCalcCh1(planes.paddedTemp, filter2DKerModel, paddedRows, paddedCols, taps,
                           planes.padded);
  opencvcopyFilter2DTakeOutBoundCh1(planes.padded, paddedRows, paddedCols, border, planes.gray);
}

}  // namespace

template <class T>
bool pretJudgeImageCh(T* image, int rows, int cols, int channels) {
  if (image == nullptr) {
    framequilt::report("pretJudgeImageCh ptr is NULL");
    return false;
  }
  if (channels != 1 && channels != 3) return true;
  const std::size_t bytes = framequilt::planeSize(rows, cols, channels);
  for (std::size_t i = 0; i < bytes; ++i) image[i] = image[i] == 0 ? T{1} : image[i];
  return true;
}

template bool pretJudgeImageCh<unsigned char>(unsigned char*, int, int, int);

int imageMotionModel(unsigned char* previous, unsigned char* current, int rows, int cols,
                     int previousChannels, int currentChannels) {
  const MotionPlanes before = {PreFrameImageGrayCpu, PreFrameImageGrayBoundCpu,
                               PreFrameImageGrayBoundTempCpu};
  const MotionPlanes now = {CurFrameImageGrayCpu, CurFrameImageGrayBoundCpu,
                            CurFrameImageGrayBoundTempCpu};
  if (previous == nullptr || current == nullptr || !before.complete() || !now.complete()) {
    return kUnmeasured;
  }
  const std::size_t pixels = framequilt::planeSize(rows, cols);
  const int pixelCount = framequilt::product32(rows, cols);
  if (pixels == 0 || pixelCount == 0) return 0;

  toGray(previous, rows, cols, previousChannels, before.gray);
  toGray(current, rows, cols, currentChannels, now.gray);
  smooth(before, rows, cols);
  smooth(now, rows, cols);

  int sum = 0;
  for (std::size_t i = 0; i < pixels; ++i) {
    sum = framequilt::sum32(sum, std::abs(now.gray[i] - before.gray[i]));
  }
  return sum / pixelCount;
}

namespace framequilt {
namespace {

/// Smoothed gray value of a frame's top-left pixel: that of a frame which ends with the last pixel
/// that takes part in it.
int firstSmoothedGray(const unsigned char* frame, int rows, int cols, int channels) {
  constexpr int kReach = 2;
  constexpr int kSide = kReach + 1;
  constexpr int kPadded = kSide + 2 * kReach;
  const int height = std::min(rows, kSide);
  const int width = std::min(cols, kSide);
  const int pixelBytes = channels < 2 ? 1 : 3;
  unsigned char corner[kSide * kSide * 3];
  for (int r = 0; r < height; ++r) {
    std::memcpy(corner + rowStart(r, width, pixelBytes), frame + rowStart(r, cols, pixelBytes),
                planeSize(1, width, pixelBytes));
  }
  unsigned char gray[kSide * kSide] = {};
  unsigned char padded[kPadded * kPadded] = {};
  unsigned char paddedTemp[kPadded * kPadded] = {};
  toGray(corner, height, width, channels, gray);
  smooth({gray, padded, paddedTemp}, height, width);
  return gray[0];
}

}  // namespace

bool movesLessThanLargest(unsigned char* previous, unsigned char* current, int rows, int cols,
                          int channels) {
  constexpr std::size_t kLargestSum = std::numeric_limits<int>::max();
  const std::size_t pixels = planeSize(rows, cols);
  // The sum of larger frames may wrap.
  if (pixels == 0 || pixels > kLargestSum / kLargestMotion) return false;
  return std::abs(firstSmoothedGray(current, rows, cols, channels) -
                  firstSmoothedGray(previous, rows, cols, channels)) < kLargestMotion;
}

}  // namespace framequilt
