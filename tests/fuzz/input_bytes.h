// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "tests/support/random_images.h"

namespace framequilt::fuzz {

/// Takes numbers, images and texts off the front of the bytes of a fuzz input. Behind the end there
/// are zeros.
class InputBytes {
 public:
  InputBytes(const std::uint8_t* data, std::size_t size) : next_(data), end_(data + size) {}

  bool empty() const { return next_ == end_; }

  unsigned char byte() { return empty() ? static_cast<unsigned char>(0) : *next_++; }
  bool flag() { return (byte() & 1U) != 0; }
  std::uint32_t word() {
    std::uint32_t bits = 0;
    for (int shift = 0; shift < 32; shift += 8) bits |= std::uint32_t{byte()} << shift;
    return bits;
  }
  int anyInt() { return static_cast<int>(word()); }

  /// A whole number in [low, high]; spans up to 256 take a byte, others up to 65536 two.
  int between(int low, int high) {
    const std::uint32_t span = static_cast<std::uint32_t>(high - low) + 1;
    std::uint32_t bits = byte();
    if (span > 256) bits |= std::uint32_t{byte()} << 8;
    return low + static_cast<int>(bits % span);
  }

  template <class T, std::size_t N>
  T oneOf(const std::array<T, N>& choices) {
    return choices[static_cast<std::size_t>(byte()) % N];
  }

  /// Small whole numbers mostly, and every number there is.
  float number() {
    const unsigned char kind = byte();
    if (kind < 160) return static_cast<float>(kind % 16);
    if (kind < 200) return static_cast<float>(between(-1000, 1000)) / 8.0F;
    if (kind < 216) return oneOf(kOddNumbers);
    const std::uint32_t bits = word();
    float value = 0.0F;
    std::memcpy(&value, &bits, sizeof(value));
    return value;
  }
  std::vector<float> numbers(std::size_t count) {
    std::vector<float> values(count);
    for (float& value : values) value = number();
    return values;
  }

  /// `count` bytes of an image: given one by one and repeated, of two values, of one, or random
  /// from a seed.
  std::vector<unsigned char> image(std::size_t count) {
    std::vector<unsigned char> values(count);
    switch (byte() % 6) {
      case 0: {
        const std::size_t given = std::min(count, left());
        std::copy_n(next_, given, values.begin());
        for (std::size_t i = given; i < count && given > 0; ++i) values[i] = values[i - given];
        next_ += given;
        return values;
      }
      case 1: {
        const unsigned char mask = byte();
        fill(values, [mask](std::uint64_t bits) { return bits & mask; });
        return values;
      }
      case 2:
        fill(values, [](std::uint64_t bits) { return bits % 2 == 0 ? 0U : 255U; });
        return values;
      case 3:
        std::fill(values.begin(), values.end(), byte());
        return values;
      case 4:  // Mostly without zeros.
        fill(values, [](std::uint64_t bits) { return bits % 997 == 0 ? 0U : 1 + bits % 255; });
        return values;
      default:
        fill(values, [](std::uint64_t bits) { return bits; });
        return values;
    }
  }

  /// What is left, at most `longest` bytes.
  std::string text(std::size_t longest) {
    const std::size_t length = std::min(longest, left());
    std::string taken(reinterpret_cast<const char*>(next_), length);
    next_ += length;
    return taken;
  }

 private:
  static constexpr std::array<float, 8> kOddNumbers = {-0.0F,
                                                       std::numeric_limits<float>::infinity(),
                                                       -std::numeric_limits<float>::infinity(),
                                                       std::numeric_limits<float>::quiet_NaN(),
                                                       std::numeric_limits<float>::max(),
                                                       std::numeric_limits<float>::denorm_min(),
                                                       65535.0F,
                                                       2147483648.0F};

  std::size_t left() const { return static_cast<std::size_t>(end_ - next_); }

  template <class Value>
  void fill(std::vector<unsigned char>& values, Value value) {
    Random random(word());
    for (unsigned char& each : values)
      each = static_cast<unsigned char>(value(random.next() >> 20U));
  }

  const std::uint8_t* next_;
  const std::uint8_t* end_;
};

}  // namespace framequilt::fuzz
