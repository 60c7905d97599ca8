// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "tools/framequilt/frame_source.h"
#include "tools/framequilt/frame_stepper.h"

namespace framequilt::tool {

/// Whether an input is written as a camera's; its number may still be wrong.
bool namesCamera(const std::string& input);

/// The number in "camera:0". \throws ToolError when it is none.
int cameraNumber(const std::string& input);

/// The frames of a camera as they come, in colour. A thread grabs them; what comes faster than it
/// is asked for is dropped, so that `next` gives the newest frame.
///
/// Waits for the first frame. `next` comes back within a tenth of a second of an interruption even
/// if the camera stalls. The destructor waits until the camera has given the frame in progress or
/// its driver has given up on it.
///
/// \throws ToolError when the camera cannot be opened, gives no frame, or the user interrupts.
std::unique_ptr<FrameSource> openCamera(int number, const InputSettings& settings);

/// The same for a camera that is already open.
std::unique_ptr<FrameSource> openCamera(int number, FrameGrabber camera,
                                        const InputSettings& settings);

}  // namespace framequilt::tool
