// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "imaging/chamfer.h"
#include "imaging/cpu_level.h"

namespace framequilt::chamfer {

/// The 16 distances of a step, in vectors of `Bytes` bytes. Distances are not negative, so that
/// their bit patterns are ordered as they are; minima of integers are cheaper.
template <int Bytes>
struct Front {
  static constexpr int kWidth = Bytes / 4;
  static constexpr int kParts = kLanes / kWidth;
  typedef float Floats __attribute__((vector_size(Bytes)));
  typedef int Ints __attribute__((vector_size(Bytes)));

  Ints part[kParts];

  FRAMEQUILT_ROUTINE void load(const float* from, Front& to) {
    __builtin_memcpy(&to, from, sizeof(Front));
  }
  FRAMEQUILT_ROUTINE void store(const Front& from, float* to) {
    __builtin_memcpy(to, &from, sizeof(Front));
  }
  FRAMEQUILT_ROUTINE void fill(float value, Front& to) {
    for (int p = 0; p < kParts; ++p) to.part[p] = (Ints)(Floats{} + value);
  }
  FRAMEQUILT_ROUTINE void add(const Front& a, const Front& b, Front& sum) {
    for (int p = 0; p < kParts; ++p) sum.part[p] = (Ints)((Floats)a.part[p] + (Floats)b.part[p]);
  }
  FRAMEQUILT_ROUTINE void smaller(const Front& a, const Front& b, Front& least) {
    for (int p = 0; p < kParts; ++p) least.part[p] = a.part[p] < b.part[p] ? a.part[p] : b.part[p];
  }
  /// Lanes where `mask` has all bits from `a`, the others from `b`.
  FRAMEQUILT_ROUTINE void choose(const Front& mask, const Front& a, const Front& b, Front& chosen) {
    for (int p = 0; p < kParts; ++p) {
      chosen.part[p] = (mask.part[p] & a.part[p]) | (~mask.part[p] & b.part[p]);
    }
  }
};

}  // namespace framequilt::chamfer
