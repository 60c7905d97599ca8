// SPDX-License-Identifier: Apache-2.0
/// \file
/// The road of one frame through the host backend.
#pragma once

#include <opencv2/core/mat.hpp>

#include "framequilt/export.h"
#include "framequilt/records.h"

/// Takes one frame through the run; arguments and results as for `stichingImagedJoint`.
FRAMEQUILT_EXPORT int stichingImagedJointCpu(unsigned char* src, unsigned char* dest,
                                             int frameIndex, int frameScale, int motorDx,
                                             int motorDy, bool motorFlag, SPoint& outLeft,
                                             SPoint& outRight, cv::Mat& outMosaic,
                                             stitchflags& outFlags);

/// Brings the frames to working size, estimates the offset and decides whether the new frame
/// qualifies (`flags.stitch_flags`). On the first frame of a run it also creates the mosaic.
///
/// \param src   Reference: the first frame of the run, or `theSorImageTemp`. Overwritten with the
///              mosaic's part of the overlap when `GStitchMode` is 0.
/// \param dest  New frame at full size. Overwritten with its part of the overlap when `GStitchMode`
///              is 0.
/// \param motorDx,motorDy,motorFlag  Not read; the hint is taken from the run state.
/// \return False when a pointer is null, no run is open, the first frame does not fit into the
///         mosaic or no offset was found; the run state is then what it was, as far as the frame
///         got.
FRAMEQUILT_EXPORT bool stitchingImageOffsetCpu(unsigned char* src, unsigned char* dest,
                                               int frameIndex, int frameScale, int motorDx,
                                               int motorDy, bool motorFlag, imgInfo srcInfo,
                                               imgInfo destInfo, SPoint& outLeft, SPoint& outRight,
                                               cv::Mat& mosaic, stitchflags& flags);
