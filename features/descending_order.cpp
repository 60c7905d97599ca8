// SPDX-License-Identifier: Apache-2.0
#include "features/descending_order.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <numeric>
#include <utility>

namespace framequilt {
namespace {

constexpr std::size_t kDigits = 4;
constexpr std::size_t kDigitBits = 8;
constexpr std::size_t kDigitValues = std::size_t{1} << kDigitBits;

struct Entry {
  std::uint32_t key;
  int place;
};

/// A number that grows as the value falls.
std::uint32_t descendingKey(float value) {
  std::uint32_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  const bool negative = bits >> 31 != 0;
  return negative ? bits : 0x7FFFFFFFU - bits;
}

std::size_t digit(std::uint32_t key, std::size_t d) { return key >> (d * kDigitBits) & 0xFFU; }

/// How often each digit has each value.
using Histograms = std::array<std::array<int, kDigitValues>, kDigits>;

Histograms countDigits(const Entry* entries, std::size_t count) {
  Histograms histograms = {};
  for (std::size_t k = 0; k < count; ++k) {
    for (std::size_t d = 0; d < kDigits; ++d) ++histograms[d][digit(entries[k].key, d)];
  }
  return histograms;
}

/// One pass, stable. `next` is the histogram of the digit.
void sortByDigit(const Entry* from, std::size_t count, std::size_t d,
                 std::array<int, kDigitValues>& next, Entry* to) {
  int start = 0;
  for (int& place : next) start += std::exchange(place, start);
  for (std::size_t k = 0; k < count; ++k) to[next[digit(from[k].key, d)]++] = from[k];
}

}  // namespace

std::vector<int> descendingOrder(const std::vector<float>& values) {
  const std::size_t count = values.size();
  std::vector<int> order(count);
  if (std::is_sorted(values.rbegin(), values.rend())) {
    std::iota(order.begin(), order.end(), 0);
    return order;
  }
  const auto memory = std::make_unique<Entry[]>(2 * count);
  Entry* entries = memory.get();
  Entry* sorted = entries + count;
  for (std::size_t k = 0; k < count; ++k) {
    entries[k] = {descendingKey(values[k]), static_cast<int>(k)};
  }
  Histograms histograms = countDigits(entries, count);
  for (std::size_t d = 0; d < kDigits; ++d) {
    sortByDigit(entries, count, d, histograms[d], sorted);
    std::swap(entries, sorted);
  }
  for (std::size_t k = 0; k < count; ++k) order[k] = entries[k].place;
  return order;
}

}  // namespace framequilt
