// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/seeded_random.h"

#include <cmath>

namespace framequilt::tool {
namespace {

std::mt19937_64 engineOf(std::uint32_t seed, RandomPurpose purpose, std::uint32_t index) {
  std::seed_seq sequence{seed, static_cast<std::uint32_t>(purpose), index};
  return std::mt19937_64(sequence);
}

}  // namespace

SeededRandom::SeededRandom(std::uint32_t seed, RandomPurpose purpose, std::uint32_t index)
    : engine_(engineOf(seed, purpose, index)) {}

int SeededRandom::between(int low, int high) {
  const auto count = static_cast<std::uint64_t>(std::int64_t{high} - low + 1);
  return static_cast<int>(low + static_cast<std::int64_t>(engine_() % count));
}

double SeededRandom::within(double low, double high) {
  return low + (high - low) * std::ldexp(static_cast<double>(engine_() >> 11), -53);
}

// Twelve uniform numbers of 16 bits have a variance of 2^32 - 1 together, so their sum comes in
// units of 2^16, and close to a normal distribution.
float SeededRandom::gauss() {
  constexpr std::uint64_t kEveryOther = 0x0000FFFF0000FFFF;
  constexpr std::int32_t kMean = 6 * 0xFFFF;
  std::uint64_t twoSums = 0;  // Of six numbers each, in 32 bits each.
  for (int draw = 0; draw < 3; ++draw) {
    const std::uint64_t bits = engine_();
    twoSums += (bits & kEveryOther) + ((bits >> 16) & kEveryOther);
  }
  const auto sum = static_cast<std::int32_t>((twoSums >> 32) + (twoSums & 0xFFFFFFFF));
  return static_cast<float>(sum - kMean) / 65536.0F;
}

}  // namespace framequilt::tool
