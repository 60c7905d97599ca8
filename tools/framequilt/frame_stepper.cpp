// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/frame_stepper.h"

#include <utility>

namespace framequilt::tool {

FrameStepper::FrameStepper(FrameGrabber grabber, int every)
    : grabber_(std::move(grabber)), every_(static_cast<std::size_t>(every)) {}

std::optional<NumberedFrame> FrameStepper::next() {
  do {
    if (!grabber_.grab()) return std::nullopt;
    ++grabbed_;
  } while ((grabbed_ - 1) % every_ != 0);
  NumberedFrame frame{{}, grabbed_};
  if (!grabber_.retrieve(frame.pixels)) frame.pixels.release();
  return frame;
}

}  // namespace framequilt::tool
