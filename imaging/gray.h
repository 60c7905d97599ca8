// SPDX-License-Identifier: Apache-2.0
/// \file
/// Colour to gray. Two rules, and which routine takes which is part of the results:
///
/// - integer rule: (299 R + 587 G + 114 B + 500) / 1000, that is, rounded half up;
/// - table rule: B1[B] + G1[G] + R1[R] in 12-bit fixed point, each term truncated by itself, so
///   that white gives 254.
///
/// Sources are packed rows of blue, green, red bytes. All routines return false, after the line
/// "rgb2gray ptr invailed", when a pointer that they check is null, and true otherwise; with fewer
/// than one row or column they write nothing. They keep no state and may run on several threads.
#pragma once

#include <cstddef>

#include "framequilt/export.h"

/// Entries i * 1224, i * 2404 and i * 467, each shifted right by 12. `initJointCpu` fills them.
extern FRAMEQUILT_EXPORT unsigned int R1[256], G1[256], B1[256];

/// Integer rule. `src` 3 * rows * cols bytes, `dst` rows * cols bytes.
FRAMEQUILT_EXPORT bool rgb2Gray(unsigned char* src, int rows, int cols, unsigned char* dst);

/// `rgb2Gray` for two images of one size. Only `src1` and `dst1` are checked for null.
FRAMEQUILT_EXPORT bool rgb2GrayTwo(unsigned char* src1, unsigned char* src2, int rows, int cols,
                                   unsigned char* dst1, unsigned char* dst2);

/// Table rule for 3 channels; for any other count the bytes themselves. `dst` holds rows * cols
/// whole numbers.
FRAMEQUILT_EXPORT bool rgb2GrayFloat(unsigned char* src, int rows, int cols, int channels,
                                     float* dst);

/// Mask of the pixels that are not black: 255.0 where the integer rule gives at least 1 (3
/// channels) or where the byte is not 0 (any other count), else 0.0.
FRAMEQUILT_EXPORT bool rgb2GrayFloat1(unsigned char* src, int rows, int cols, int channels,
                                      float* dst);

/// Table rule for two images of one size. With a channel count other than 3, pixel i takes byte
/// 3 * i of each source. Only `src1` and `dst1` are checked for null.
FRAMEQUILT_EXPORT bool rgb2GrayFloatTwo(unsigned char* src1, unsigned char* src2, int rows,
                                        int cols, int channels, float* dst1, float* dst2);

namespace framequilt {

/// Copies `pixels` pixels and converts them by the integer rule, both while they are in the cache.
/// None of the three may touch another.
void copyAndToGray(const unsigned char* bgr, std::size_t pixels, unsigned char* copy,
                   unsigned char* gray);

/// Fills `R1`, `G1` and `B1`.
void fillGrayTables();

}  // namespace framequilt
