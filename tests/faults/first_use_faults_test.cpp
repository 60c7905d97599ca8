// SPDX-License-Identifier: Apache-2.0
// The first run of a process makes what stays for all others. Each fault gets a process of its own.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <memory>

#include "framequilt/framequilt.h"
#include "framequilt/session.h"
#include "tests/faults/fault_captures.h"
#include "tests/faults/fault_sweep.h"
#include "tests/support/digest.h"
#include "tests/support/session_frames.h"

using framequilt::Session;

namespace {

/// What the process tells of itself.
struct Told {
  long points;
  std::array<char, 32> failed;
  std::array<char, 128> outcome;
  std::uint64_t afterwards;  ///< What a whole run makes after the fault.
};

template <std::size_t size>
void put(const std::string& text, std::array<char, size>& into) {
  into = {};
  std::copy_n(text.data(), std::min(text.size(), size - 1), into.data());
}

/// Runs `action` with a fault, then `whole`, in a new process. It ends by itself, or the test
/// fails.
FaultyCall inAnotherProcess(long failing, const std::function<std::string()>& action,
                            const std::function<std::uint64_t()>& whole,
                            std::uint64_t& afterwards) {
  std::array<int, 2> ends{};
  EXPECT_EQ(pipe(ends.data()), 0);
  const pid_t child = fork();
  if (child == 0) {
    const FaultyCall call = callWithFault(failing, action);
    Told told{};
    told.points = call.passed.count;
    put(call.passed.failed, told.failed);
    put(call.outcome, told.outcome);
    told.afterwards = whole();
    const bool written = write(ends[1], &told, sizeof told) == sizeof told;
    _exit(written ? 0 : 1);
  }
  close(ends[1]);
  Told told{};
  const bool complete = read(ends[0], &told, sizeof told) == sizeof told;
  close(ends[0]);
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(complete && WIFEXITED(status) && WEXITSTATUS(status) == 0)
      << "point " << failing << ": "
      << (WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status)) : "not complete");
  afterwards = told.afterwards;
  return {{told.points, told.failed.data()}, told.outcome.data()};
}

std::uint64_t digestOf(const FrameOutcome& outcome) {
  Digest digest;
  addOutcome(digest, outcome);
  return digest.value();
}

class FirstUseFaults : public testing::TestWithParam<FaultCapture> {
 protected:
  bool start() const {
    const RunSettings& settings = GetParam().settings;
    return initJoint(settings.rows, settings.cols, settings.channels, settings.cornerBudget,
                     settings.maxRow, settings.maxCol, settings.stitchMode,
                     settings.staticDynamicFlag);
  }

  /// The pair and another frame.
  FrameOutcome stitch() const {
    FrameOutcome outcome;
    Frame reference = GetParam().frames.at(0);
    for (std::size_t i = 1; i <= 2; ++i) {
      Frame frame = GetParam().frames.at(i);
      outcome.result = stichingImagedJoint(
          i == 1 ? reference.bytes.data() : nullptr, frame.bytes.data(), i == 1 ? 0 : 1, 1, 0, 0,
          false, outcome.topLeft, outcome.bottomRight, outcome.mosaic, outcome.flags);
      if (outcome.result < 0) break;
    }
    return outcome;
  }

  std::string run() const {
    struct Stop {
      ~Stop() { uinitJoint(); }
    } const stop;
    if (!start()) return "not started";
    return stitch().result == -1 ? "result -1" : "as usual";
  }

  std::uint64_t wholeRun() const {
    if (!start()) return 0;
    const std::uint64_t digest = digestOf(stitch());
    uinitJoint();
    return digest;
  }

  std::string session() const {
    Session session(optionsFor(GetParam().frames.at(0)));
    for (std::size_t i = 0; i < 3; ++i) session.add(viewOf(GetParam().frames.at(i)));
    session.stop();
    return "as usual";
  }
};

INSTANTIATE_TEST_SUITE_P(, FirstUseFaults,
                         testing::Values(smallCaptures().front(), largeCaptures().front()),
                         [](const auto& instance) { return instance.param.name; });

TEST_P(FirstUseFaults, OfTheEntryPoints) {
  std::uint64_t usual = 0;
  inAnotherProcess(
      0, [] { return std::string(); }, [&] { return wholeRun(); }, usual);
  ASSERT_NE(usual, 0);
  sweepFaults(GetParam().name + ", first run of a process", [&](long failing) {
    std::uint64_t afterwards = 0;
    FaultyCall call = inAnotherProcess(
        failing, [&] { return run(); }, [&] { return wholeRun(); }, afterwards);
    EXPECT_TRUE(call.outcome == "as usual" || call.outcome == "std::bad_alloc" ||
                call.outcome == "cv::Exception" || call.outcome == "result -1" ||
                (call.outcome == "not started" && call.passed.failed == "pthread_create"))
        << call.outcome;
    EXPECT_EQ(afterwards, usual) << "point " << failing;
    return call;
  });
}

TEST_P(FirstUseFaults, OfASession) {
  std::uint64_t usual = 0;
  inAnotherProcess(
      0, [] { return std::string(); }, [&] { return wholeRun(); }, usual);
  ASSERT_NE(usual, 0);
  sweepFaults(GetParam().name + ", first session of a process", [&](long failing) {
    std::uint64_t afterwards = 0;
    FaultyCall call = inAnotherProcess(
        failing, [&] { return session(); }, [&] { return wholeRun(); }, afterwards);
    EXPECT_TRUE(call.outcome == "as usual" || call.outcome.starts_with("Error 6: out of memory") ||
                (call.outcome.starts_with("Error 2") && call.passed.failed == "pthread_create"))
        << call.outcome;
    EXPECT_EQ(afterwards, usual) << "point " << failing;
    return call;
  });
}

}  // namespace
