// SPDX-License-Identifier: Apache-2.0
/// \file
/// The definitions of routines that have a faster form: one element after another, in the order that
/// the results depend on. They take what the faster form is not made for, and it is checked against
/// them.
#pragma once

#include <vector>

#include "framequilt/records.h"

namespace framequilt {

/// Descriptors of two images, `length` elements each: those of A `strideA` elements apart, those of
/// B packed.
struct DescriptorSets {
  const unsigned short* a;
  int countA, strideA;
  const unsigned short* b;
  int countB, length;
};

namespace plain {

/// `calacDistanceIndexFun` for sets of at least one descriptor each.
bool matchDescriptors(const DescriptorSets& sets, float* dist, float ratio,
                      std::vector<SPoint>& matches);

}  // namespace plain
}  // namespace framequilt
