// SPDX-License-Identifier: Apache-2.0
/// \file
/// The hand-over between the caller and one corner worker.
///
/// The two exported one-byte flags of a lane are the interface: a clear run flag ends the worker,
/// a raised request flag asks for a job, the worker clears it when the job is done. Whatever the
/// worker reads is published before the request is raised, whatever it writes is read after the
/// request is clear again. Both sides sleep on a condition variable and look at the flags at least
/// once a millisecond, since a host may raise or clear a flag directly.
///
/// Between two jobs a worker can be lent for other work.
#pragma once

#include <pthread.h>

#include <atomic>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <new>
#include <optional>

#include "imaging/assistant.h"

namespace framequilt {

class CornerLane final : public Lender {
 public:
  /// With `lends` the worker looks out for what comes next before it sleeps, and can be lent.
  CornerLane(std::atomic<bool>& run, std::atomic<bool>& request, pthread_t& thread,
             bool lends = false)
      : run_(run), request_(request), thread_(thread), lends_(lends) {}
  CornerLane(const CornerLane&) = delete;
  CornerLane& operator=(const CornerLane&) = delete;

  // --- The caller's side ---

  /// Creates the worker thread; the run flag has to be set. False when that fails.
  /// \throws std::bad_alloc; there is no thread then.
  bool start(void* (*body)(void*));

  /// Clears both flags, so that the worker leaves once its current job is done.
  void dismiss();

  /// Joins the thread, which was dismissed, and forgets its id. False when there is none or the
  /// join fails: the worker has left all the same then, and its thread goes by itself.
  bool join();

  /// Raises the request. Without `wakes` the worker is left asleep; it looks after a millisecond
  /// all the same.
  void request(bool wakes = true);

  /// Does the requested job on the calling thread, unless the worker has taken it.
  template <class Job>
  void serveHere(Job job) {
    if (claim()) finish(outcomeOf(job).value_or(false));
  }

  /// What becomes of a request that no worker is there to take.
  enum class Abandoned { kWithdrawn, kLeftRaised };

  /// Blocks until the request is clear. False when the job failed, or when no worker is there.
  bool await(Abandoned abandoned = Abandoned::kWithdrawn);
  /// After `await`: whether the job failed because there was no memory.
  bool lackedMemory() const { return lackedMemory_; }
  /// For a moment without sleeping, where nobody else needs the processor: waking takes as long as
  /// a small step of a frame.
  void lookOutForEnd();

  bool lend(const std::function<void()>& work) override;
  void awaitLent() override;

  // --- The worker's side ---

  /// Runs `job`, which returns false or throws when it fails, once per request until the run flag
  /// is clear.
  template <class Job>
  void serve(Job job) {
    serveUntilRefusal([&job]() -> std::optional<bool> { return job(); });
  }

  /// The same for a job that can also refuse to go on, by returning nothing: the worker then leaves
  /// with the request raised. False when that happened.
  template <class Job>
  bool serveUntilRefusal(Job job) {
    enter();
    bool worked = false;
    while (run_) {
      waitForRequest(/*looksOut=*/worked && lends_);
      worked = workForOthers();
      while (claim()) {
        worked = true;
        const std::optional<bool> succeeded = outcomeOf(job);
        if (!succeeded) {
          leave();
          return false;
        }
        finish(*succeeded);
      }
    }
    leave();
    return true;
  }

 private:
  /// Only std::exception is caught: leaving a thread by `pthread_exit` or cancellation unwinds with
  /// an exception of another kind, which has to pass.
  template <class Job>
  std::optional<bool> outcomeOf(Job& job) {
    try {
      return job();
    } catch (const std::bad_alloc&) {
      lackedMemory_ = true;
      return false;
    } catch (const std::exception&) {
      return false;
    }
  }

  void awaitLeaving();
  void enter();
  void leave();
  void waitForRequest(bool looksOut);
  /// False when nobody has lent the worker.
  bool workForOthers();
  /// Whether there is a request that nobody is working on; the calling thread is from now on.
  bool claim();
  void finish(bool succeeded);

  std::atomic<bool>& run_;
  std::atomic<bool>& request_;
  pthread_t& thread_;
  const bool lends_;

  std::mutex mutex_;
  std::condition_variable changed_;
  int starting_ = 0;  // Threads created that have not reached serve() yet.
  int serving_ = 0;
  std::atomic<bool> claimed_{false};
  bool failed_ = false;
  std::atomic<bool> lackedMemory_{false};
  std::atomic<const std::function<void()>*> lent_{nullptr};
  bool lentTaken_ = false;
};

/// Reference image, new frame. Never destroyed: a worker that nobody stopped outlives `main`.
CornerLane& laneOne();
CornerLane& laneTwo();

}  // namespace framequilt
