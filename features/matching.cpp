// SPDX-License-Identifier: Apache-2.0
#include "features/matching.h"

#include <cstddef>

#include "features/matching_lanes.h"
#include "features/plain.h"
#include "imaging/pixel_math.h"
#include "interface/report.h"

namespace {

/// The order of the sum is part of the result.
float squaredDistance(const unsigned short* a, const unsigned short* b, int length) {
  float sum = 0.0F;
  for (int k = 0; k < length; ++k) {
    const int difference = b[k] - a[k];
    sum += static_cast<float>(framequilt::product32(difference, difference));
  }
  return sum;
}

const unsigned short* element(const unsigned short* descriptors, int index, int stride) {
  return descriptors + static_cast<std::ptrdiff_t>(index) * stride;
}

}  // namespace

template <class T>
bool findMinIndex(T* values, int n, T& minValue, T& maxValue, int& minIndex) {
  if (values == nullptr) {
    framequilt::report("findMinIndex ptr is null");
    return false;
  }
  minValue = values[0];
  maxValue = values[0];
  minIndex = 0;
  for (int k = 1; k < n; ++k) {
    if (minValue > values[k]) {
      minValue = values[k];
      minIndex = k;
    }
    if (values[k] > maxValue) maxValue = values[k];
  }
  return true;
}

template bool findMinIndex<float>(float*, int, float&, float&, int&);

bool framequilt::plain::matchDescriptors(const DescriptorSets& sets, float* dist, float ratio,
                                         std::vector<SPoint>& matches) {
  for (int j = 0; j < sets.countB; ++j) {
    const unsigned short* wanted = element(sets.b, j, sets.length);
    for (int i = 0; i < sets.countA && dist != nullptr; ++i) {
      dist[i] = squaredDistance(element(sets.a, i, sets.strideA), wanted, sets.length);
    }
    float best = 0.0F;
    float second = 0.0F;
    float worst = 0.0F;
    int bestIndex = 0;
    int ignoredIndex = 0;
    if (!findMinIndex(dist, sets.countA, best, worst, bestIndex)) return false;
    dist[bestIndex] = worst;
    findMinIndex(dist, sets.countA, second, worst, ignoredIndex);
    // Two distances of 0 give a quotient that is not a number: no match.
    if (ratio > best / second) matches.push_back({j, bestIndex});
  }
  return true;
}

bool calacDistanceIndexFun(unsigned short* descA, unsigned short* descB, float* dist, float ratio,
                           int countA, int strideA, int countB, int length,
                           std::vector<SPoint>& matches) {
  if (descA == nullptr || descB == nullptr) {
    framequilt::report("calacDistanceIndexFun ptr is null");
    return false;
  }
  if (countA < 1 || countB < 1) return true;

  const framequilt::DescriptorSets sets = {descA, countA, strideA, descB, countB, length};
  if (dist == nullptr || !framequilt::suitsLanes(sets)) {
    return framequilt::plain::matchDescriptors(sets, dist, ratio, matches);
  }
  framequilt::matchInLanes(sets, dist, ratio, matches);
  return true;
}

bool roughMatchSPoint(std::vector<SPoint> cornersA, std::vector<SPoint> cornersB,
                      std::vector<SPoint> matches, std::vector<SPoint>& pointsA,
                      std::vector<SPoint>& pointsB) {
  for (const SPoint match : matches) {
    pointsA.push_back(cornersA.at(static_cast<std::size_t>(match.y)));
    pointsB.push_back(cornersB.at(static_cast<std::size_t>(match.x)));
  }
  return true;
}
