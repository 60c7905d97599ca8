// SPDX-License-Identifier: Apache-2.0
#include "tests/support/process_threads.h"

#include <dirent.h>

#include <future>
#include <thread>

int threadsOfProcess() {
  DIR* const folder = opendir("/proc/self/task");
  if (folder == nullptr) return 0;
  int count = -2;  // The folder and the one above it.
  while (readdir(folder) != nullptr) ++count;
  closedir(folder);
  return count;
}

int threadsAtRest() {
  std::promise<void> leave;
  std::thread thread([&leave] { leave.get_future().wait(); });
  const int rest = threadsOfProcess() - 1;
  leave.set_value();
  thread.join();
  waitForThreads(rest);
  return rest;
}

void waitForThreads(int count) {
  while (threadsOfProcess() > count) std::this_thread::yield();
}
