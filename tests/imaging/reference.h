// SPDX-License-Identifier: Apache-2.0
/// \file
/// Slow, obvious formulations that the routines are compared with.
#pragma once

#include <cstddef>

/// Element count of a plane, or the index of an element: none of the factors is negative here.
inline std::size_t area(int rows, int cols, int channels = 1) {
  return static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols) *
         static_cast<std::size_t>(channels);
}

inline std::size_t at(int row, int col, int cols) {
  return area(row, cols) + static_cast<std::size_t>(col);
}

/// Index that `i` mirrors to in a line of n elements. The mirrored line has the period 2 (n - 1).
inline int mirrored(int i, int n) {
  if (n == 1) return 0;
  const int period = 2 * (n - 1);
  const int phase = (i % period + period) % period;
  return phase < n ? phase : period - phase;
}

/// sum + weight * value with both operations rounded to single precision. The product of two floats
/// is exact in double, and a double sum of two floats rounds to the same float: no joined
/// multiply-add can change this.
inline float plusProduct(float sum, float weight, float value) {
  const float product =
      static_cast<float>(static_cast<double>(weight) * static_cast<double>(value));
  return static_cast<float>(static_cast<double>(sum) + static_cast<double>(product));
}

/// Low byte of the whole part of a number that fits an int.
inline unsigned char wrappedByte(float value) {
  return static_cast<unsigned char>(((static_cast<int>(value) % 256) + 256) % 256);
}

/// Gray of a blue, green, red triple: the whole part of the weighted mean and one more when the
/// thousandths left over reach a half.
inline unsigned char grayOf(const unsigned char* bgr) {
  const int thousandths = 299 * bgr[2] + 587 * bgr[1] + 114 * bgr[0];
  return static_cast<unsigned char>(thousandths / 1000 + (thousandths % 1000 >= 500 ? 1 : 0));
}
