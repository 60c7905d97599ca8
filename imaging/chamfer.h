// SPDX-License-Identifier: Apache-2.0
/// \file
/// The chamfer distances of the fusion in blocks of rows that advance together.
///
/// A pixel's distance depends on its left, upper and upper-left neighbours, so that a row cannot be
/// spread all at once. A block of 16 rows can: row k of a block is at column t - k while row 0 is
/// at column t, and its neighbours were finished one and two steps before. So step t of a block
/// holds 16 distances on a slanted line, and the map of a block is the sequence of its steps.
/// Values are those of `spreadDistances` (fusion.h), bit for bit: every one is a minimum of the
/// same sums.
#pragma once

#include <cstddef>
#include <cstdint>

namespace framequilt::chamfer {

/// Rows of a block.
inline constexpr int kLanes = 16;

/// Cost of a step along an axis and of a diagonal one.
inline constexpr float kAxisStep = 0.2F;
inline constexpr float kDiagonalStep = 0.3F;
/// Distance of a pixel with content that nothing empty is near to.
inline constexpr float kFarthest = 255.0F;

constexpr int stepsOf(int cols) { return cols + kLanes - 1; }
constexpr int blocksOf(int rows) { return (rows + kLanes - 1) / kLanes; }
/// Floats of the map of a block.
constexpr std::size_t blockFloats(int cols) {
  return static_cast<std::size_t>(stepsOf(cols)) * kLanes;
}

/// The row beside a block that was spread before it: the value at column c is first[c * stride].
struct Edge {
  const float* first;
  std::ptrdiff_t stride;
};

/// There is none: nothing comes from there.
Edge noEdge();
/// The same value all along; it has to live as long.
inline Edge constantEdge(const float& value) { return {&value, 0}; }
inline Edge lastRowOf(const float* map) {
  return {map + (std::ptrdiff_t{kLanes} * kLanes - 1), kLanes};
}
inline Edge firstRowOf(const float* map) { return {map, kLanes}; }

/// A block of rows.
struct Block {
  float* map;  ///< `blockFloats(cols)`.
  Edge edge;   ///< The row above it on the way down, below it on the way up.
  int rows;    ///< Of the image.
  int cols;    ///< At least 3.
  int firstRow;
};

/// Bit k of `content[t]`: the pixel of row k at step t has content. Steps beyond a row's columns
/// may hold anything. Fills the map on the way down: left, upper and upper-left neighbours.
void spreadDown(const Block& block, const std::uint16_t* content);

/// Updates the map on the way up: right, lower and lower-right neighbours.
void spreadUp(const Block& block);

/// The same for a block that the way down does not change, where every pixel with content has three
/// such neighbours: the map is filled from `content` on the way.
void spreadUpSettled(const Block& block, const std::uint16_t* content);

}  // namespace framequilt::chamfer
