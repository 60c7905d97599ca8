// SPDX-License-Identifier: Apache-2.0
#include "imaging/chamfer.h"

#include "imaging/cpu_level.h"
#include "imaging/front.h"

namespace framequilt::chamfer {
namespace {

/// Cost of a way that does not exist.
constexpr float kNoWay = 1.0e30F;

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
class Content {
  using F = Front<Bytes>;

 public:
  [[gnu::always_inline]] inline Content() {
    for (int p = 0; p < F::kParts; ++p) {
      for (int k = 0; k < F::kWidth; ++k) bitOfLane_.part[p][k] = 1 << (p * F::kWidth + k);
    }
  }

  [[gnu::always_inline]] inline void expand(std::uint16_t bits, F& to) const {
    const typename F::Ints farthest = (typename F::Ints)(typename F::Floats{} + kFarthest);
    const typename F::Ints all = typename F::Ints{} + static_cast<int>(bits);
    for (int p = 0; p < F::kParts; ++p) {
      to.part[p] = ((all & bitOfLane_.part[p]) != 0) & farthest;
    }
  }

 private:
  F bitOfLane_ = {};
};

/// The front on its way over a block, whichever way it goes.
template <int Bytes>
class Wave {
  using F = Front<Bytes>;

 public:
  /// `fixedRow` of the image is not updated: nothing leads to it.
  [[gnu::always_inline]] inline Wave(const Block& block, int fixedRow) : cols_(block.cols) {
    float axis[kLanes];
    float diagonal[kLanes];
    for (int k = 0; k < kLanes; ++k) {
      const bool fixed = block.firstRow + k == fixedRow;
      axis[k] = fixed ? kNoWay : kAxisStep;
      diagonal[k] = fixed ? kNoWay : kDiagonalStep;
    }
    F::load(axis, axis_);
    F::load(diagonal, diagonal_);
    F::fill(kNoWay, state);
    F::fill(kNoWay, beside_);
  }

  /// From the values `here` before step t, and the state of the step before shifted by a lane:
  /// what lies beside the lanes on the other axis.
  [[gnu::always_inline]] inline void advance(int t, const F& here, const F& shifted,
                                             bool touchesSides) {
    F straight = {}, slanted = {}, next = {};
    F::smaller(state, shifted, straight);
    F::add(straight, axis_, straight);
    F::add(beside_, diagonal_, slanted);
    F::smaller(here, slanted, next);
    F::smaller(straight, next, next);
    if (touchesSides) {
      F inner = {};
      Inner<Bytes>::lanes(t, cols_, inner);
      F::choose(inner, next, here, next);
    }
    beside_ = shifted;
    state = next;
  }

  F state = {};  ///< The lanes after the last step.

 private:
  int cols_;
  F axis_ = {}, diagonal_ = {};
  F beside_ = {};  // What lay beside them at the last step, diagonal to them now.
};

template <int Bytes>
struct SpreadDown {
  using F = Front<Bytes>;

  FRAMEQUILT_ROUTINE void run(const Block& block, const std::uint16_t* content) {
    const Content<Bytes> contents;
    Wave<Bytes> wave(block, 0);
    const auto step = [&](int t, float edge, bool touchesSides) __attribute__((always_inline)) {
      F here = {}, up = {};
      contents.expand(content[t], here);
      Shift<Bytes>::up(wave.state, edge, up);
      wave.advance(t, here, up, touchesSides);
      F::store(wave.state, block.map + static_cast<std::size_t>(t) * kLanes);
    };
    const int cols = block.cols;
    const int steps = stepsOf(cols);
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

/// From the map of the way down, or from `content` where that is given.
template <int Bytes>
struct SpreadUp {
  using F = Front<Bytes>;

  template <bool kFromContent>
  FRAMEQUILT_ROUTINE void spread(const Block& block, const std::uint16_t* content) {
    const Content<Bytes> contents;
    Wave<Bytes> wave(block, block.rows - 1);
    const auto step = [&](int t, float edge, bool touchesSides) __attribute__((always_inline)) {
      float* const place = block.map + static_cast<std::size_t>(t) * kLanes;
      F here = {}, down = {};
      if (kFromContent) {
        contents.expand(content[t], here);
      } else {
        F::load(place, here);
      }
      Shift<Bytes>::down(wave.state, edge, down);
      wave.advance(t, here, down, touchesSides);
      F::store(wave.state, place);
    };
    // The column of the last lane.
    const int cols = block.cols;
    const Edge edge = block.edge;
    const auto edgeAt = [&](int t) __attribute__((always_inline)) {
      const int column = t - (kLanes - 1);
      return column >= 0 ? edge.first[column * edge.stride] : kNoWay;
    };
    int t = stepsOf(cols) - 1;
    for (; t > cols - 2 || (t >= 0 && t < kLanes); --t) step(t, edgeAt(t), true);
    for (; t >= kLanes; --t) step(t, edgeAt(t), false);
    for (; t >= 0; --t) step(t, edgeAt(t), true);
  }

  FRAMEQUILT_ROUTINE void run(const Block& block, const std::uint16_t* content) {
    content != nullptr ? spread<true>(block, content) : spread<false>(block, nullptr);
  }
};

}  // namespace

Edge noEdge() { return constantEdge(kNoWay); }

void spreadDown(const Block& block, const std::uint16_t* content) {
  LeveledByWidth<SpreadDown>::call(block, content);
}

void spreadUp(const Block& block) { LeveledByWidth<SpreadUp>::call(block, nullptr); }

void spreadUpSettled(const Block& block, const std::uint16_t* content) {
  LeveledByWidth<SpreadUp>::call(block, content);
}

}  // namespace framequilt::chamfer
