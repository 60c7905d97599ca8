// SPDX-License-Identifier: Apache-2.0
/// \file
/// What both backends hold alike: where the first frame of a run goes, and which frames are placed.
/// Sizes are working sizes in pixels.
#pragma once

#include <opencv2/core/mat.hpp>

#include "framequilt/records.h"

namespace framequilt {

/// Limits of a static scene: no mean gray difference exceeds the first; a half of the gray range.
constexpr int kStaticMotionLimit = 255;
constexpr float kStaticOverlapLimit = 128.0F;

/// Of a first frame that is larger than the mosaic: a line on the host, a text for the debug hook
/// on a card.
constexpr const char* kNotPlaced = "willSmallImgToBigImgAssignRowCol failed";

/// From two channels on, a mosaic has colour.
constexpr bool isColour(int channels) noexcept { return channels >= 2; }

/// Makes a new black mosaic of 6000 x 6000 pixels and puts `frame` into its middle; sets the
/// position in `flags` and both corners of the filled box. Holds the mosaic's lock meanwhile.
/// \return False when the frame is larger than that.
bool startMosaic(unsigned char* frame, int rows, int cols, int channels, SPoint& topLeft,
                 SPoint& bottomRight, cv::Mat& mosaic, stitchflags& flags);

/// Whether the mosaic is one that a frame at `position` can lie in. After calls out of order it may
/// be missing or stem from a run of another shape.
bool holdsFrame(const cv::Mat& mosaic, SPoint position, int rows, int cols, int channels);

/// The larger of the two offsets and the side of the frame that it goes along.
struct Shift {
  unsigned distance;
  int side;
};
Shift largerShift(const stitchflags& flags, int rows, int cols);

/// Overlap within the limits (both exclusive, fractions of the side), backed by enough pairs.
bool canBlend(const Shift& shift, int matchNum, float minOverlap, float maxOverlap);

/// Whether the mosaic has reached maxRows * maxCols pixels, in 32-bit products.
bool isFull(const cv::Mat& mosaic, int maxRows, int maxCols);

}  // namespace framequilt
