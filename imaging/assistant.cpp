// SPDX-License-Identifier: Apache-2.0
#include "imaging/assistant.h"

#include <atomic>
#include <system_error>

namespace framequilt {
namespace {

/// Below, starting a thread takes longer than what it saves.
constexpr std::size_t kFewestPixels = 500000;

std::atomic<int> chosen{0};

}  // namespace

bool paysForTwo(std::size_t pixels) noexcept {
  const int threads = chosen.load(std::memory_order_relaxed);
  if (threads != 0) return threads > 1;
  static const bool hasTwo = std::thread::hardware_concurrency() > 1;
  return hasTwo && pixels >= kFewestPixels;
}

void setThreads(int threads) noexcept { chosen.store(threads, std::memory_order_relaxed); }

Assistant::Assistant(bool wanted, const std::function<void()>& work) {
  if (!wanted) return;
  try {
    thread_ = std::thread(work);
  } catch (const std::system_error&) {
    // The caller does it all.
  }
}

void Assistant::join() {
  if (thread_.joinable()) thread_.join();
}

}  // namespace framequilt
