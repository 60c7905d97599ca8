// SPDX-License-Identifier: Apache-2.0
/// \file
/// Conditioning of an incoming frame, and how much the view changed between two frames.
#pragma once

#include "framequilt/export.h"

/// Replaces every byte 0 of a 1- or 3-channel image by 1, in place, so that 0 is left to mean "no
/// data". Images of other channel counts stay as they are. For T = unsigned char.
/// \return False, after the line "pretJudgeImageCh ptr is NULL", for a null image.
template <class T>
FRAMEQUILT_EXPORT bool pretJudgeImageCh(T* image, int rows, int cols, int channels);

extern template bool pretJudgeImageCh<unsigned char>(unsigned char*, int, int, int);

/// Mean absolute difference (0..255, truncated) of the smoothed gray images of two frames of
/// rows x cols pixels. Two or more channels are read as blue, green, red triples.
///
/// Works in the six motion planes of imaging_state.h, which the caller has allocated; leaves the
/// smoothed gray of the previous frame in `PreFrameImageGrayCpu` and of the current one in
/// `CurFrameImageGrayCpu`. The sum is a 32-bit one. An empty frame gives 0; a null frame or plane
/// gives 255, the value that every limit refuses. Caller's thread only.
FRAMEQUILT_EXPORT int imageMotionModel(unsigned char* previous, unsigned char* current, int rows,
                                       int cols, int previousChannels, int currentChannels);

namespace framequilt {

/// The largest mean absolute difference of two frames.
inline constexpr int kLargestMotion = 255;

/// Whether the motion of two frames is shown to be less than the largest by one of their pixels;
/// the motion may also be less when it is not. Frames as for `imageMotionModel`, neither null.
bool movesLessThanLargest(unsigned char* previous, unsigned char* current, int rows, int cols,
                          int channels);

}  // namespace framequilt
