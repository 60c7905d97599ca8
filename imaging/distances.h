// SPDX-License-Identifier: Apache-2.0
/// \file
/// Distances of the fusion's pixels from what has no content, one block of rows at a time and in
/// the slanted order of chamfer.h. The values are those of `spreadDistances` (fusion.h).
#pragma once

#include <cstdint>
#include <vector>

#include "imaging/chamfer.h"
#include "imaging/content.h"

namespace framequilt {

/// Of any image. The way down goes over all blocks and keeps the last row of each; the way up makes
/// the map of a block once more and finishes it. So no map of the whole image is written and read
/// again, which would cost more than computing it twice.
class Distances {
 public:
  /// Looks at the pixels and spreads downwards. With `blankFrame` the outermost pixels count as
  /// empty. The image has to stay until the blocks are finished.
  /// \return Whether any pixel is empty. Where none is all distances are `chamfer::kFarthest`, and
  ///         no block is to be finished.
  bool spreadDown(const ImageView& image, bool blankFrame);

  /// Finishes blocks from the last to the first: fills `map` (`chamfer::blockFloats`) and returns
  /// it, or null where all distances are 0.
  const float* finish(int block, float* map);

 private:
  std::uint16_t* bits(int block);
  float* lastRow(int block);
  chamfer::Edge above(int block);
  chamfer::Block blockWith(float* map, int block, chamfer::Edge edge) const;
  Filling contentOf(int row, bool blankFrame);
  Filling look(int block, bool blankFrame);
  bool staysOnTheWayDown(int block);
  void keepLastRow(int block);

  ImageView image_ = {};
  std::vector<Filling> filling_;
  /// Whether the way down changes nothing in a block.
  std::vector<bool> settled_;
  std::vector<std::uint16_t> bits_;
  std::vector<float> lastRows_, firstRow_, map_;
  std::vector<unsigned char> content_;
  chamfer::Edge below_ = {};
};

/// Of a frame without empty pixels whose outermost pixels count as empty. They depend on nothing
/// but the place: straight ways to the nearest side are the shortest.
class FrameDistances {
 public:
  void begin(int rows, int cols);

  /// Of the 16 rows of a block, and of the columns t, t - 1, ..., t - 15 of step t. A pixel's
  /// distance is the smaller of the two of its lane.
  const float* ofRows(int block) const {
    return ofRow_.data() + std::ptrdiff_t{block} * chamfer::kLanes;
  }
  const float* ofColumns(int step) const {
    return fromRight_.data() + (chamfer::kLanes - 1 + cols_ - 1 - step);
  }

 private:
  int rows_ = 0, cols_ = 0;
  std::vector<float> ofRow_, fromRight_;
};

}  // namespace framequilt
