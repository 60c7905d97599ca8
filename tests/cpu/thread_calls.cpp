// SPDX-License-Identifier: Apache-2.0
#include "tests/cpu/thread_calls.h"

#include <dlfcn.h>
#include <pthread.h>

#include <cerrno>
#include <cstddef>
#include <memory>

namespace {

using Create = int (*)(pthread_t*, const pthread_attr_t*, ThreadBody, void*);
using Join = int (*)(pthread_t, void**);

/// The next definition in the search order: a sanitizer's where there is one.
template <class Function>
Function next(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

struct Start {
  ThreadBody body;
  void* argument;
};

/// Destroyed when the thread leaves, also by pthread_exit, which unwinds.
struct CountedWhileRunning {
  CountedWhileRunning() = default;
  ~CountedWhileRunning() { --threadCalls().running; }
  CountedWhileRunning(const CountedWhileRunning&) = delete;
  CountedWhileRunning& operator=(const CountedWhileRunning&) = delete;
};

void* runCounted(void* argument) {
  const CountedWhileRunning counted;
  Start start = {};
  {
    const std::unique_ptr<Start> given(static_cast<Start*>(argument));
    start = *given;
  }
  return start.body(start.argument);
}

}  // namespace

ThreadCalls& threadCalls() {
  static ThreadCalls calls;
  return calls;
}

void watchThreads(int refused) {
  ThreadCalls& calls = threadCalls();
  calls.creations = calls.joins = calls.running = calls.special = 0;
  calls.refused = refused;
  calls.failing = 0;
}

extern "C" {

__attribute__((visibility("default"))) int pthread_create(pthread_t* thread,
                                                          const pthread_attr_t* attributes,
                                                          ThreadBody body, void* argument) {
  static const auto create = next<Create>("pthread_create");
  ThreadCalls& calls = threadCalls();
  const int creation = ++calls.creations;
  if (creation <= static_cast<int>(calls.bodies.size())) {
    calls.bodies.at(static_cast<std::size_t>(creation - 1)) = body;
  }
  if (attributes != nullptr || argument != nullptr) ++calls.special;
  if (creation == calls.refused) return EAGAIN;
  auto start = std::make_unique<Start>(Start{body, argument});
  ++calls.running;
  const int result = create(thread, attributes, runCounted, start.get());
  if (result == 0) {
    static_cast<void>(start.release());
  } else {
    --calls.running;
  }
  return result;
}

__attribute__((visibility("default"))) int pthread_join(pthread_t thread, void** value) {
  static const auto join = next<Join>("pthread_join");
  ThreadCalls& calls = threadCalls();
  if (calls.failing > 0) {
    --calls.failing;
    return EINVAL;
  }
  const int result = join(thread, value);
  if (result == 0) ++calls.joins;
  return result;
}

}  // extern "C"
