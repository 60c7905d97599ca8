// SPDX-License-Identifier: Apache-2.0
#include "cpu/placement_rules.h"

#include <cstddef>
#include <cstring>
#include <mutex>
#include <opencv2/core.hpp>

#include "imaging/black_image.h"
#include "imaging/pixel_math.h"
#include "imaging/region.h"
#include "interface/mosaic_lock.h"

namespace framequilt {
namespace {

/// Sides of the mosaic that a run starts with.
constexpr int kFirstMosaicSide = 6000;
/// Fewer agreeing pairs are not blended.
constexpr int kFewestPairs = 11;

int mosaicType(int channels) { return isColour(channels) ? CV_8UC3 : CV_8UC1; }

/// `cv::Mat::isContinuous` says it of images below 2^31 bytes alone.
bool hasPackedRows(const cv::Mat& image) {
  return image.step[0] == static_cast<std::size_t>(image.cols) * image.elemSize();
}

bool placeFrame(unsigned char* frame, int rows, int cols, int channels, SPoint start, SPoint end,
                cv::Mat& mosaic) {
  const std::lock_guard lock(mosaicMutex());
  const int type = mosaicType(channels);
  if (mosaic.rows == kFirstMosaicSide && mosaic.cols == kFirstMosaicSide && mosaic.type() == type &&
      hasPackedRows(mosaic)) {
    // A run that begins anew keeps its memory, which a host may be looking at.
    std::memset(mosaic.data, 0, mosaic.total() * mosaic.elemSize());
  } else {
    mosaic = blackImage(kFirstMosaicSide, kFirstMosaicSide, type);
  }
  return willSmallImgToBigImgAssignRowCol(frame, rows, cols, start.y, end.y, start.x, end.x,
                                          mosaic.rows, mosaic.cols, channels, mosaic.data);
}

}  // namespace

bool startMosaic(unsigned char* frame, int rows, int cols, int channels, SPoint& topLeft,
                 SPoint& bottomRight, cv::Mat& mosaic, stitchflags& flags) {
  const SPoint start = {kFirstMosaicSide / 2 - cols / 2, kFirstMosaicSide / 2 - rows / 2};
  flags.position = start;
  topLeft = start;
  bottomRight = {start.x + cols, start.y + rows};
  return placeFrame(frame, rows, cols, channels, topLeft, bottomRight, mosaic);
}

bool holdsFrame(const cv::Mat& mosaic, SPoint position, int rows, int cols, int channels) {
  return !mosaic.empty() && hasPackedRows(mosaic) && mosaic.type() == mosaicType(channels) &&
         position.x >= 0 && position.y >= 0 && position.x + cols <= mosaic.cols &&
         position.y + rows <= mosaic.rows;
}

Shift largerShift(const stitchflags& flags, int rows, int cols) {
  const auto magnitude = [](int offset) {
    return offset < 0 ? 0U - static_cast<unsigned>(offset) : static_cast<unsigned>(offset);
  };
  const unsigned across = magnitude(flags.offsetX);
  const unsigned down = magnitude(flags.offsetY);
  return across > down ? Shift{across, cols} : Shift{down, rows};
}

bool canBlend(const Shift& shift, int matchNum, float minOverlap, float maxOverlap) {
  const auto distance = static_cast<float>(shift.distance);
  const auto side = static_cast<float>(shift.side);
  return distance > (1.0F - maxOverlap) * side && (1.0F - minOverlap) * side > distance &&
         matchNum >= kFewestPairs;
}

bool isFull(const cv::Mat& mosaic, int maxRows, int maxCols) {
  return product32(mosaic.rows, mosaic.cols) >= product32(maxRows, maxCols);
}

}  // namespace framequilt
