// SPDX-License-Identifier: Apache-2.0
#include "cpu/corner_lane.h"

#if defined(__GLIBC__)
#include <execinfo.h>
#endif

#include <chrono>
#include <new>
#include <thread>
#include <utility>

#include "cpu/run_state.h"
#include "interface/never_destroyed.h"

namespace framequilt {
namespace {

constexpr std::chrono::milliseconds kLookAtFlags{1};
/// For a thread that was created to reach its lane.
constexpr std::chrono::seconds kToBegin{1};
/// Longer than from one step of a frame to the next.
constexpr std::chrono::microseconds kLookOut{300};

/// Whether threads can leave by `pthread_exit`. The C library loads what that takes when the first
/// thread leaves, and ends the process when there is no memory for it. Looking at the stack loads
/// it too, and may fail.
bool canLeaveThreads() {
#if defined(__GLIBC__)
  void* frame = nullptr;
  return backtrace(&frame, 1) > 0;
#else
  return true;
#endif
}

/// Waits for `happened` without sleeping, where another processor can make it happen.
template <class Happened>
void lookOut(Happened happened) {
  static const bool hasTwo = std::thread::hardware_concurrency() > 1;
  const auto end = std::chrono::steady_clock::now() + kLookOut;
  while (hasTwo && !happened() && std::chrono::steady_clock::now() < end) {
#if defined(__x86_64__) && defined(__GNUC__)
    __builtin_ia32_pause();
#endif
  }
}

}  // namespace

bool CornerLane::start(void* (*body)(void*)) {
  if (!canLeaveThreads()) throw std::bad_alloc();
  {
    const std::lock_guard lock(mutex_);
    ++starting_;
    claimed_ = false;  // A worker may have left in the middle of a job.
  }
  if (pthread_create(&thread_, nullptr, body, nullptr) == 0) return true;
  thread_ = 0;
  const std::lock_guard lock(mutex_);
  --starting_;
  return false;
}

void CornerLane::dismiss() {
  const std::lock_guard lock(mutex_);
  run_ = false;
  request_ = false;
  changed_.notify_all();
}

bool CornerLane::join() {
  const pthread_t thread = std::exchange(thread_, pthread_t{0});
  if (thread == 0) return false;
  if (pthread_join(thread, nullptr) == 0) return true;
  // The stop releases what the worker works in, and the next start takes its place.
  if (pthread_equal(thread, pthread_self()) == 0) awaitLeaving();
  pthread_detach(thread);
  return false;
}

void CornerLane::awaitLeaving() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return serving_ == 0; });
  // One that has not begun has nothing to do any more; a body of a host's may never begin here.
  changed_.wait_for(lock, kToBegin, [this] { return starting_ + serving_ == 0; });
  starting_ = 0;
}

void CornerLane::request(bool wakes) {
  const std::lock_guard lock(mutex_);
  failed_ = false;
  lackedMemory_ = false;
  request_ = true;
  if (wakes) changed_.notify_all();
}

void CornerLane::lookOutForEnd() {
  lookOut([this] { return !request_; });
}

bool CornerLane::await(Abandoned abandoned) {
  std::unique_lock lock(mutex_);
  while (request_) {
    if (starting_ + serving_ == 0) {
      if (abandoned == Abandoned::kWithdrawn) request_ = false;
      return false;
    }
    changed_.wait_for(lock, kLookAtFlags);
  }
  return !failed_;
}

void CornerLane::enter() {
  const std::lock_guard lock(mutex_);
  if (starting_ > 0) --starting_;
  ++serving_;
}

void CornerLane::leave() {
  {
    const std::lock_guard lock(mutex_);
    --serving_;
    changed_.notify_all();
  }
  workForOthers();  // Nobody lends a worker that does not serve.
}

bool CornerLane::lend(const std::function<void()>& work) {
  const std::lock_guard lock(mutex_);
  if (!lends_ || serving_ == 0 || !run_ || request_ || lent_ != nullptr) return false;
  lent_ = &work;
  lentTaken_ = false;
  changed_.notify_all();
  return true;
}

void CornerLane::awaitLent() {
  lookOut([this] { return lent_ == nullptr; });
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return lent_ == nullptr; });
}

bool CornerLane::workForOthers() {
  if (lent_ == nullptr) return false;
  const std::function<void()>* work = nullptr;
  {
    const std::lock_guard lock(mutex_);
    if (lent_ == nullptr || std::exchange(lentTaken_, true)) return false;
    work = lent_;
  }
  (*work)();
  const std::lock_guard lock(mutex_);
  lent_ = nullptr;
  changed_.notify_all();
  return true;
}

void CornerLane::waitForRequest(bool looksOut) {
  const auto isWanted = [this] { return (request_ && !claimed_) || lent_ != nullptr || !run_; };
  if (looksOut) lookOut(isWanted);
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, kLookAtFlags, isWanted);
}

bool CornerLane::claim() {
  const std::lock_guard lock(mutex_);
  if (!request_ || claimed_) return false;
  claimed_ = true;
  return true;
}

void CornerLane::finish(bool succeeded) {
  const std::lock_guard lock(mutex_);
  failed_ = !succeeded;
  request_ = false;
  claimed_ = false;
  changed_.notify_all();
}

CornerLane& laneOne() {
  static const NeverDestroyed<CornerLane> lane(startOneThFlag, threadOneCalcFlag, one_pid,
                                               /*lends=*/true);
  return *lane;
}

CornerLane& laneTwo() {
  static const NeverDestroyed<CornerLane> lane(startTwoThFlag, threadTwoCalcFlag, two_pid);
  return *lane;
}

}  // namespace framequilt
