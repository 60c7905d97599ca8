// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>

#include "tools/framequilt/frame_stepper.h"

namespace framequilt::tool {

/// A place for one frame between a thread that brings frames and one that takes them: a new frame
/// replaces one that nobody has come for.
class NewestFrame {
 public:
  /// False, and the frame is gone, once the place is closed.
  bool put(NumberedFrame frame);

  /// Waits for a frame. None when the place is closed and empty, and within a twentieth of a second
  /// once `interrupted` (may be empty) says so, even if a frame is there.
  /// \throws what the place was closed with.
  std::optional<NumberedFrame> take(const std::function<bool()>& interrupted);

  /// No more frames are taken in. With a `failure`, `take` throws it after the last frame.
  void close(std::exception_ptr failure = nullptr);

  /// Frames that were replaced.
  std::size_t dropped() const;

 private:
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::optional<NumberedFrame> frame_;
  bool closed_ = false;
  std::exception_ptr failure_;
  std::size_t dropped_ = 0;
};

}  // namespace framequilt::tool
