// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pthread.h>

#include <array>
#include <atomic>

using ThreadBody = void* (*)(void*);

/// What became of the threads of this process since `watchThreads`. The program that links
/// thread_calls.cpp has its own `pthread_create` and `pthread_join` in front of the system's.
struct ThreadCalls {
  std::atomic<int> creations{0};  ///< Calls, refused ones included.
  std::atomic<int> joins{0};      ///< Calls that succeeded.
  std::atomic<int> running{0};    ///< Created and not ended.
  std::atomic<int> refused{0};    ///< Which creation fails, counted from 1; 0 for none.
  std::atomic<int> failing{0};    ///< How many joins are still to fail; their threads go on.
  /// Bodies of the first creations, and how many creations gave attributes or an argument.
  std::array<std::atomic<ThreadBody>, 4> bodies{};
  std::atomic<int> special{0};
};

ThreadCalls& threadCalls();

/// Sets all counts to zero; the `refused`th creation from here on fails.
void watchThreads(int refused = 0);
