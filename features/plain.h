// SPDX-License-Identifier: Apache-2.0
/// \file
/// The definitions of routines that have a faster form: one element after another, in the order
/// that the results depend on. They take what the faster form is not made for, and it is checked
/// against them.
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

/// Rows of gray values, one right after the other.
struct GrayView {
  const unsigned char* pixels;
  int rows, cols;
};

/// Cap of the squared radius of a candidate, in pixels of the response plane.
constexpr float kLargestRadius = 65535.0F;

/// Pixels of a cell of a descriptor, each way.
constexpr int kCellSide = 4;

namespace plain {

/// Descriptor of one corner, as noRotaFeatureDescriber lays it out. Elements behind the last cell
/// stay as they are.
void describeCorner(const GrayView& image, SPoint corner, int patch, unsigned short* descriptor,
                    int length);

/// `calacDistanceIndexFun` for sets of at least one descriptor each.
bool matchDescriptors(const DescriptorSets& sets, float* dist, float ratio,
                      std::vector<SPoint>& matches);

/// ransacMatchSPointArrayFun.
bool agreeOnOffset(const std::vector<SPoint>& pointsA, const std::vector<SPoint>& pointsB,
                   std::vector<SPoint>& inliersA, std::vector<SPoint>& inliersB, float& dx,
                   float& dy);

/// For each of the points the squared distance to the nearest clearly stronger one, at most
/// kLargestRadius; goToSecondGetRidOfSomeSPoints says what is clearly stronger.
/// \throws std::out_of_range when there are more points than values.
std::vector<float> suppressionRadii(const std::vector<float>& values,
                                    const std::vector<SPoint>& points, float robust);

}  // namespace plain
}  // namespace framequilt
