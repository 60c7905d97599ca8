// SPDX-License-Identifier: Apache-2.0
#include "imaging/motion.h"

#include <cstdlib>
#include <cstring>

#include "framequilt/tuning.h"
#include "imaging/filter.h"
#include "imaging/gray.h"
#include "imaging/imaging_state.h"
#include "imaging/pixel_math.h"
#include "interface/report.h"

namespace {

/// The value that every limit refuses.
constexpr int kUnmeasured = 255;

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
