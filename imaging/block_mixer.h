// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <vector>

#include "imaging/feather.h"

namespace framequilt {

/// Where the weights of a block come from, in its slanted order.
struct BlockDistances {
  const float* ground;  ///< Null: the farthest everywhere.
  const float* frame;   ///< Null: by rows and columns.
  const float* frameRows;
  const float* frameColumns;  ///< Of step 0.
};

/// Weighs and mixes blocks of rows; what one thread works in.
class BlockMixer {
 public:
  /// For images of so many columns and channels, 1 or 3.
  void prepare(int cols, int channels);

  void weigh(const BlockDistances& distances);
  /// Nothing of the ground.
  void weighNothing();

  /// With the weights of the block.
  void mix(const Feathering& job, int block);

 private:
  /// Of column 0 of a row of the block.
  unsigned char* rowOfWeights(int row);

  int cols_ = 0;
  int channels_ = 0;
  int tiles_ = 0;
  std::size_t stride_ = 0;
  std::vector<unsigned char> slanted_, straight_;
};

}  // namespace framequilt
