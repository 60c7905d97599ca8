// SPDX-License-Identifier: Apache-2.0
/// \file
/// Separable filtering of single-channel images: pad into a larger buffer, filter in there, take
/// the inner part back out.
///
/// Row names the pass that runs down each column (vertical), Col the pass that runs along each
/// row (horizontal); smoothing is vertical first. Sizes are those of the buffer that is read:
/// the padded size once an image has been padded. Rows are packed.
///
/// All members return false, after the line "ptr is NULL", when a pointer that they check is null
/// (the source and the last destination) and true otherwise, also when the sizes leave nothing to
/// do. They keep no state and may run on several threads on different buffers. Source and
/// destination must not overlap. Members that are templates exist for the element types named.
#pragma once

#include "framequilt/export.h"

/// Pads by `border` on all sides, mirroring without repeating the edge pixel (reflect-101), and
/// writes the same image of (rows + 2 border) x (cols + 2 border) to both destinations. An image
/// no larger than the border is mirrored back and forth. `dstA` may be null, is not checked.
/// For unsigned char and float.
template <class T>
FRAMEQUILT_EXPORT bool opencvcopyFilter2DBorderCh1(T* src, int rows, int cols, int border, T* dstA,
                                                   T* dstB);

/// Vertical pass with `taps` weights: for rows h <= r < rows - h, h = taps / 2, and every column,
/// dst = sum over j of kernel[j] * src[r - h + j][c], added in single precision in that order.
/// Bytes are truncated to their low 8 bits. Other rows of `dst` are not written.
/// For unsigned char and float.
template <class T>
FRAMEQUILT_EXPORT bool opencvFilter2DRowCalcCh1(T* src, float* kernel, int rows, int cols, int taps,
                                                T* dst);

/// Horizontal pass: as the vertical one, for every row and columns h <= c < cols - h.
/// For unsigned char and float.
template <class T>
FRAMEQUILT_EXPORT bool opencvFilter2DColCalcCh1(T* src, float* kernel, int rows, int cols, int taps,
                                                T* dst);

/// Fixed 3 x 3 binomial smoothing (1 2 1 / 2 4 2 / 1 2 1) >> 4, truncating. The outermost pixels
/// of `dst` are not written; `kernel` and `taps` are not read. For unsigned char.
template <class T>
FRAMEQUILT_EXPORT bool opencvfilter2DCalcCh1(T* src, float* kernel, int rows, int cols, int taps,
                                             T* dst);

/// Copies the inner (rows - 2 border) x (cols - 2 border) block into a packed `dst`; `rows` and
/// `cols` are the padded size. For unsigned char and float.
template <class T>
FRAMEQUILT_EXPORT bool opencvcopyFilter2DTakeOutBoundCh1(T* src, int rows, int cols, int border,
                                                         T* dst);

extern template bool opencvcopyFilter2DBorderCh1<unsigned char>(unsigned char*, int, int, int,
                                                                unsigned char*, unsigned char*);
extern template bool opencvcopyFilter2DBorderCh1<float>(float*, int, int, int, float*, float*);
extern template bool opencvFilter2DRowCalcCh1<unsigned char>(unsigned char*, float*, int, int, int,
                                                             unsigned char*);
extern template bool opencvFilter2DRowCalcCh1<float>(float*, float*, int, int, int, float*);
extern template bool opencvFilter2DColCalcCh1<unsigned char>(unsigned char*, float*, int, int, int,
                                                             unsigned char*);
extern template bool opencvFilter2DColCalcCh1<float>(float*, float*, int, int, int, float*);
extern template bool opencvfilter2DCalcCh1<unsigned char>(unsigned char*, float*, int, int, int,
                                                          unsigned char*);
extern template bool opencvcopyFilter2DTakeOutBoundCh1<unsigned char>(unsigned char*, int, int, int,
                                                                      unsigned char*);
extern template bool opencvcopyFilter2DTakeOutBoundCh1<float>(float*, int, int, int, float*);

/// Pads by `border` columns on the left and right only. The left side mirrors without the edge
/// pixel; the right side repeats source columns cols - border - 1 .. cols - 2 forward, in their own
/// order: the edge response below is tuned to that. A column left of the image counts as column 0.
FRAMEQUILT_EXPORT bool opencvcopyFilter2DBorderColCh1(unsigned char* src, int rows, int cols,
                                                      int border, unsigned char* dst);

/// Fixed 9-tap edge response along each row, weights -1 -2 -1 2 4 2 -1 -2 -1, modulo 256: a
/// negative response wraps to a large byte. For 4 <= c < cols - 4; other columns of `dst` are not
/// written. `taps` is not read.
FRAMEQUILT_EXPORT bool opencvFilter2DColCalcChUchar(unsigned char* src, int rows, int cols,
                                                    int taps, unsigned char* dst);

/// Copies columns border <= c < cols - border of every row into a packed `dst`; `cols` is the
/// padded width.
FRAMEQUILT_EXPORT bool opencvcopyFilter2DTakeOutBoundColCh1(unsigned char* src, int rows, int cols,
                                                            int border, unsigned char* dst);

namespace framequilt {

/// Tap count of the run's smoothing: `filter2DKerSize[0]`, held to the 0..5 weights that the
/// kernel arrays have.
int smoothingTaps() noexcept;

}  // namespace framequilt
