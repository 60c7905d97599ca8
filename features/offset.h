// SPDX-License-Identifier: Apache-2.0
/// \file
/// From the described corners of two images to the translation between them.
#pragma once

#include <vector>

#include "framequilt/records.h"

namespace framequilt {

/// Corners of an image and their descriptors, one after another.
struct DescribedCorners {
  std::vector<SPoint>& points;
  unsigned short* descriptors;
};

/// Matches the corners of the reference and the new frame (rows x cols pixels each) and takes the
/// translation that most pairs agree on.
///
/// \param distances   Scratch of one float per corner of the reference.
/// \param length      Elements of a descriptor.
/// \param dx,dy       Receive the offset in pixels; only on success.
/// \param matchCount  Receives the number of agreeing pairs, also when they are too few.
/// \return True when at least 11 pairs agree on an offset within the frame's size.
bool offsetOfCorners(const DescribedCorners& reference, const DescribedCorners& newFrame,
                     float* distances, int length, int rows, int cols, int& dx, int& dy,
                     int& matchCount);

}  // namespace framequilt
