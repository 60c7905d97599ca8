// SPDX-License-Identifier: Apache-2.0
#include "cpu/corner_lane.h"

#include <chrono>
#include <utility>

#include "cpu/run_state.h"

namespace framequilt {
namespace {

constexpr std::chrono::milliseconds kLookAtFlags{1};

}  // namespace

bool CornerLane::start(void* (*body)(void*)) {
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
  return thread != 0 && pthread_join(thread, nullptr) == 0;
}

void CornerLane::request(bool wakes) {
  const std::lock_guard lock(mutex_);
  failed_ = false;
  request_ = true;
  if (wakes) changed_.notify_all();
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
  const std::lock_guard lock(mutex_);
  --serving_;
  changed_.notify_all();
}

void CornerLane::waitForRequest() {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, kLookAtFlags, [this] { return (request_ && !claimed_) || !run_; });
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
  static CornerLane& lane = *new CornerLane(startOneThFlag, threadOneCalcFlag, one_pid);
  return lane;
}

CornerLane& laneTwo() {
  static CornerLane& lane = *new CornerLane(startTwoThFlag, threadTwoCalcFlag, two_pid);
  return lane;
}

}  // namespace framequilt
