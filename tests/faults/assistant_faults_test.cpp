// SPDX-License-Identifier: Apache-2.0
// The thread that helps for the length of a call, when it cannot be had or not be joined.
#include <gtest/gtest.h>

#include <atomic>

#include "imaging/assistant.h"
#include "tests/faults/fault_sweep.h"

namespace {

using framequilt::Assistant;

TEST(AssistantFaults, LeaveTheWorkToTheCallerOrAreNotNoticed) {
  const FaultsOfProgram counted;
  sweepFaults("assistant", [](long failing) {
    std::atomic<int> done{0};
    FaultyCall call = callWithFault(failing, [&] {
      Assistant assistant(true, [&] { ++done; });
      const bool helps = assistant.works();
      assistant.join();
      EXPECT_FALSE(assistant.works());
      EXPECT_EQ(done, helps ? 1 : 0);
      return helps ? "as usual" : "alone";
    });
    const bool noThread =
        call.passed.failed == "pthread_create" || call.passed.failed == "operator new";
    EXPECT_EQ(call.outcome, noThread ? "alone" : "as usual") << call.passed.failed;
    return call;
  });
}

}  // namespace
