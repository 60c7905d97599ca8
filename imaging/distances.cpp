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

void Distances::keepLastRow(int block) {
  float* const last = lastRow(block);
  if (filling_[size(block)] == Filling::kEmpty) {
    std::fill_n(last, image_.cols, 0.0F);
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
  for (int b = 0; b < blocks; ++b) keepLastRow(b);
  return true;
}

const float* Distances::finish(int block, float* map) {
  static constexpr float kZero = 0.0F;
  if (filling_[size(block)] == Filling::kEmpty) {
    below_ = chamfer::constantEdge(kZero);
    return nullptr;
  }
  chamfer::spreadDown(blockWith(map, block, above(block)), bits(block));
  chamfer::spreadUp(blockWith(map, block, below_));
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
  fromRight_.assign(size(cols) + 2 * (kLanes - 1), 0.0F);
  for (int c = 0; c < cols; ++c) fromRight_[size(kLanes - 1 + cols - 1 - c)] = distance(c, cols);
  rows_ = rows;
  cols_ = cols;
}

}  // namespace framequilt
