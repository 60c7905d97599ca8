// SPDX-License-Identifier: Apache-2.0
#include "imaging/fusion.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "framequilt/tuning.h"
#include "imaging/feather.h"
#include "imaging/gray.h"
#include "imaging/imaging_state.h"
#include "imaging/overlap.h"
#include "imaging/pixel_math.h"
#include "imaging/run_buffer.h"
#include "interface/report.h"

namespace {

using framequilt::AtScopeEnd;
using framequilt::drop;
using framequilt::ensureRoom;
using framequilt::planeSize;
using framequilt::rowStart;

/// Cost of a step along an axis and of a diagonal one.
constexpr float kAxisStep = 0.2F;
constexpr float kDiagonalStep = 0.3F;

bool refuseNull() {
  framequilt::report("ptr is null");
  return false;
}

/// The smaller distance of a pixel and of the way over three of its neighbours.
float nearest(float here, float side, float vertical, float diagonal) {
  return std::min(diagonal + kDiagonalStep,
                  std::min(vertical + kAxisStep, std::min(side + kAxisStep, here)));
}

/// Distances grow from pixels without content, which stay 0. The first and last column are never
/// updated, nor is the first row on the way down.
void spreadDown(float* map, int rows, int cols) {
  for (int r = 1; r < rows; ++r) {
    float* row = map + rowStart(r, cols);
    const float* above = row - cols;
    for (int c = 1; c < cols - 1; ++c) {
      if (row[c] != 0.0F) row[c] = nearest(row[c], row[c - 1], above[c], above[c - 1]);
    }
  }
}

void spreadUp(float* map, int rows, int cols) {
  for (int r = rows - 2; r >= 0; --r) {
    float* row = map + rowStart(r, cols);
    const float* below = row + cols;
    for (int c = cols - 2; c >= 1; --c) {
      if (row[c] != 0.0F) row[c] = nearest(row[c], row[c + 1], below[c], below[c + 1]);
    }
  }
}

void blankFrame(float* map, int rows, int cols) {
  corresColAllRowZeroFloat(map, rows, cols, 0, 1);
  corresColAllRowZeroFloat(map, rows, cols, cols - 1, cols);
  corresRowAllColZeroFloat(map, rows, cols, 0, 1);
  corresRowAllColZeroFloat(map, rows, cols, rows - 1, rows);
}

unsigned char weightOf(float a, float b) {
  const float sum = a + b;
  return sum == 0.0F ? 0 : framequilt::lowByte(framequilt::truncateToInt(a * 255.0F / sum));
}

unsigned weightedSum(unsigned weight, unsigned char one, unsigned char two) {
  return (255U - weight) * two + weight * one;
}

void mixColour(const unsigned char* image1, unsigned char* image2, const unsigned char* weight,
               std::size_t pixels) {
  for (std::size_t i = 0; i < pixels; ++i) {
    for (std::size_t k = 3 * i; k < 3 * i + 3; ++k) {
      image2[k] = static_cast<unsigned char>(weightedSum(weight[i], image1[k], image2[k]) / 255U);
    }
  }
}

/// Divides by 256 where the colour path divides by 255.
void mixGray(const unsigned char* image1, unsigned char* image2, const unsigned char* weight,
             std::size_t pixels) {
  for (std::size_t i = 0; i < pixels; ++i) {
    image2[i] = static_cast<unsigned char>(weightedSum(weight[i], image1[i], image2[i]) >> 8U);
  }
}

}  // namespace

namespace framequilt {

void spreadDistances(float* one, float* two, int rows, int cols) {
  // Only the new frame: it fades towards its edges, the mosaic does not.
  blankFrame(two, rows, cols);
  for (float* map : {one, two}) {
    spreadDown(map, rows, cols);
    spreadUp(map, rows, cols);
  }
}

}  // namespace framequilt

bool weightofTwoAreaFun(unsigned char* image1, unsigned char* image2, int rows, int cols,
                        int channels, int /*ignored*/, unsigned char* weight) {
  if (image1 == nullptr || image2 == nullptr || weight == nullptr) return refuseNull();
  const std::size_t pixels = planeSize(rows, cols);
  if (pixels == 0) return true;

  const bool ownsOne = AreaImageOneGaryFloat == nullptr;
  const bool ownsTwo = AreaImageTwoGaryFloat == nullptr;
  const AtScopeEnd release([=] {
    if (ownsOne) drop(AreaImageOneGaryFloat);
    if (ownsTwo) drop(AreaImageTwoGaryFloat);
  });
  ensureRoom(AreaImageOneGaryFloat, pixels);
  ensureRoom(AreaImageTwoGaryFloat, pixels);
  float* const a = AreaImageOneGaryFloat;
  float* const b = AreaImageTwoGaryFloat;

  rgb2GrayFloat1(image1, rows, cols, channels, a);
  rgb2GrayFloat1(image2, rows, cols, channels, b);
  framequilt::spreadDistances(a, b, rows, cols);
  for (std::size_t i = 0; i < pixels; ++i) weight[i] = weightOf(a[i], b[i]);
  return true;
}

bool twoImageFusion(unsigned char* image1, unsigned char* image2, int channels, int ignored,
                    int rows, int cols) {
  if (image1 == nullptr || image2 == nullptr) return refuseNull();
  const AtScopeEnd release([] {
    drop(AreaImageOneGaryFloat);
    drop(AreaImageTwoGaryFloat);
    drop(AreaImageOneWeight);
    drop(AreaImageOneGary);
    drop(AreaImageTwoGary);
  });
  const framequilt::Feathering job = {
      image1, rowStart(1, cols, channels), image2, nullptr, rows, cols, channels};
  if (framequilt::canFeather(job)) {
    framequilt::feather(job);
  } else {
    framequilt::fusePlainly(image1, image2, channels, ignored, rows, cols);
  }
  return true;
}

namespace framequilt {

void fusePlainly(unsigned char* image1, unsigned char* image2, int channels, int ignored, int rows,
                 int cols) {
  const std::size_t pixels = planeSize(rows, cols);
  const std::size_t plane = std::max(pixels, planeSize(RealImgRow, RealImgCol));
  ensureRoom(AreaImageOneGaryFloat, plane);
  ensureRoom(AreaImageTwoGaryFloat, plane);
  ensureRoom(AreaImageOneWeight, std::max(plane, planeSize(RealImgRow, RealImgCol, channels)));
  ensureRoom(AreaImageOneGary, plane);
  ensureRoom(AreaImageTwoGary, plane);

  weightofTwoAreaFun(image1, image2, rows, cols, channels, ignored, AreaImageOneWeight);
  if (channels >= 2) {
    mixColour(image1, image2, AreaImageOneWeight, pixels);
  } else {
    mixGray(image1, image2, AreaImageOneWeight, pixels);
  }
  // The images may overlap.
  std::memmove(image1, image2, planeSize(rows, cols, channels));
}

}  // namespace framequilt
