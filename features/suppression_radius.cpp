// SPDX-License-Identifier: Apache-2.0
#include "features/suppression_radius.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "features/descending_order.h"
#include "features/plain.h"
#include "imaging/cpu_level.h"

namespace framequilt {
namespace {

/// Candidates whose radii are sought side by side.
constexpr std::size_t kLanes = 32;
/// Largest extent of the candidates each way, in pixels: squared distances fit into 31 bits.
/// Single precision has those up to the cap exactly, and no greater one comes out below it.
constexpr std::int64_t kLargestExtent = 32767;

/// Candidates in descending order of their values.
struct Ranking {
  const float *x, *y;
  const int* stronger;  ///< So many from the first on are clearly stronger than a candidate.
};

/// The squared radii of kLanes candidates, of which `first` is the first one.
struct Radii {
  FRAMEQUILT_ROUTINE void run(Ranking ranking, std::size_t first, float* __restrict radii) {
    const float* __restrict x = ranking.x;
    const float* __restrict y = ranking.y;
    const float* __restrict ownX = x + first;
    const float* __restrict ownY = y + first;
    const int* __restrict stronger = ranking.stronger + first;
    float nearest[kLanes];
    for (float& radius : nearest) radius = kLargestRadius;
    // The numbers of stronger ones do not fall.
    const int ofAll = stronger[0];
    const int ofAny = stronger[kLanes - 1];
    for (int j = 0; j < ofAll; ++j) {
      for (std::size_t lane = 0; lane < kLanes; ++lane) {
        const float dx = ownX[lane] - x[j];
        const float dy = ownY[lane] - y[j];
        const float squared = dx * dx + dy * dy;
        nearest[lane] = squared < nearest[lane] ? squared : nearest[lane];
      }
    }
    for (int j = ofAll; j < ofAny; ++j) {
      for (std::size_t lane = 0; lane < kLanes; ++lane) {
        const float dx = ownX[lane] - x[j];
        const float dy = ownY[lane] - y[j];
        const float squared = j < stronger[lane] ? dx * dx + dy * dy : kLargestRadius;
        nearest[lane] = squared < nearest[lane] ? squared : nearest[lane];
      }
    }
    for (std::size_t lane = 0; lane < kLanes; ++lane) radii[lane] = nearest[lane];
  }
};

std::int64_t extent(const std::vector<SPoint>& points, int SPoint::*coordinate) {
  const auto [low, high] = std::minmax_element(
      points.begin(), points.end(),
      [&](const SPoint& a, const SPoint& b) { return a.*coordinate < b.*coordinate; });
  return std::int64_t{*high.*coordinate} - *low.*coordinate;
}

/// For each candidate of the ranking how many are clearly stronger.
std::vector<int> countStronger(const std::vector<float>& ranked, float robust) {
  std::vector<int> stronger(ranked.size());
  std::size_t count = 0;
  for (std::size_t k = 0; k < ranked.size(); ++k) {
    while (count < ranked.size() && ranked[count] * robust > ranked[k]) ++count;
    stronger[k] = static_cast<int>(count);
  }
  return stronger;
}

}  // namespace

bool suitRadiusLanes(const std::vector<float>& values, const std::vector<SPoint>& points,
                     float robust) {
  return !points.empty() && values.size() >= points.size() && std::isfinite(robust) &&
         robust >= 0.0F &&
         std::all_of(values.begin(), values.end(),
                     [](float value) { return std::isfinite(value); }) &&
         extent(points, &SPoint::x) <= kLargestExtent &&
         extent(points, &SPoint::y) <= kLargestExtent;
}

std::vector<float> suppressionRadiiInLanes(const std::vector<float>& values,
                                           const std::vector<SPoint>& points, float robust) {
  const std::size_t count = points.size();
  const std::size_t padded = (count + kLanes - 1) / kLanes * kLanes;
  const std::vector<int> order = descendingOrder(
      std::vector<float>(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(count)));
  const auto at = [&](std::size_t rank) { return static_cast<std::size_t>(order[rank]); };

  std::vector<float> ranked(count);
  std::vector<float> x(padded);
  std::vector<float> y(padded);
  for (std::size_t rank = 0; rank < count; ++rank) {
    ranked[rank] = values[at(rank)];
    // Relative to one of them, what remains is exact in single precision.
    x[rank] = static_cast<float>(std::int64_t{points[at(rank)].x} - points[0].x);
    y[rank] = static_cast<float>(std::int64_t{points[at(rank)].y} - points[0].y);
  }
  std::vector<int> stronger = countStronger(ranked, robust);
  stronger.resize(padded, stronger.back());

  std::vector<float> ofRanks(padded);
  for (std::size_t first = 0; first < padded; first += kLanes) {
    Leveled<Radii>::call({x.data(), y.data(), stronger.data()}, first, ofRanks.data() + first);
  }
  std::vector<float> radii(count);
  for (std::size_t rank = 0; rank < count; ++rank) radii[at(rank)] = ofRanks[rank];
  return radii;
}

}  // namespace framequilt
