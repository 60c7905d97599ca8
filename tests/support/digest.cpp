// SPDX-License-Identifier: Apache-2.0
#include "tests/support/digest.h"

#include <bit>

void Digest::add(float value) {
  constexpr std::uint32_t kNotANumber = 0x7FC00000U;
  const bool isNumber = value == value;
  add(isNumber ? std::bit_cast<std::uint32_t>(value) : kNotANumber);
}

std::string Digest::hex() const {
  std::string digits(16, '0');
  for (std::size_t i = 0; i < digits.size(); ++i) {
    digits[i] = "0123456789abcdef"[(state_ >> (60 - 4 * i)) & 0xFU];
  }
  return digits;
}
