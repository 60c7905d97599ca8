// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <random>

namespace framequilt::tool {

/// What a sequence of random numbers is for. Each purpose has one of its own, so that drawing more
/// for one changes nothing of the others.
enum class RandomPurpose : std::uint32_t { kScene, kPath, kGain, kRotation, kNoise };

/// Random numbers that are the same on every machine and compiler, which the distributions of the
/// standard library are not.
class SeededRandom {
 public:
  /// \param index  Tells apart the sequences of one purpose, such as those of the frames.
  SeededRandom(std::uint32_t seed, RandomPurpose purpose, std::uint32_t index = 0);

  /// A whole number in [low, high].
  int between(int low, int high);

  /// A fraction in [low, high).
  double within(double low, double high);

  /// Of a normal distribution with mean 0 and standard deviation 1, cut off at 6.
  float gauss();

 private:
  std::mt19937_64 engine_;
};

}  // namespace framequilt::tool
