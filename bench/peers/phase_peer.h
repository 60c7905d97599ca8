// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bench/contender.h"

namespace framequilt::bench {

/// OpenCV's phase correlation with the frame before, at a quarter of the size; the shift is looked
/// at modulo the size, then refined at full size; feathered into a growing canvas.
Entry phasePeer();

}  // namespace framequilt::bench
