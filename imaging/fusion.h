// SPDX-License-Identifier: Apache-2.0
/// \file
/// Feathered mixing of two images of one size, weighted by the distance to where each has no data.
#pragma once

#include "framequilt/export.h"

/// Weight (0..255) of image 1 at every pixel of two rows x cols images.
///
/// A two-pass chamfer distance transform (Borgefors 1986; steps 0.2 and 0.3 from a start value of
/// 255) runs over the non-black mask of each image. Its masks are one-sided (left, up, up-left;
/// right, down, down-right), and only the second image has its outer frame blanked: the new frame
/// fades towards its edges, the mosaic does not. The weight is A * 255 / (A + B), truncated, and
/// 0 where both distances are 0.
///
/// `ignored` is not read. Works in `AreaImageOneGaryFloat` and `AreaImageTwoGaryFloat`; a plane
/// that is null is allocated for the call.
/// \return False, after the line "ptr is null", when one of the three pointers is null.
FRAMEQUILT_EXPORT bool weightofTwoAreaFun(unsigned char* image1, unsigned char* image2, int rows,
                                          int cols, int channels, int ignored,
                                          unsigned char* weight);

/// Mixes image 1 into image 2 with that weight and copies the result back into image 1.
///
/// From 2 channels on, three bytes a pixel are mixed: ((255 - w) * image2 + w * image1) / 255.
/// With fewer, one byte: the same sum >> 8, so that a weight of 255 gives 255/256 of image 1.
/// Both images hold rows * cols * channels bytes (three a pixel for 2 channels). `ignored` is not
/// read. The five planes `AreaImage*` live for the call.
/// \return False, after the line "ptr is null", when an image is null.
FRAMEQUILT_EXPORT bool twoImageFusion(unsigned char* image1, unsigned char* image2, int channels,
                                      int ignored, int rows, int cols);

namespace framequilt {

/// From the masks (255 or 0) of two rows x cols images to their distances, in place: blanks the
/// outer frame of the second, then the two passes over each.
void spreadDistances(float* one, float* two, int rows, int cols);

/// What `twoImageFusion` makes of images that are not null, as plainly as it can be written; leaves
/// the planes `AreaImage*` behind. `feather` (feather.h) does the same for nearly all images.
/// \throws std::bad_alloc
void fusePlainly(unsigned char* image1, unsigned char* image2, int channels, int ignored, int rows,
                 int cols);

}  // namespace framequilt
