// SPDX-License-Identifier: Apache-2.0
#include "cpu/working_buffers.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>

#include "cpu/run_state.h"
#include "features/features_state.h"
#include "framequilt/tuning.h"
#include "imaging/feather.h"
#include "imaging/imaging_state.h"
#include "imaging/pixel_math.h"
#include "imaging/run_buffer.h"

namespace framequilt {
namespace {

/// The image that corners are searched in. A `scale` that does not set its size leaves the one of
/// an earlier run, which may be larger than the frames of this one.
std::size_t cornerSearchPixels() {
  return planeSize(gray_pointdownscal_row, gray_pointdownscal_col);
}

std::size_t grayPlane() { return std::max(framePlane(2), cornerSearchPixels()); }
std::size_t boundPlane() { return std::max(framePlane(8), cornerSearchPixels()); }

template <class... Buffers>
void dropAll(Buffers*&... buffers) noexcept {
  (drop(buffers), ...);
}

}  // namespace

int workingPixelBytes(int channels) noexcept { return channels == 2 ? 3 : std::max(channels, 1); }

std::size_t imageBytes(int rows, int cols, int channels) {
  std::int64_t bytes = 0;
  if (__builtin_mul_overflow(std::int64_t{rows} * cols, channels, &bytes) || bytes < 0 ||
      bytes > std::numeric_limits<std::int32_t>::max()) {
    throw std::bad_alloc();
  }
  return static_cast<std::size_t>(bytes);
}

std::size_t newFrameCapacity(int channels) {
  return planeSize(RealImgRow, RealImgCol, workingPixelBytes(channels));
}

std::size_t referenceCapacity(int channels) {
  return planeSize(imgScaleRow, imgScaleCol, workingPixelBytes(channels));
}

void allocateRunBuffers(int rows, int cols, int channels) {
  // The sizes that a host was promised decide what is refused.
  const std::size_t working = imageBytes(imgScaleRow, imgScaleCol, channels);
  const std::size_t full = imageBytes(rows, cols, channels);
  const int pixelBytes = workingPixelBytes(channels);
  const std::size_t workingExtent =
      std::max(working, imageBytes(imgScaleRow, imgScaleCol, pixelBytes));
  const std::size_t fullExtent = std::max(full, imageBytes(rows, cols, pixelBytes));
  ensure(theSorImageTemp, workingExtent);
  // The motion measure reads it at the size of a full frame.
  ensure(thedestImageScale, std::max(workingExtent, fullExtent));
  ensure(theSorImageScale, workingExtent);
  ensure(thedestImage_pre, std::max(workingExtent, fullExtent));
}

void allocatePairPlanes() {
  ensureRoom(resiz_One, grayPlane());
  ensureRoom(resiz_Two, grayPlane());
  ensureRoom(resiz_OneBound, boundPlane());
  ensureRoom(resiz_TwoBound, boundPlane());
}

void releasePairPlanes() noexcept { dropAll(resiz_One, resiz_Two, resiz_OneBound, resiz_TwoBound); }

void allocateMotionPlanes() {
  ensureRoom(PreFrameImageGrayCpu, framePlane(0));
  ensureRoom(CurFrameImageGrayCpu, framePlane(0));
  ensureRoom(PreFrameImageGrayBoundCpu, framePlane(4));
  ensureRoom(CurFrameImageGrayBoundCpu, framePlane(4));
  ensureRoom(PreFrameImageGrayBoundTempCpu, framePlane(4));
  ensureRoom(CurFrameImageGrayBoundTempCpu, framePlane(4));
}

void releaseMotionPlanes() noexcept {
  dropAll(PreFrameImageGrayCpu, CurFrameImageGrayCpu, PreFrameImageGrayBoundCpu,
          PreFrameImageGrayBoundTempCpu, CurFrameImageGrayBoundCpu, CurFrameImageGrayBoundTempCpu);
}

void allocateOverlapPlanes() {
  ensureRoom(resiz_OneBoundFilter, framePlane(8));
  ensureRoom(resiz_TwoBoundFilter, framePlane(8));
}

void releaseOverlapPlanes() noexcept { dropAll(resiz_OneBoundFilter, resiz_TwoBoundFilter); }

void releaseAllBuffers() noexcept {
  dropAll(theSorImageTemp, thedestImageScale, theSorImageScale, SorImageOnergb_gray,
          DestImageTworgb_gray, gray_pointdownscal, gray_pointdownscal1, OverlapImageOne,
          OverlapImageTwo, grad_x2, grad_x21, grad_y2, grad_y21, grad_xy, grad_xy1, grad_bound,
          grad_bound1, grad_bound_temp, grad_bound_temp1, Coonervalue, Coonervalue1,
          OverLapImageOneGray, OverLapImageTwoGray, OverLapImageOneGrayTemp,
          OverLapImageTwoGrayTemp, dst_row_bound_out1, dst_out1, dst_row_bound_out2, dst_out2);
  releasePairPlanes();
  releaseOverlapPlanes();
  dropAll(AreaImageOneWeight, AreaImageOneGary, AreaImageTwoGary, AreaImageOneGaryFloat,
          AreaImageTwoGaryFloat, thedestImage_pre);
  releaseMotionPlanes();
  releaseFeather();
  // Left over only when a frame was cut short by an exception.
  dropAll(FeatureDescriber1, FeatureDescriber2, DescribleSymbol, DescribleSymbol1, dist_valueCpu,
          SorTempGrayImage, DestTempGrayImage);
}

}  // namespace framequilt
