// SPDX-License-Identifier: Apache-2.0
#include "imaging/chamfer.h"

#include "imaging/cpu_level.h"

namespace framequilt::chamfer {
namespace {

/// Cost of a way that does not exist.
constexpr float kNoWay = 1.0e30F;

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

/// Each lane takes its lower neighbour's value, lane 0 takes `first`.
template <int Bytes>
struct Shift;

template <>
struct Shift<64> {
  using F = Front<64>;
  FRAMEQUILT_ROUTINE void up(const F& from, float first, F& to) {
    const F::Ints edge = (F::Ints)(F::Floats{} + first);
    to.part[0] = __builtin_shufflevector(edge, from.part[0], 15, 16, 17, 18, 19, 20, 21, 22, 23, 24,
                                         25, 26, 27, 28, 29, 30);
  }
  FRAMEQUILT_ROUTINE void down(const F& from, float last, F& to) {
    const F::Ints edge = (F::Ints)(F::Floats{} + last);
    to.part[0] = __builtin_shufflevector(from.part[0], edge, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12,
                                         13, 14, 15, 16);
  }
};

template <>
struct Shift<32> {
  using F = Front<32>;
  FRAMEQUILT_ROUTINE void up(const F& from, float first, F& to) {
    const F::Ints edge = (F::Ints)(F::Floats{} + first);
    to.part[1] = __builtin_shufflevector(from.part[0], from.part[1], 7, 8, 9, 10, 11, 12, 13, 14);
    to.part[0] = __builtin_shufflevector(edge, from.part[0], 7, 8, 9, 10, 11, 12, 13, 14);
  }
  FRAMEQUILT_ROUTINE void down(const F& from, float last, F& to) {
    const F::Ints edge = (F::Ints)(F::Floats{} + last);
    to.part[0] = __builtin_shufflevector(from.part[0], from.part[1], 1, 2, 3, 4, 5, 6, 7, 8);
    to.part[1] = __builtin_shufflevector(from.part[1], edge, 1, 2, 3, 4, 5, 6, 7, 8);
  }
};

template <>
struct Shift<16> {
  using F = Front<16>;
  FRAMEQUILT_ROUTINE void up(const F& from, float first, F& to) {
    F::Ints before = (F::Ints)(F::Floats{} + first);
    for (int p = 0; p < F::kParts; ++p) {
      const F::Ints here = from.part[p];
      to.part[p] = __builtin_shufflevector(before, here, 3, 4, 5, 6);
      before = here;
    }
  }
  FRAMEQUILT_ROUTINE void down(const F& from, float last, F& to) {
    F::Ints behind = (F::Ints)(F::Floats{} + last);
    for (int p = F::kParts - 1; p >= 0; --p) {
      const F::Ints here = from.part[p];
      to.part[p] = __builtin_shufflevector(here, behind, 1, 2, 3, 4);
      behind = here;
    }
  }
};

/// What a lane's step along an axis costs: nothing leads to rows that are not updated.
void axisCosts(int firstRow, int fixedRow, float (&costs)[kLanes]) {
  for (int k = 0; k < kLanes; ++k) costs[k] = firstRow + k == fixedRow ? kNoWay : kAxisStep;
}
void diagonalCosts(int firstRow, int fixedRow, float (&costs)[kLanes]) {
  for (int k = 0; k < kLanes; ++k) costs[k] = firstRow + k == fixedRow ? kNoWay : kDiagonalStep;
}

/// The first and last column are not updated: of a step that touches them, or lies beyond them,
/// only the lanes in between.
template <int Bytes>
struct Inner {
  using F = Front<Bytes>;
  FRAMEQUILT_ROUTINE void lanes(int step, int cols, F& mask) {
    for (int p = 0; p < F::kParts; ++p) {
      for (int k = 0; k < F::kWidth; ++k) {
        const int column = step - (p * F::kWidth + k);
        mask.part[p][k] = column >= 1 && column <= cols - 2 ? -1 : 0;
      }
    }
  }
};

/// Content bits to distances before any spreading.
template <int Bytes>
struct Content {
  using F = Front<Bytes>;
  FRAMEQUILT_ROUTINE void expand(std::uint16_t bits, const F& bitOfLane, F& to) {
    const typename F::Ints farthest = (typename F::Ints)(typename F::Floats{} + kFarthest);
    const typename F::Ints all = typename F::Ints{} + static_cast<int>(bits);
    for (int p = 0; p < F::kParts; ++p) {
      to.part[p] = ((all & bitOfLane.part[p]) != 0) & farthest;
    }
  }
};

template <int Bytes>
struct SpreadDown {
  using F = Front<Bytes>;

  FRAMEQUILT_ROUTINE void run(const Block& block, const std::uint16_t* content) {
    float costs[kLanes];
    F axis = {}, diagonal = {}, bitOfLane = {};
    axisCosts(block.firstRow, 0, costs);
    F::load(costs, axis);
    diagonalCosts(block.firstRow, 0, costs);
    F::load(costs, diagonal);
    for (int p = 0; p < F::kParts; ++p) {
      for (int k = 0; k < F::kWidth; ++k) bitOfLane.part[p][k] = 1 << (p * F::kWidth + k);
    }
    const int cols = block.cols;
    const int steps = stepsOf(cols);
    F state = {}, above = {};  // Of the step before: the lanes, and what lay above them.
    F::fill(kNoWay, state);
    F::fill(kNoWay, above);
    const auto step = [&](int t, float edge, bool touchesSides) __attribute__((always_inline)) {
      F here = {}, up = {}, straight = {}, slanted = {}, next = {};
      Content<Bytes>::expand(content[t], bitOfLane, here);
      Shift<Bytes>::up(state, edge, up);
      F::smaller(state, up, straight);
      F::add(straight, axis, straight);
      F::add(above, diagonal, slanted);
      F::smaller(here, slanted, next);
      F::smaller(straight, next, next);
      if (touchesSides) {
        F inner = {};
        Inner<Bytes>::lanes(t, cols, inner);
        F::choose(inner, next, here, next);
      }
      above = up;
      state = next;
      F::store(state, block.map + static_cast<std::size_t>(t) * kLanes);
    };
    const Edge edge = block.edge;
    const auto edgeAt = [&](int t) __attribute__((always_inline)) {
      return t < cols ? edge.first[t * edge.stride] : kNoWay;
    };
    const int first = cols - 1 < kLanes ? steps : kLanes;
    int t = 0;
    for (; t < first; ++t) step(t, edgeAt(t), true);
    for (; t < cols - 1; ++t) step(t, edge.first[t * edge.stride], false);
    for (; t < steps; ++t) step(t, edgeAt(t), true);
  }
};

template <int Bytes>
struct Fill {
  using F = Front<Bytes>;

  FRAMEQUILT_ROUTINE void run(const Block& block, const std::uint16_t* content) {
    F bitOfLane = {};
    for (int p = 0; p < F::kParts; ++p) {
      for (int k = 0; k < F::kWidth; ++k) bitOfLane.part[p][k] = 1 << (p * F::kWidth + k);
    }
    const int steps = stepsOf(block.cols);
    for (int t = 0; t < steps; ++t) {
      F here = {};
      Content<Bytes>::expand(content[t], bitOfLane, here);
      F::store(here, block.map + static_cast<std::size_t>(t) * kLanes);
    }
  }
};

template <int Bytes>
struct SpreadUp {
  using F = Front<Bytes>;

  FRAMEQUILT_ROUTINE void run(const Block& block) {
    float costs[kLanes];
    F axis = {}, diagonal = {};
    axisCosts(block.firstRow, block.rows - 1, costs);
    F::load(costs, axis);
    diagonalCosts(block.firstRow, block.rows - 1, costs);
    F::load(costs, diagonal);
    const int cols = block.cols;
    const int steps = stepsOf(cols);
    F state = {}, below = {};
    F::fill(kNoWay, state);
    F::fill(kNoWay, below);
    const auto step = [&](int t, float edge, bool touchesSides) __attribute__((always_inline)) {
      float* const place = block.map + static_cast<std::size_t>(t) * kLanes;
      F here = {}, down = {}, straight = {}, slanted = {}, next = {};
      F::load(place, here);
      Shift<Bytes>::down(state, edge, down);
      F::smaller(state, down, straight);
      F::add(straight, axis, straight);
      F::add(below, diagonal, slanted);
      F::smaller(here, slanted, next);
      F::smaller(straight, next, next);
      if (touchesSides) {
        F inner = {};
        Inner<Bytes>::lanes(t, cols, inner);
        F::choose(inner, next, here, next);
      }
      below = down;
      state = next;
      F::store(state, place);
    };
    // The column of the last lane.
    const Edge edge = block.edge;
    const auto edgeAt = [&](int t) __attribute__((always_inline)) {
      const int column = t - (kLanes - 1);
      return column >= 0 ? edge.first[column * edge.stride] : kNoWay;
    };
    int t = steps - 1;
    for (; t > cols - 2 || (t >= 0 && t < kLanes); --t) step(t, edgeAt(t), true);
    for (; t >= kLanes; --t) step(t, edgeAt(t), false);
    for (; t >= 0; --t) step(t, edgeAt(t), true);
  }
};

}  // namespace

Edge noEdge() { return constantEdge(kNoWay); }

void spreadDown(const Block& block, const std::uint16_t* content) {
  LeveledByWidth<SpreadDown>::call(block, content);
}

void fill(const Block& block, const std::uint16_t* content) {
  LeveledByWidth<Fill>::call(block, content);
}

void spreadUp(const Block& block) { LeveledByWidth<SpreadUp>::call(block); }

}  // namespace framequilt::chamfer
