// SPDX-License-Identifier: Apache-2.0
#include "tests/support/opencl_layer/records.h"

#include <atomic>
#include <mutex>
#include <utility>

#include "tests/support/opencl_layer/faults.h"
#include "tests/support/opencl_layer/kernel_arguments.h"
#include "tests/support/opencl_layer/ledger.h"

namespace framequilt::opencl_layer {
namespace {

struct Records {
  std::mutex mutex;
  std::vector<TraceEvent> trace;
  std::vector<std::string> violations;
};

// Runtimes call in from threads that outlive main, so nothing of the layer is ever destroyed.
Records& records() {
  static Records& all = *new Records;
  return all;
}

}  // namespace

int threadNumber() {
  static std::atomic<int> given{0};
  thread_local const int number = ++given;
  return number;
}

void record(TraceEvent event) {
  event.thread = threadNumber();
  event.number = numberOf(event.handle);
  const std::lock_guard lock(records().mutex);
  records().trace.push_back(std::move(event));
}

void recordViolation(std::string sentence) {
  const std::lock_guard lock(records().mutex);
  records().violations.push_back(std::move(sentence));
}

void forgetTraceAndViolations() {
  const std::lock_guard lock(records().mutex);
  records().trace.clear();
  records().violations.clear();
}

std::vector<TraceEvent> trace() {
  const std::lock_guard lock(records().mutex);
  return records().trace;
}

std::vector<std::string> violations() {
  const std::lock_guard lock(records().mutex);
  return records().violations;
}

void resetRecords() {
  forgetTraceAndViolations();
  forgetCalls();
}

void forgetReleased() {
  forgetGoneObjects();
  forgetGoneKernels();
}

}  // namespace framequilt::opencl_layer
