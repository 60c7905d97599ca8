// SPDX-License-Identifier: Apache-2.0
/// \file
/// The translation between two frames.
#pragma once

#include "framequilt/export.h"
#include "framequilt/records.h"

/// Hands the two images to the corner workers, waits for both, matches their descriptors and takes
/// the consensus offset.
///
/// \param img1,img2   Reference and new frame at working size, info.rows x info.cols pixels of
///                    info.channels bytes; must stay until the call returns.
/// \param dx,dy       Receive the offset of the new frame in working pixels; only on success.
/// \param matchCount  Receives the number of agreeing pairs, also when they are too few.
/// \return True when at least 11 pairs agree on an offset within the frame's size. False
///         otherwise, for a null image (after a fixed line), or when a worker is not there or ran
///         out of memory.
FRAMEQUILT_EXPORT bool imageMosaicFun(unsigned char* img1, unsigned char* img2, imgInfo info,
                                      int& dx, int& dy, int& matchCount);

namespace framequilt {

/// Whether a new frame is better copied by `offsetWhileCopying`: a colour frame of some size.
bool paysToCopyBeside(const imgInfo& info) noexcept;

/// `imageMosaicFun` for a new frame that is still to be copied from `frame` to `img2`, which is
/// done, with the conversion to gray, while the first worker is busy with the reference. None of
/// the images may touch another.
bool offsetWhileCopying(unsigned char* img1, const unsigned char* frame, unsigned char* img2,
                        imgInfo info, int& dx, int& dy, int& matchCount);

}  // namespace framequilt
