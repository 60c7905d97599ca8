// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace framequilt {

/// Stores the modes of a run that is about to start, and tells the debug hook of those that are 0.
void setRunModes(int stitchMode, int staticDynamicFlag);

}  // namespace framequilt
