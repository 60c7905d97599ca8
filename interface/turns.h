// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <mutex>
#include <thread>

namespace framequilt {

/// Lets threads work one after the other.
class Turns {
 public:
  Turns() = default;
  Turns(const Turns&) = delete;
  Turns& operator=(const Turns&) = delete;

 private:
  friend class Turn;
  std::mutex mutex_;
  // Read by threads that do not hold the mutex; each recognises itself alone.
  std::atomic<std::thread::id> owner_{};
};

/// A turn of this thread, until the object is gone.
class Turn {
 public:
  /// Waits for the turns of other threads. A thread that is in its turn already, in a callback say,
  /// would wait for itself: it gets none.
  explicit Turn(Turns& turns) : turns_(turns) {
    const std::thread::id self = std::this_thread::get_id();
    if (turns_.owner_ == self) return;
    lock_ = std::unique_lock(turns_.mutex_);
    turns_.owner_ = self;
  }
  ~Turn() {
    if (lock_) turns_.owner_ = std::thread::id();
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

  /// Whether this thread got the turn by this object.
  explicit operator bool() const { return lock_.owns_lock(); }

 private:
  Turns& turns_;
  std::unique_lock<std::mutex> lock_;
};

}  // namespace framequilt
