// SPDX-License-Identifier: Apache-2.0
/// \file
/// The record of the run keeps values of earlier frames, and a frame that fails the overlap
/// criterion takes the reference with it. A caller that wants each call to speak for itself clears
/// the one before the call and mends the other after it.
#pragma once

#include <optional>

namespace framequilt {

/// Clears every field of `flagsCpu` but the position, and the motion value. The latch of the
/// overlap criterion goes with them: the next frame is judged by its own measures.
void forgetMeasures();

/// Makes the reference of the last call the reference of the next one again, where the overlap
/// criterion has overwritten it.
void restoreReference();

/// The motion value of the last call since `forgetMeasures`; none when the call did not come so
/// far.
std::optional<int> motionOfCall();
/// For the motion criterion, which measures it.
void setMotionOfCall(int motion);

/// Whether a worker had no memory for its part of the last call since `forgetMeasures`. The call
/// itself gives -1, as for frames that share nothing.
bool lackedMemoryInCall();
/// For the offset estimation, which waits for the workers.
void noteLackOfMemoryInCall();

}  // namespace framequilt
