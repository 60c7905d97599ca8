// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// A 64-bit digest of bytes (FNV-1a) that is the same on every machine.
class Digest {
 public:
  void addBytes(const unsigned char* bytes, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      state_ = (state_ ^ bytes[i]) * 0x00000100000001B3ULL;
    }
  }

  /// Four bytes, lowest first.
  void add(std::uint32_t word) {
    for (int shift = 0; shift < 32; shift += 8) {
      const auto byte = static_cast<unsigned char>((word >> shift) & 0xFFU);
      addBytes(&byte, 1);
    }
  }
  void add(int value) { add(static_cast<std::uint32_t>(value)); }

  /// The bits of the number; every NaN alike.
  void add(float value);

  std::uint64_t value() const { return state_; }

  /// 16 digits, lower case.
  std::string hex() const;

 private:
  std::uint64_t state_ = 0xCBF29CE484222325ULL;
};
