// SPDX-License-Identifier: Apache-2.0
#include "features/consensus_votes.h"

#include "imaging/cpu_level.h"
#include "imaging/pixel_math.h"

namespace framequilt {
namespace {

/// Coordinates of the pairs, each kind on its own.
struct Coordinates {
  const float *ax, *ay, *bx, *by;
  std::size_t pairs;
};

/// Pairs that the offset (dx, dy) explains.
struct Votes {
  FRAMEQUILT_ROUTINE int run(Coordinates points, float dx, float dy) {
    const float* __restrict ax = points.ax;
    const float* __restrict ay = points.ay;
    const float* __restrict bx = points.bx;
    const float* __restrict by = points.by;
    int votes = 0;
    for (std::size_t k = 0; k < points.pairs; ++k) {
      const float ex = bx[k] + dx - ax[k];
      const float ey = by[k] + dy - ay[k];
      votes += ex * ex + ey * ey < kSquaredTolerance ? 1 : 0;
    }
    return votes;
  }
};

}  // namespace

Winner mostVotedPair(const std::vector<SPoint>& pointsA, const std::vector<SPoint>& pointsB) {
  const std::size_t pairs = pointsA.size();
  std::vector<float> plane(4 * pairs);
  float* const ax = plane.data();
  float* const ay = ax + pairs;
  float* const bx = ay + pairs;
  float* const by = bx + pairs;
  for (std::size_t k = 0; k < pairs; ++k) {
    ax[k] = static_cast<float>(pointsA[k].x);
    ay[k] = static_cast<float>(pointsA[k].y);
    bx[k] = static_cast<float>(pointsB[k].x);
    by[k] = static_cast<float>(pointsB[k].y);
  }

  Winner winner = {0, 0};
  for (std::size_t h = 0; h < pairs; ++h) {
    const auto dx = static_cast<float>(difference32(pointsA[h].x, pointsB[h].x));
    const auto dy = static_cast<float>(difference32(pointsA[h].y, pointsB[h].y));
    const int votes = Leveled<Votes>::call({ax, ay, bx, by, pairs}, dx, dy);
    if (votes > winner.votes) winner = {h, votes};
  }
  return winner;
}

}  // namespace framequilt
