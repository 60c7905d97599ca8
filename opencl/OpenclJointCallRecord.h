// SPDX-License-Identifier: Apache-2.0
/// \file
/// What a caller needs that wants each call to speak for itself; the OpenCL backend's side of
/// cpu/call_record.h.
#pragma once

#include <optional>

namespace framequilt {

/// Clears every field of `flagsCL` but the position, and the motion value.
void forgetMeasuresCL();

/// Makes the reference of the last call the reference of the next one again, where a blend that
/// could not be finished has overwritten it: cuts it out of the mosaic anew.
void restoreReferenceCL();

/// The motion value of the last call since `forgetMeasuresCL`; none when the call did not come so
/// far.
std::optional<int> motionOfCallCL();
/// For the motion criterion, which measures it.
void setMotionOfCallCL(int motion);

/// Whether a thread had no memory for its part of the last call since `forgetMeasuresCL`.
bool lackedMemoryInCallCL();
/// For the offset estimation, which waits for the threads.
void noteLackOfMemoryInCallCL();

}  // namespace framequilt
