// SPDX-License-Identifier: Apache-2.0
/// \file
/// The fusion of a frame with the ground it lies on, many times faster than its definition in
/// fusion.cpp and to the same bytes: one block of rows after the other, from the last to the first,
/// with everything that a block needs in the cache.
#pragma once

#include <cstddef>

namespace framequilt {

struct Feathering {
  unsigned char* ground;  ///< First pixel under the frame. Receives the result.
  std::ptrdiff_t stride;  ///< Bytes from one row of the ground to the next.
  unsigned char* frame;   ///< rows x cols, packed. Receives the result.
  unsigned char* copy;    ///< Receives the result, packed; may be null.
  int rows, cols, channels;
  /// The frame, where `frame` only receives the result; packed.
  const unsigned char* original = nullptr;
};

/// Whether `feather` can do it: 1 or 3 channels, at least 2 x 3 pixels, less than 2^31 bytes,
/// images that do not touch each other.
bool canFeather(const Feathering& job) noexcept;

/// Mixes `ground` and `frame` as `twoImageFusion` does. One call at a time.
/// \throws std::bad_alloc; nothing is written then.
void feather(const Feathering& job);

/// Gives back the memory that `feather` works in, which stays from call to call otherwise.
void releaseFeather() noexcept;

}  // namespace framequilt
