// SPDX-License-Identifier: Apache-2.0
/// \file
/// The road of one frame through the OpenCL backend.
#pragma once

#include <opencv2/core/mat.hpp>

#include "framequilt/export.h"
#include "framequilt/records.h"

/// Takes one frame through the run; arguments and results as for `stichingImagedJoint`. Unlike the
/// host backend it replaces bytes 0 of every frame, in the caller's memory, and leaves the frames
/// alone otherwise; `unused` is not read, frames are never downscaled. Also -1 when the device
/// refuses a step.
FRAMEQUILT_EXPORT int stichingImagedJointCL(unsigned char* src, unsigned char* dest, int frameIndex,
                                            int unused, int motorDx, int motorDy, bool motorFlag,
                                            SPoint& outLeft, SPoint& outRight, cv::Mat& outMosaic,
                                            stitchflags& outFlags);

/// Pre-judges the frames on the device, estimates the offset and decides whether the new frame
/// qualifies (`flags.stitch_flags`, set anew by every frame). On the first frame of a run it also
/// creates the mosaic.
///
/// \param src   Reference: the first frame of the run, or `theSorImageTempCL`.
/// \param dest  New frame at full size.
/// \return False when a pointer is null, no run is open, the device refuses, the first frame does
///         not fit into the mosaic or no offset was found.
FRAMEQUILT_EXPORT bool stitchingImageOffsetCL(unsigned char* src, unsigned char* dest,
                                              int frameIndex, int unused, int motorDx, int motorDy,
                                              bool motorFlag, imgInfo srcInfo, imgInfo destInfo,
                                              SPoint& outLeft, SPoint& outRight, cv::Mat& mosaic,
                                              stitchflags& flags);

/// Places a frame into the mosaic as `stitchingImageImageblendCpu` does, fused on the device.
///
/// \param dest    The frame, `imgScaleRowCL` x `imgScaleColCL` pixels.
/// \param unused  Not read.
/// \param work    Receives the fused region: the reference for the next frame.
/// \return False, after the line "stitchingImageImageblend ptr is null", for a null frame, and when
///         the device refuses: mosaic, corners and position are then unchanged.
/// \throws cv::Exception when memory for growth runs out; nothing is changed then.
FRAMEQUILT_EXPORT bool stitchingImageImageblendCL(cv::Mat mosaic, unsigned char* dest,
                                                  imgInfo destInfo, stitchflags flags, SPoint left,
                                                  SPoint right, SPoint unused, SPoint& outLeft,
                                                  SPoint& outRight, SPoint& outPosition,
                                                  imgInfo& workInfo, cv::Mat& outMosaic,
                                                  unsigned char* work);
