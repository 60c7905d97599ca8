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
  /// For images of so many columns.
  void prepare(int cols);

  void weigh(const BlockDistances& distances);
  /// Nothing of the ground.
  void weighNothing();

  /// With the weights of the block.
  void mix(const Feathering& job, int block) const;

 private:
  int cols_ = 0;
  int tiles_ = 0;
  std::size_t stride_ = 0;
  std::vector<unsigned char> slanted_, straight_;
};

}  // namespace framequilt
