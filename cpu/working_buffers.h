// SPDX-License-Identifier: Apache-2.0
/// \file
/// Sizes of the host run's buffers and their common release.
///
/// A few steps read or clear more than an image strictly has; each buffer is as large as the
/// largest of them needs, so that nothing outside it is touched.
#pragma once

#include <cstddef>

namespace framequilt {

/// Bytes of a pixel in the run's own frames: the fusion and the gray conversion touch three from
/// two channels on, the measures one without any.
int workingPixelBytes(int channels) noexcept;

/// Bytes of a rows x cols image.
/// \throws std::bad_alloc when the product is negative or above 2^31 - 1.
std::size_t imageBytes(int rows, int cols, int channels);

/// Allocates what lives as long as the run: the frames at working size, the reference and the last
/// frame.
void allocateRunBuffers(int rows, int cols, int channels);

/// Bytes that `thedestImageScale` and `theSorImageScale` have for a resized frame.
std::size_t newFrameCapacity(int channels);
std::size_t referenceCapacity(int channels);

/// Gray images and corner planes of a pair, the planes of each measure. Each is released by the
/// member below it, or with everything else.
void allocatePairPlanes();
void releasePairPlanes() noexcept;
void allocateMotionPlanes();
void releaseMotionPlanes() noexcept;
void allocateOverlapPlanes();
void releaseOverlapPlanes() noexcept;

/// Releases every buffer of the run that exists, also those that only a host fills.
void releaseAllBuffers() noexcept;

}  // namespace framequilt
