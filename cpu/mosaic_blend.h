// SPDX-License-Identifier: Apache-2.0
/// \file
/// Places a frame into the mosaic.
#pragma once

#include <cstddef>
#include <functional>
#include <opencv2/core/mat.hpp>

#include "framequilt/export.h"
#include "framequilt/records.h"

/// Grows the mosaic where the new frame reaches its edge, fuses the frame (`thedestImageScale`,
/// `imgScaleRow` x `imgScaleCol` pixels) with what the mosaic holds there, and moves position and
/// filled box on.
///
/// \param mosaic       Header copy; pixels are shared and written unless the mosaic grows.
/// \param frame        Only checked for null.
/// \param info         Full-size shape of a frame: the mosaic grows by that much.
/// \param flags        `position` of the previous frame and the new frame's offset from it.
/// \param ignored      Not read.
/// \param regionInfo   Receives the shape of the fused region.
/// \param region       Receives the fused region: the reference for the next frame.
/// \return False, after the line "stitchingImageImageblend ptr is null", for a null frame.
/// \throws cv::Exception when memory for growth runs out; nothing is changed then.
FRAMEQUILT_EXPORT bool stitchingImageImageblendCpu(cv::Mat mosaic, unsigned char* frame,
                                                   imgInfo info, stitchflags flags, SPoint topLeft,
                                                   SPoint bottomRight, SPoint ignored,
                                                   SPoint& topLeftOut, SPoint& bottomRightOut,
                                                   SPoint& positionOut, imgInfo& regionInfo,
                                                   cv::Mat& mosaicOut, unsigned char* region);

namespace framequilt {

/// A frame to be placed, as for `stitchingImageImageblendCpu`; `rows` x `cols` is its working size.
struct BlendJob {
  cv::Mat mosaic;
  int rows, cols;
  imgInfo info;
  stitchflags flags;
  SPoint topLeft, bottomRight;
};

/// Where the results go.
struct BlendResult {
  SPoint& topLeft;
  SPoint& bottomRight;
  SPoint& position;
  imgInfo& regionInfo;
  cv::Mat& mosaic;
  unsigned char* region;
};

/// While it lives, `stitchingImageImageblendCpu` finds the frame in `original`, which keeps it;
/// `thedestImageScale` only receives the result, whatever it held. One at a time.
class BlendFrom {
 public:
  explicit BlendFrom(const unsigned char* original) noexcept;
  ~BlendFrom();
  BlendFrom(const BlendFrom&) = delete;
  BlendFrom& operator=(const BlendFrom&) = delete;
};

/// Mixes the frame into the region that was cut out of the mosaic, in place. False when it cannot.
using Fuse = std::function<bool(unsigned char* region, int channels)>;

/// Mixes the frame straight into the mosaic, where its first pixel is `ground` and its rows are
/// `stride` bytes apart, and copies the result to `region`. False when it cannot; nothing is
/// written then.
using FuseInMosaic = std::function<bool(unsigned char* ground, std::ptrdiff_t stride,
                                        unsigned char* region, int channels)>;

/// The road of every blend, whoever fuses: in the mosaic where that can be, in a region cut out of
/// it otherwise. `fuseInMosaic` may be empty.
/// \return False when `fuse` failed: the pixels of the mosaic, the corners and the position are
///         then unchanged, while the region holds the mosaic's pixels.
/// \throws as above.
bool blendFrame(const BlendJob& job, const FuseInMosaic& fuseInMosaic, const Fuse& fuse,
                BlendResult& result);

}  // namespace framequilt
