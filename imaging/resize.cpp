// SPDX-License-Identifier: Apache-2.0
#include "imaging/resize.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "imaging/cpu_level.h"
#include "imaging/disjoint.h"
#include "imaging/pixel_math.h"
#include "interface/report.h"

namespace framequilt {
namespace {

/// How far a reduction may go: source pixels that exist, destination bytes that exist.
struct Bounds {
  std::int64_t srcPixels;
  std::int64_t dstBytes;
};

constexpr Bounds kUnbounded = {std::numeric_limits<std::int64_t>::max(),
                               std::numeric_limits<std::int64_t>::max()};

/// Output side for an odd factor: the quotient rounded half up.
int roundedQuotient(int side, int scale) {
  return static_cast<int>((2 * std::int64_t{side} + scale) / (2 * std::int64_t{scale}));
}

/// Position of an output index in the source, with the two taps around it and their weights.
struct Tap {
  int first, second;
  float firstWeight, secondWeight;

  Tap(int index, int scale) {
    const float position = static_cast<float>(index) * static_cast<float>(scale);
    first = truncateToInt(position);
    second = truncateToInt(position + 1.0F);
    firstWeight = static_cast<float>(second) - position;
    secondWeight = position - static_cast<float>(first);
  }
};

void sampleBilinear(const unsigned char* src, int rows, int cols, int scale, int channels,
                    unsigned char* dst, Bounds bounds) {
  const int outRows = roundedQuotient(rows, scale);
  const int outCols = roundedQuotient(cols, scale);
  for (int i = 0; i < outRows; ++i) {
    const Tap y(i, scale);
    const unsigned char* upper = src + rowStart(y.first, cols, channels);
    const unsigned char* lower = src + rowStart(y.second, cols, channels);
    for (int j = 0; j < outCols; ++j) {
      const std::int64_t out = rowStart(i, outCols, channels) + std::int64_t{j} * channels;
      if (out + channels > bounds.dstBytes) return;
      const Tap x(j, scale);
      for (int k = 0; k < channels; ++k) {
        const std::ptrdiff_t left = std::ptrdiff_t{x.first} * channels + k;
        const std::ptrdiff_t right = std::ptrdiff_t{x.second} * channels + k;
        const float value =
            static_cast<float>(upper[right]) * (x.secondWeight * y.firstWeight) +
            (static_cast<float>(upper[left]) * (x.firstWeight * y.firstWeight) +
             (static_cast<float>(lower[left]) * (y.secondWeight * x.firstWeight) +
              static_cast<float>(lower[right]) * (y.secondWeight * x.secondWeight)));
        dst[out + k] = lowByte(truncateToInt(value));
      }
    }
  }
}

void sampleByShift(const unsigned char* src, int rows, int cols, int scale, int channels,
                   unsigned char* dst, Bounds bounds) {
  const int outRows = rows / scale;
  const int outCols = cols / scale;
  const int shift = (scale / 2) % 32;
  for (int i = 0; i < outRows; ++i) {
    for (int j = 0; j < outCols; ++j) {
      const std::int64_t pixel = (std::int64_t{i} * cols + j) << shift;
      const std::int64_t out = rowStart(i, outCols, channels) + std::int64_t{j} * channels;
      if (pixel >= bounds.srcPixels || out + channels > bounds.dstBytes) return;
      std::memcpy(dst + out, src + pixel * channels, static_cast<std::size_t>(channels));
    }
  }
}

struct EverySecond {
  FRAMEQUILT_ROUTINE void run(const unsigned char* __restrict from, std::size_t count,
                              unsigned char* __restrict to) {
    for (std::size_t i = 0; i < count; ++i) to[i] = from[2 * i];
  }
};

/// `sampleByShift` of one channel by 2, which the corner search takes of every frame. False where
/// it cannot: for images that touch each other or do not hold all pixels.
bool halve(const unsigned char* src, int rows, int cols, unsigned char* dst, Bounds bounds) {
  const int outRows = rows / 2;
  const int outCols = cols / 2;
  if (outRows < 1 || outCols < 1) return true;
  const std::size_t from = planeSize(2 * (std::int64_t{outRows} - 1), cols) +
                           planeSize(1, 2 * std::int64_t{outCols} - 1);
  const std::size_t to = planeSize(outRows, outCols);
  if (static_cast<std::int64_t>(from) > bounds.srcPixels ||
      static_cast<std::int64_t>(to) > bounds.dstBytes || !disjoint(src, from, dst, to)) {
    return false;
  }
  for (int i = 0; i < outRows; ++i) {
    Leveled<EverySecond>::call(src + rowStart(2 * i, cols), static_cast<std::size_t>(outCols),
                               dst + rowStart(i, outCols));
  }
  return true;
}

bool resize(unsigned char* src, int rows, int cols, int scale, int channels, unsigned char* dst,
            Bounds bounds) {
  if (src == nullptr || dst == nullptr || scale == 0) {
    report("src is null || scale is 0");
    return false;
  }
  if (scale == 1) {
    const auto bytes = static_cast<std::int64_t>(planeSize(rows, cols, channels));
    std::memcpy(dst, src, static_cast<std::size_t>(std::min(bytes, bounds.dstBytes)));
  } else if (scale == 2 && channels == 1 && halve(src, rows, cols, dst, bounds)) {
    return true;
  } else if (scale > 1 && (channels == 1 || channels == 3)) {
    (scale % 2 == 0 ? sampleByShift : sampleBilinear)(src, rows, cols, scale, channels, dst,
                                                      bounds);
  }
  return true;
}

}  // namespace

bool resizeWithinFrame(unsigned char* src, int rows, int cols, int scale, int channels,
                       unsigned char* dst, std::size_t dstCapacity) {
  const Bounds bounds = {static_cast<std::int64_t>(planeSize(rows, cols)),
                         static_cast<std::int64_t>(dstCapacity)};
  return resize(src, rows, cols, scale, channels, dst, bounds);
}

}  // namespace framequilt

template <class T>
bool opencvInterLineARResize(T* src, int rows, int cols, int scale, int channels, T* dst) {
  return framequilt::resize(src, rows, cols, scale, channels, dst, framequilt::kUnbounded);
}

template bool opencvInterLineARResize<unsigned char>(unsigned char*, int, int, int, int,
                                                     unsigned char*);
