// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bench/contender.h"

namespace framequilt::bench {

/// OpenCV's ORB: 2000 features of the whole new frame at full size, matched with those of the frame
/// before by Hamming distance and the ratio test; the translation that most pairs agree on;
/// feathered into a growing canvas.
Entry orbPeer();

}  // namespace framequilt::bench
