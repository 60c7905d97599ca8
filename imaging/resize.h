// SPDX-License-Identifier: Apache-2.0
/// \file
/// Reduction of an interleaved 8-bit image by a whole number.
#pragma once

#include <cstddef>

#include "framequilt/export.h"

/// Reduces `src` (rows x cols pixels) by `scale`. For T = unsigned char.
///
/// - 1 copies, for any channel count.
/// - An odd factor samples with bilinear weights; output rows and columns are rows / scale and
///   cols / scale rounded half up. Weights of a whole factor are 0 and 1, so that the result is
///   the pixel at (scale * i, scale * j).
/// - An even factor takes, for output pixel (i, j), source pixel number (i * cols + j) << (scale /
///   2 modulo 32); output rows and columns are the truncated quotients. For 2 and 4 that is point
///   sampling; from 6 on the number grows by 2^(scale / 2) and leaves the image: this routine reads
///   there, the caller has to own that memory.
///
/// Rows of `dst` are packed at the output width. With channels other than 1 and 3 and scale not 1
/// nothing is written.
///
/// \return False, after the line "src is null || scale is 0", for a null pointer or scale 0.
template <class T>
FRAMEQUILT_EXPORT bool opencvInterLineARResize(T* src, int rows, int cols, int scale, int channels,
                                               T* dst);

extern template bool opencvInterLineARResize<unsigned char>(unsigned char*, int, int, int, int,
                                                            unsigned char*);

namespace framequilt {

/// `opencvInterLineARResize` for a frame of which only rows * cols pixels are there and a
/// destination of `dstCapacity` bytes: pixels whose source lies outside are not written, nor is
/// what exceeds the destination.
bool resizeWithinFrame(unsigned char* src, int rows, int cols, int scale, int channels,
                       unsigned char* dst, std::size_t dstCapacity);

}  // namespace framequilt
