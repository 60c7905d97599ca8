// SPDX-License-Identifier: Apache-2.0
#include "tests/faults/fault_sweep.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <map>

#include "tests/support/process_threads.h"

namespace {

/// Actions of so few points are tried at all of them.
constexpr long kFew = 24;

long chosenStride() {
  const char* const text = std::getenv("FRAMEQUILT_FAULT_STRIDE");
  if (text != nullptr) return std::max(1L, std::atol(text));
  // A sanitizer makes each trial ten times as slow.
  return mallocIsAPoint() ? 17 : 61;
}

/// The same for the same action on every machine.
long firstPoint(const std::string& action, long stride, long count) {
  unsigned sum = 0;
  for (const char letter : action) sum = sum * 31 + static_cast<unsigned char>(letter);
  return 1 + static_cast<long>(sum % static_cast<unsigned>(std::min(stride, count)));
}

void printFigures(const std::string& action, long points, long tried,
                  const std::map<std::string, int>& outcomes) {
  std::cout << "faults | " << action << " | " << points << " | " << tried << " |";
  const char* separator = " ";
  for (const auto& [outcome, count] : outcomes) {
    std::cout << separator << outcome << ": " << count;
    separator = ", ";
  }
  std::cout << " |" << std::endl;
}

}  // namespace

void sweepFaults(const std::string& action, const std::function<FaultyCall(long)>& trial,
                 Beside beside) {
  // What is made once for the whole process stays: the second time counts.
  trial(0);
  const long count = trial(0).passed.count;
  if (count == 0) {
    EXPECT_FALSE(mallocIsAPoint()) << action << " asks for nothing";
    return;
  }
  const int threads = threadsOfProcess();
  const long unjoined = unjoinedThreads();
  const long chosen = chosenStride();
  const long stride = count <= kFew ? 1 : chosen;
  long tried = 0;
  std::map<std::string, int> outcomes;
  for (long point = firstPoint(action, stride, count); point <= count; point += stride) {
    const long before = liveObjects();
    FaultyCall call = trial(point);
    SCOPED_TRACE(action + ", point " + std::to_string(point) + " (" + call.passed.failed +
                 "): " + call.outcome);
    waitForThreads(threads);
    EXPECT_EQ(unjoinedThreads(), unjoined);
    const long after = liveObjects();
    if (after > before && beside == Beside::kNobody) {
      // A leak, unless it was for once.
      trial(point);
      waitForThreads(threads);
      EXPECT_LE(liveObjects(), after);
    }
    ++tried;
    // With two threads an action has not always the same number of points.
    ++outcomes[call.passed.failed.empty() ? "not reached" : call.outcome];
    if (testing::Test::HasFailure()) break;
  }
  printFigures(action, count, tried, outcomes);
}
