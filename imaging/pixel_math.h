// SPDX-License-Identifier: Apache-2.0
/// \file
/// The arithmetic of the pixel formulas, stated once: what truncates, what wraps, what is cut to a
/// byte. All of it is defined for every input, so that the undefined-behaviour checks stay on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

namespace framequilt {

/// Low 8 bits of a whole number: neither rounded nor saturated.
constexpr unsigned char lowByte(int value) noexcept {
  return static_cast<unsigned char>(static_cast<unsigned>(value) & 0xFFU);
}

/// Sum, difference and product of signed 32-bit numbers that wrap instead of overflowing.
constexpr int sum32(int a, int b) noexcept {
  return static_cast<int>(static_cast<unsigned>(a) + static_cast<unsigned>(b));
}
constexpr int difference32(int a, int b) noexcept {
  return static_cast<int>(static_cast<unsigned>(a) - static_cast<unsigned>(b));
}
constexpr int product32(int a, int b) noexcept {
  return static_cast<int>(static_cast<unsigned>(a) * static_cast<unsigned>(b));
}

/// Truncates toward zero. What does not fit (infinities and NaN too) becomes the smallest number,
/// whose low byte is 0.
constexpr int truncateToInt(float value) noexcept {
  constexpr float kLimit = 2147483648.0F;
  return value >= -kLimit && value < kLimit ? static_cast<int>(value)
                                            : std::numeric_limits<int>::min();
}

/// Element count of a plane; a side below 1 makes it empty. Sides are wider than `int`, so that a
/// margin can be added to the largest frame.
constexpr std::size_t planeSize(std::int64_t rows, std::int64_t cols, int channels = 1) noexcept {
  return rows < 1 || cols < 1 || channels < 1
             ? 0
             : static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols) *
                   static_cast<std::size_t>(channels);
}

/// Offset of the first element of a row. Signed and as wide as a pointer: a mosaic exceeds 2^31.
constexpr std::ptrdiff_t rowStart(int row, int cols, int channels = 1) noexcept {
  return static_cast<std::ptrdiff_t>(row) * cols * channels;
}

}  // namespace framequilt
