// SPDX-License-Identifier: Apache-2.0
#include "features/consensus.h"

#include <cmath>
#include <cstddef>
#include <utility>

#include "features/consensus_votes.h"
#include "features/plain.h"
#include "imaging/pixel_math.h"
#include "interface/report.h"

namespace {

/// Euclidean residual, in pixels, from which a pair no longer agrees.
constexpr float kTolerance = 4.0F;

bool refuseEmpty() {
  framequilt::report("ransacMatchSPointArrayFun size 0");
  return false;
}

struct Offset {
  float dx, dy;

  Offset(SPoint a, SPoint b)
      : dx(static_cast<float>(framequilt::difference32(a.x, b.x))),
        dy(static_cast<float>(framequilt::difference32(a.y, b.y))) {}

  bool explains(SPoint a, SPoint b) const {
    const float ex = static_cast<float>(b.x) + dx - static_cast<float>(a.x);
    const float ey = static_cast<float>(b.y) + dy - static_cast<float>(a.y);
    return kTolerance > std::sqrt(ex * ex + ey * ey);
  }
};

}  // namespace

bool framequilt::plain::agreeOnOffset(const std::vector<SPoint>& pointsA,
                                      const std::vector<SPoint>& pointsB,
                                      std::vector<SPoint>& inliersA, std::vector<SPoint>& inliersB,
                                      float& dx, float& dy) {
  if (pointsA.empty() || pointsB.empty()) return refuseEmpty();

  std::size_t best = 0;
  std::vector<std::size_t> bestList;
  std::vector<std::size_t> list;
  for (std::size_t h = 0; h < pointsA.size(); ++h) {
    if (h >= pointsB.size()) return refuseEmpty();
    const Offset offset(pointsA[h], pointsB[h]);
    dx = offset.dx;
    dy = offset.dy;
    list.clear();
    for (std::size_t k = 0; k < pointsA.size(); ++k) {
      if (offset.explains(pointsA[k], pointsB.at(k))) list.push_back(k);
    }
    if (list.size() > bestList.size()) {
      best = h;
      std::swap(bestList, list);
    }
  }

  for (const std::size_t k : bestList) {
    inliersA.push_back(pointsA[k]);
    inliersB.push_back(pointsB[k]);
  }
  // Coordinates beyond 2^24 can leave a pair outside its own tolerance: the last offset stays then.
  if (!bestList.empty()) {
    const Offset winner(pointsA[best], pointsB[best]);
    dx = winner.dx;
    dy = winner.dy;
  }
  return true;
}

bool ransacMatchSPointArrayFun(std::vector<SPoint> pointsA, std::vector<SPoint> pointsB,
                               std::vector<SPoint>& inliersA, std::vector<SPoint>& inliersB,
                               float& dx, float& dy) {
  if (pointsA.empty() || pointsB.size() < pointsA.size()) {
    return framequilt::plain::agreeOnOffset(pointsA, pointsB, inliersA, inliersB, dx, dy);
  }

  const framequilt::Winner winner = framequilt::mostVotedPair(pointsA, pointsB);
  // The last offset stays when none has a vote; it explains no pair then.
  const std::size_t chosen = winner.votes > 0 ? winner.pair : pointsA.size() - 1;
  const Offset offset(pointsA[chosen], pointsB[chosen]);
  dx = offset.dx;
  dy = offset.dy;
  for (std::size_t k = 0; k < pointsA.size(); ++k) {
    if (!offset.explains(pointsA[k], pointsB[k])) continue;
    inliersA.push_back(pointsA[k]);
    inliersB.push_back(pointsB[k]);
  }
  return true;
}
