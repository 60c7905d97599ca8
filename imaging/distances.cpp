// SPDX-License-Identifier: Apache-2.0
#include "imaging/distances.h"

#include <algorithm>
#include <cstddef>

#include "imaging/cpu_level.h"

namespace framequilt {
namespace {

using chamfer::kLanes;

/// Adds a row to the content bits of its block, slanted.
struct AddRow {
  FRAMEQUILT_ROUTINE void run(const unsigned char* __restrict content, int count, int lane,
                              std::uint16_t* __restrict bits) {
    for (int i = 0; i < count; ++i) {
      bits[i + lane] = static_cast<std::uint16_t>(bits[i + lane] | content[i] << lane);
    }
  }
};

/// Bits of pixels with content that have a neighbour without, on the way down. `before` and
/// `twoBefore` are the contents of the row one step and two steps before; bits 0 of `above` and
/// `aboveBefore` are those of the pixels above row 0 of the block.
inline std::uint16_t exposed(unsigned here, unsigned before, unsigned twoBefore, unsigned above,
                             unsigned aboveBefore) {
  const unsigned up = (before << 1U) | above;
  const unsigned upLeft = (twoBefore << 1U) | aboveBefore;
  return static_cast<std::uint16_t>(here & ~(before & up & upLeft));
}

/// Whether any is exposed among the steps whose lanes all lie inside the image. Row 15 of the block
/// above is 15 steps ahead, in the highest bit.
struct AnyExposed {
  FRAMEQUILT_ROUTINE bool run(const std::uint16_t* content, const std::uint16_t* above, int begin,
                              int end) {
    unsigned any = 0;
    for (int t = begin; t < end; ++t) {
      any |= exposed(content[t], content[t - 1], content[t - 2],
                     static_cast<unsigned>(above[t + kLanes - 1]) >> 15U,
                     static_cast<unsigned>(above[t + kLanes - 2]) >> 15U);
    }
    return any != 0;
  }
};

std::size_t size(int count) { return static_cast<std::size_t>(count); }

}  // namespace

std::uint16_t* Distances::bits(int block) {
  return bits_.data() + size(chamfer::stepsOf(image_.cols)) * size(block);
}

float* Distances::lastRow(int block) { return lastRows_.data() + size(image_.cols) * size(block); }

chamfer::Edge Distances::above(int block) {
  return block == 0 ? chamfer::noEdge() : chamfer::Edge{lastRow(block - 1), 1};
}

chamfer::Block Distances::blockWith(float* map, int block, chamfer::Edge edge) const {
  return {map, edge, image_.rows, image_.cols, block * kLanes};
}

Filling Distances::contentOf(int row, bool blankFrame) {
  if (blankFrame && (row == 0 || row == image_.rows - 1)) return Filling::kEmpty;
  const Filling filling = contentOfRow(image_, row, content_);
  if (!blankFrame || filling == Filling::kEmpty) return filling;
  if (filling == Filling::kFull) std::fill(content_.begin(), content_.end(), 1);
  content_.front() = 0;
  content_.back() = 0;
  return Filling::kMixed;
}

/// Fills the content bits of a block.
Filling Distances::look(int block, bool blankFrame) {
  std::uint16_t* const to = bits(block);
  const int steps = chamfer::stepsOf(image_.cols);
  const int rows = std::min(kLanes, image_.rows - block * kLanes);
  int emptyRows = 0;
  unsigned fullRows = 0;
  std::fill_n(to, steps, std::uint16_t{0});
  for (int k = 0; k < rows; ++k) {
    const Filling row = contentOf(block * kLanes + k, blankFrame);
    if (row == Filling::kEmpty) ++emptyRows;
    if (row == Filling::kFull) fullRows |= 1U << static_cast<unsigned>(k);
    if (row == Filling::kMixed) Leveled<AddRow>::call(content_.data(), image_.cols, k, to);
  }
  if (emptyRows == rows) return Filling::kEmpty;
  for (int t = 0; t < steps; ++t) to[t] = static_cast<std::uint16_t>(to[t] | fullRows);
  return fullRows == (1U << static_cast<unsigned>(rows)) - 1U ? Filling::kFull : Filling::kMixed;
}

/// True where each pixel with content has such neighbours to the left, above and above left, in
/// this block and in those above it: nothing spreads to it then.
bool Distances::staysOnTheWayDown(int block) {
  if (block > 0 && !settled_[size(block - 1)]) return false;
  const std::uint16_t* const content = bits(block);
  const std::uint16_t* const above = block > 0 ? bits(block - 1) : nullptr;
  const int cols = image_.cols;
  const auto at = [](const std::uint16_t* row, int t) { return t < 0 ? 0U : unsigned{row[t]}; };
  // The first row of the image, and its first and last column, are not updated.
  const auto exposedAt = [&](int t) {
    unsigned inner = block > 0 ? 0xFFFFU : 0xFFFEU;
    if (t <= kLanes) inner &= (1U << static_cast<unsigned>(std::max(t, 0))) - 1U;
    if (t > cols - 2) inner &= 0xFFFFU << static_cast<unsigned>(std::min(t - (cols - 2), kLanes));
    const auto aboveAt = [&](int column) {
      if (above == nullptr) return 1U;
      return column < 0 || column >= cols ? 0U : unsigned{above[column + kLanes - 1]} >> 15U;
    };
    return inner & exposed(at(content, t), at(content, t - 1), at(content, t - 2), aboveAt(t),
                           aboveAt(t - 1));
  };
  const int steps = chamfer::stepsOf(cols);
  const int begin = above == nullptr ? steps : std::min(kLanes, steps);
  const int end = std::max(begin, cols - 1);
  for (int t = 0; t < begin; ++t) {
    if (exposedAt(t) != 0) return false;
  }
  for (int t = end; t < steps; ++t) {
    if (exposedAt(t) != 0) return false;
  }
  return begin >= end || !Leveled<AnyExposed>::call(content, above, begin, end);
}

void Distances::keepLastRow(int block) {
  float* const last = lastRow(block);
  if (filling_[size(block)] == Filling::kEmpty) {
    std::fill_n(last, image_.cols, 0.0F);
    return;
  }
  if (settled_[size(block)]) {
    const std::uint16_t* const content = bits(block) + kLanes - 1;
    for (int c = 0; c < image_.cols; ++c) last[c] = content[c] >> 15 != 0 ? chamfer::kFarthest : 0;
    return;
  }
  chamfer::spreadDown(blockWith(map_.data(), block, above(block)), bits(block));
  const chamfer::Edge row = chamfer::lastRowOf(map_.data());
  for (int c = 0; c < image_.cols; ++c) last[c] = row.first[c * row.stride];
}

bool Distances::spreadDown(const ImageView& image, bool blankFrame) {
  image_ = image;
  const int blocks = chamfer::blocksOf(image.rows);
  filling_.assign(size(blocks), Filling::kEmpty);
  bits_.resize(size(chamfer::stepsOf(image.cols)) * size(blocks));
  lastRows_.resize(size(image.cols) * size(blocks));
  firstRow_.resize(size(image.cols));
  map_.resize(chamfer::blockFloats(image.cols));
  content_.resize(size(image.cols));
  below_ = chamfer::noEdge();

  for (int b = 0; b < blocks; ++b) filling_[size(b)] = look(b, blankFrame);
  if (std::all_of(filling_.begin(), filling_.end(),
                  [](Filling filling) { return filling == Filling::kFull; })) {
    return false;
  }
  settled_.assign(size(blocks), false);
  for (int b = 0; b < blocks; ++b) {
    settled_[size(b)] = staysOnTheWayDown(b);
    keepLastRow(b);
  }
  return true;
}

const float* Distances::finish(int block, float* map) {
  static constexpr float kZero = 0.0F;
  if (filling_[size(block)] == Filling::kEmpty) {
    below_ = chamfer::constantEdge(kZero);
    return nullptr;
  }
  if (settled_[size(block)]) {
    chamfer::spreadUpSettled(blockWith(map, block, below_), bits(block));
  } else {
    chamfer::spreadDown(blockWith(map, block, above(block)), bits(block));
    chamfer::spreadUp(blockWith(map, block, below_));
  }
  const chamfer::Edge first = chamfer::firstRowOf(map);
  for (int c = 0; c < image_.cols; ++c) firstRow_[size(c)] = first.first[c * first.stride];
  below_ = {firstRow_.data(), 1};
  return map;
}

void FrameDistances::begin(int rows, int cols) {
  if (rows == rows_ && cols == cols_) return;
  rows_ = 0;
  std::vector<float> atDepth(size(std::max(rows, cols)) / 2 + 1);
  for (std::size_t i = 1; i < atDepth.size(); ++i) {
    atDepth[i] = std::min(chamfer::kFarthest, atDepth[i - 1] + chamfer::kAxisStep);
  }
  const auto distance = [&](int i, int count) { return atDepth[size(std::min(i, count - 1 - i))]; };
  ofRow_.assign(size(chamfer::blocksOf(rows)) * kLanes, 0.0F);
  for (int r = 0; r < rows; ++r) ofRow_[size(r)] = distance(r, rows);
  // From right to left, with room for the lanes that lie outside.
  fromRight_.assign(size(cols + 2 * (kLanes - 1)), 0.0F);
  for (int c = 0; c < cols; ++c) fromRight_[size(kLanes - 1 + cols - 1 - c)] = distance(c, cols);
  rows_ = rows;
  cols_ = cols;
}

}  // namespace framequilt
