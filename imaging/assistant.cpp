// SPDX-License-Identifier: Apache-2.0
#include "imaging/assistant.h"

#include <atomic>
#include <new>
#include <system_error>
#include <utility>

namespace framequilt {
namespace {

/// Below, waking or starting a thread takes longer than what it saves.
constexpr std::size_t kFewestToWake = 150000;
constexpr std::size_t kFewestToStart = 500000;

std::atomic<int> chosen{0};
std::atomic<Lender*> lenderOfRun{nullptr};

}  // namespace

bool paysForTwo(std::size_t pixels) noexcept {
  const int threads = chosen.load(std::memory_order_relaxed);
  if (threads != 0) return threads > 1;
  static const bool hasTwo = std::thread::hardware_concurrency() > 1;
  return hasTwo && pixels >= (lenderOfRun.load() != nullptr ? kFewestToWake : kFewestToStart);
}

void setThreads(int threads) noexcept { chosen.store(threads, std::memory_order_relaxed); }

void setLender(Lender* lender) noexcept { lenderOfRun.store(lender); }

Assistant::Assistant(bool wanted, std::function<void()> work) : work_(std::move(work)) {
  if (!wanted) return;
  Lender* const lender = lenderOfRun.load();
  if (lender != nullptr && lender->lend(work_)) {
    lender_ = lender;
    return;
  }
  try {
    thread_ = std::thread([this] {
      work_();
      done_ = true;
    });
  } catch (const std::system_error&) {
    // The caller does it all: there is no thread,
  } catch (const std::bad_alloc&) {
    // or no memory for one.
  }
}

void Assistant::join() {
  if (thread_.joinable()) joinThread();
  if (lender_ != nullptr) std::exchange(lender_, nullptr)->awaitLent();
}

void Assistant::joinThread() {
  try {
    thread_.join();
  } catch (const std::system_error&) {
    while (!done_) std::this_thread::yield();
    thread_.detach();
  }
}

}  // namespace framequilt
