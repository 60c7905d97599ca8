// SPDX-License-Identifier: Apache-2.0
#include "tests/support/opencl_layer/faults.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <utility>

namespace framequilt::opencl_layer {
namespace {

struct Fault {
  std::string entryPoint;           // Empty: of all.
  std::optional<pthread_t> thread;  // None: of all.
  int callsBefore;
  cl_int code;
  bool stays;

  bool means(const char* call) const {
    return (entryPoint.empty() || entryPoint == call) &&
           (!thread || pthread_equal(*thread, pthread_self()) != 0);
  }
};

struct Calls {
  std::mutex mutex;
  std::vector<const char*> log;
  std::vector<Fault> faults;
  std::minstd_rand random;
  std::chrono::microseconds longestPause{0};
};

Calls& calls() {
  static Calls& all = *new Calls;
  return all;
}

void arm(Fault fault) {
  const std::lock_guard lock(calls().mutex);
  calls().faults.push_back(std::move(fault));
}

}  // namespace

cl_int countCall(const char* entryPoint) {
  const std::lock_guard lock(calls().mutex);
  calls().log.push_back(entryPoint);

  cl_int code = CL_SUCCESS;
  std::vector<Fault> later;
  for (Fault& fault : calls().faults) {
    const bool meant = fault.means(entryPoint);
    const bool due = meant && fault.callsBefore == 0;
    if (due && code == CL_SUCCESS) code = fault.code;
    if (meant && fault.callsBefore > 0) --fault.callsBefore;
    if (!due || fault.stays) later.push_back(fault);
  }
  calls().faults.swap(later);
  return code;
}

void pauseMaybe() {
  std::chrono::microseconds pause{0};
  {
    const std::lock_guard lock(calls().mutex);
    if (calls().longestPause.count() <= 0) return;
    pause = std::chrono::microseconds(std::uniform_int_distribution<long>(
        0, static_cast<long>(calls().longestPause.count()))(calls().random));
  }
  std::this_thread::sleep_for(pause);
}

void forgetCalls() {
  const std::lock_guard lock(calls().mutex);
  calls().log.clear();
}

void failCall(std::string_view entryPoint, int nth, cl_int code) {
  arm({std::string(entryPoint), {}, nth - 1, code, false});
}

void failCall(int nthOfAll, cl_int code) { arm({{}, {}, nthOfAll - 1, code, false}); }

void failCallOf(pthread_t thread, int nth, cl_int code) { arm({{}, thread, nth - 1, code, false}); }

void failEveryCallFrom(int nthOfAll, cl_int code) { arm({{}, {}, nthOfAll - 1, code, true}); }

int faultsWaiting() {
  const std::lock_guard lock(calls().mutex);
  return static_cast<int>(
      std::count_if(calls().faults.begin(), calls().faults.end(),
                    [](const Fault& fault) { return !fault.stays || fault.callsBefore > 0; }));
}

void clearFaults() {
  const std::lock_guard lock(calls().mutex);
  calls().faults.clear();
}

std::vector<std::string> callLog() {
  const std::lock_guard lock(calls().mutex);
  return {calls().log.begin(), calls().log.end()};
}

long callCount() {
  const std::lock_guard lock(calls().mutex);
  return static_cast<long>(calls().log.size());
}

long callCount(std::string_view entryPoint) {
  const std::lock_guard lock(calls().mutex);
  return std::count(calls().log.begin(), calls().log.end(), entryPoint);
}

void jitter(unsigned seed, std::chrono::microseconds longest) {
  const std::lock_guard lock(calls().mutex);
  calls().random.seed(seed);
  calls().longestPause = longest;
}

}  // namespace framequilt::opencl_layer
