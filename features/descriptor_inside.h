// SPDX-License-Identifier: Apache-2.0
/// \file
/// Descriptors of corners whose patch, with the taps around it, lies inside the image.
#pragma once

#include "features/plain.h"
#include "framequilt/records.h"

namespace framequilt {

/// Every pixel of the patch has its gradient inside the image, and the descriptor has room for all
/// cells of the patch.
bool liesInside(const GrayView& image, SPoint corner, int patch, int length);

/// The same as plain::describeCorner where the patch lies inside. From any thread.
void describeInside(const GrayView& image, SPoint corner, int patch, unsigned short* descriptor);

}  // namespace framequilt
