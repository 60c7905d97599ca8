// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// A small generator whose sequence is the same everywhere (SplitMix64, Steele et al. 2014).
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  std::uint64_t next() {
    std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ULL);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
  }

  /// A whole number in [low, high].
  int between(int low, int high) {
    return low + static_cast<int>(next() % static_cast<std::uint64_t>(high - low + 1));
  }

  /// `count` random bytes in [low, high].
  std::vector<unsigned char> bytes(std::size_t count, int low = 0, int high = 255) {
    std::vector<unsigned char> values(count);
    for (auto& value : values) value = static_cast<unsigned char>(between(low, high));
    return values;
  }

 private:
  std::uint64_t state_;
};
