// SPDX-License-Identifier: Apache-2.0
#include "imaging/gray.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "imaging/cpu_level.h"
#include "imaging/disjoint.h"
#include "imaging/pixel_math.h"
#include "interface/report.h"

unsigned int R1[256], G1[256], B1[256];

namespace {

using framequilt::planeSize;
using framequilt::product32;

constexpr int kColour = 3;

/// 1000 times the gray value of a blue, green, red triple.
unsigned weightedSum(const unsigned char* bgr) {
  return 299U * bgr[2] + 587U * bgr[1] + 114U * bgr[0];
}

unsigned char integerGray(const unsigned char* bgr) {
  return static_cast<unsigned char>((weightedSum(bgr) + 500U) / 1000U);
}

/// An eighth of the weights, cut to whole numbers, and what is left of them.
struct GrayWeights {
  std::uint16_t blue = 114 / 8, green = 587 / 8, red = 299 / 8;
  std::uint16_t blueRest = 114 % 8, greenRest = 587 % 8, redRest = 299 % 8;
  /// Times it over 2^22: numbers up to 31937 over 125.
  std::uint16_t by125 = 33555;
};

/// Vectors are worth it in 16 bits: an eighth of the sum first, then a 125th of that. The weights
/// come from outside because compilers turn products with constants into chains of shifts.
template <int Bytes>
struct GrayRow {
  FRAMEQUILT_ROUTINE unsigned char eighths(unsigned b, unsigned g, unsigned r,
                                           const GrayWeights& w) {
    const auto rest =
        static_cast<std::uint16_t>(w.redRest * r + w.greenRest * g + w.blueRest * b + 500U % 8U);
    const auto eighth =
        static_cast<std::uint16_t>(w.red * r + w.green * g + w.blue * b + 500U / 8U + (rest >> 3U));
    const auto scaled = static_cast<std::uint16_t>((unsigned{eighth} * w.by125) >> 16U);
    return static_cast<unsigned char>(scaled >> 6U);
  }

  FRAMEQUILT_ROUTINE void run(const unsigned char* __restrict bgr, std::size_t pixels,
                              const GrayWeights& weights, unsigned char* __restrict gray) {
    const GrayWeights w = weights;
    for (std::size_t i = 0; i < pixels; ++i) {
      const unsigned char* const pixel = bgr + kColour * i;
      gray[i] = Bytes > 16 ? eighths(pixel[0], pixel[1], pixel[2], w) : integerGray(pixel);
    }
  }
};

/// Images that touch each other are converted pixel by pixel, in their order.
void toGray(const unsigned char* bgr, std::size_t pixels, unsigned char* gray) {
  if (framequilt::disjoint(bgr, kColour * pixels, gray, pixels)) {
    framequilt::LeveledByWidth<GrayRow>::call(bgr, pixels, GrayWeights{}, gray);
  } else {
    for (std::size_t i = 0; i < pixels; ++i) gray[i] = integerGray(bgr + kColour * i);
  }
}

float tableGray(const unsigned char* bgr) {
  return static_cast<float>(B1[bgr[0]] + G1[bgr[1]] + R1[bgr[2]]);
}

float maskOf(bool hasContent) { return hasContent ? 255.0F : 0.0F; }

/// Pixels of a float plane: the 32-bit product of its sides, none when that is below 1.
std::size_t flatCount(int rows, int cols) {
  return rows < 1 || cols < 1 ? 0 : static_cast<std::size_t>(std::max(0, product32(rows, cols)));
}

bool refuseNull() {
  framequilt::report("rgb2gray ptr invailed");
  return false;
}

}  // namespace

bool rgb2Gray(unsigned char* src, int rows, int cols, unsigned char* dst) {
  if (src == nullptr || dst == nullptr) return refuseNull();
  toGray(src, planeSize(rows, cols), dst);
  return true;
}

bool rgb2GrayTwo(unsigned char* src1, unsigned char* src2, int rows, int cols, unsigned char* dst1,
                 unsigned char* dst2) {
  if (src1 == nullptr || dst1 == nullptr) return refuseNull();
  const std::size_t pixels = planeSize(rows, cols);
  toGray(src1, pixels, dst1);
  toGray(src2, pixels, dst2);
  return true;
}

bool rgb2GrayFloat(unsigned char* src, int rows, int cols, int channels, float* dst) {
  if (src == nullptr || dst == nullptr) return refuseNull();
  const std::size_t pixels = flatCount(rows, cols);
  if (channels == kColour) {
    for (std::size_t i = 0; i < pixels; ++i) dst[i] = tableGray(src + kColour * i);
  } else {
    for (std::size_t i = 0; i < pixels; ++i) dst[i] = static_cast<float>(src[i]);
  }
  return true;
}

bool rgb2GrayFloat1(unsigned char* src, int rows, int cols, int channels, float* dst) {
  if (src == nullptr || dst == nullptr) return refuseNull();
  const std::size_t pixels = flatCount(rows, cols);
  if (channels == kColour) {
    for (std::size_t i = 0; i < pixels; ++i)
      dst[i] = maskOf(weightedSum(src + kColour * i) >= 500U);
  } else {
    for (std::size_t i = 0; i < pixels; ++i) dst[i] = maskOf(src[i] != 0);
  }
  return true;
}

bool rgb2GrayFloatTwo(unsigned char* src1, unsigned char* src2, int rows, int cols, int channels,
                      float* dst1, float* dst2) {
  if (src1 == nullptr || dst1 == nullptr) return refuseNull();
  const std::size_t pixels = flatCount(rows, cols);
  if (channels == kColour) {
    for (std::size_t i = 0; i < pixels; ++i) {
      dst1[i] = tableGray(src1 + kColour * i);
      dst2[i] = tableGray(src2 + kColour * i);
    }
  } else {
    // Also here three bytes a pixel: the first of each triple.
    for (std::size_t i = 0; i < pixels; ++i) {
      dst1[i] = static_cast<float>(src1[kColour * i]);
      dst2[i] = static_cast<float>(src2[kColour * i]);
    }
  }
  return true;
}

namespace framequilt {

void copyAndToGray(const unsigned char* bgr, std::size_t pixels, unsigned char* copy,
                   unsigned char* gray) {
  constexpr std::size_t kTogether = 4096;
  for (std::size_t i = 0; i < pixels; i += kTogether) {
    const std::size_t count = std::min(kTogether, pixels - i);
    std::memcpy(copy + kColour * i, bgr + kColour * i, kColour * count);
    toGray(copy + kColour * i, count, gray + i);
  }
}

void fillGrayTables() {
  for (unsigned i = 0; i < 256U; ++i) {
    R1[i] = (1224U * i) >> 12;
    G1[i] = (2404U * i) >> 12;
    B1[i] = (467U * i) >> 12;
  }
}

}  // namespace framequilt
