// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/newest_frame.h"

#include <chrono>
#include <utility>

namespace framequilt::tool {
namespace {

// The handler of a signal sets a flag and cannot wake a thread, so that flag is looked at.
constexpr std::chrono::milliseconds kLookEvery{50};

}  // namespace

bool NewestFrame::put(NumberedFrame frame) {
  {
    const std::lock_guard lock(mutex_);
    if (closed_) return false;
    if (frame_) ++dropped_;
    frame_ = std::move(frame);
  }
  changed_.notify_one();
  return true;
}

std::optional<NumberedFrame> NewestFrame::take(const std::function<bool()>& interrupted) {
  std::unique_lock lock(mutex_);
  while (!interrupted || !interrupted()) {
    if (frame_) return std::exchange(frame_, std::nullopt);
    if (closed_ && failure_) std::rethrow_exception(failure_);
    if (closed_) return std::nullopt;
    changed_.wait_for(lock, kLookEvery);
  }
  return std::nullopt;
}

void NewestFrame::close(std::exception_ptr failure) {
  {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    if (failure) failure_ = std::move(failure);
  }
  changed_.notify_one();
}

std::size_t NewestFrame::dropped() const {
  const std::lock_guard lock(mutex_);
  return dropped_;
}

}  // namespace framequilt::tool
