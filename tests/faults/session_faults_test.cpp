// SPDX-License-Identifier: Apache-2.0
// Sessions with a fault at every point of the opening, each frame, a copy and the stop: a clear
// error, and the session goes on as if the call had not been made.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <opencv2/core.hpp>

#include "framequilt/session.h"
#include "framequilt/tuning.h"
#include "tests/faults/fault_captures.h"
#include "tests/faults/fault_sweep.h"
#include "tests/support/digest.h"
#include "tests/support/scoped_value.h"
#include "tests/support/session_frames.h"

using framequilt::Criterion;
using framequilt::FrameResult;
using framequilt::Session;
using framequilt::SessionOptions;

namespace {

const char* const kNotOpened = "Error 6: out of memory: use scale 2 or smaller frames";
const char* const kNotTaken =
    "Error 6: out of memory: the mosaic so far stays; use scale 2 or begin another mosaic";
const char* const kNoThread =
    "Error 2: the worker threads could not be started: close other programs and try again";

std::uint64_t digestOf(const cv::Mat& mosaic) {
  Digest digest;
  digest.add(mosaic.rows);
  digest.add(mosaic.cols);
  for (int r = 0; r < mosaic.rows; ++r) {
    digest.addBytes(mosaic.ptr(r), static_cast<std::size_t>(mosaic.cols) * mosaic.elemSize());
  }
  return digest.value();
}

/// What a caller is told of a frame, and sees of the mosaic.
std::uint64_t seen(const Session& session, const FrameResult& result) {
  Digest digest;
  for (const int number :
       {static_cast<int>(result.verdict), static_cast<int>(result.reason), result.placement.x,
        result.placement.y, static_cast<int>(result.frame), session.steadyBox().x,
        session.steadyBox().y, static_cast<int>(result.full)}) {
    digest.add(number);
  }
  const std::uint64_t mosaic = digestOf(session.mosaic());
  digest.add(static_cast<std::uint32_t>(mosaic));
  digest.add(static_cast<std::uint32_t>(mosaic >> 32U));
  return digest.value();
}

class SessionFaults : public testing::TestWithParam<FaultCapture> {
 protected:
  SessionFaults() {
    options_ = optionsFor(frame(0));
    options_.criterion =
        GetParam().settings.stitchMode != 0 ? Criterion::kMotion : Criterion::kOverlap;
    options_.dynamicScene = GetParam().settings.staticDynamicFlag != 0;
    Session session(options_);
    for (std::size_t i = 0; i < frames(); ++i) usual_.push_back(addTo(session, i));
  }

  std::string name(const std::string& action) const {
    return GetParam().name + ", " + action + " of a session";
  }
  std::size_t frames() const { return GetParam().frames.size(); }
  const Frame& frame(std::size_t i) const { return GetParam().frames.at(i); }
  std::uint64_t usual(std::size_t i) const { return usual_.at(i); }
  const SessionOptions& options() const { return options_; }

  std::uint64_t addTo(Session& session, std::size_t i) const {
    return seen(session, session.add(viewOf(frame(i))));
  }
  void expectUsual(Session& session, std::size_t begin, std::size_t end) const {
    for (std::size_t i = begin; i < end; ++i) {
      EXPECT_EQ(addTo(session, i), usual(i)) << "frame " << i;
    }
  }
  void expectWholeSessionAsUsual() const {
    Session session(options_);
    expectUsual(session, 0, frames());
  }

 private:
  const ScopedValue<int> limit_{motionValueThCpu0, 200};
  SessionOptions options_;
  std::vector<std::uint64_t> usual_;
};

INSTANTIATE_TEST_SUITE_P(, SessionFaults, testing::ValuesIn(allCaptures()),
                         [](const auto& instance) { return instance.param.name; });

TEST_P(SessionFaults, OfTheOpening) {
  sweepFaults(name("opening"), [&](long failing) {
    std::unique_ptr<Session> session;
    FaultyCall call = callWithFault(failing, [&] {
      session = std::make_unique<Session>(options());
      return "as usual";
    });
    EXPECT_TRUE(call.outcome == "as usual" || call.outcome == kNotOpened ||
                (call.outcome == kNoThread && call.passed.failed == "pthread_create"))
        << call.outcome;
    if (session != nullptr) expectUsual(*session, 0, frames());
    session.reset();
    expectWholeSessionAsUsual();
    return call;
  });
}

TEST_P(SessionFaults, OfEachFrame) {
  for (std::size_t i = 0; i < frames() && !HasFailure(); ++i) {
    sweepFaults(name("frame " + std::to_string(i)), [&](long failing) {
      Session session(options());
      expectUsual(session, 0, i);
      const std::uint64_t before = digestOf(session.mosaic());
      FrameResult result;
      FaultyCall call = callWithFault(failing, [&] {
        result = session.add(viewOf(frame(i)));
        return "as usual";
      });
      if (call.outcome == "as usual") {
        EXPECT_EQ(seen(session, result), usual(i)) << explain(result);
      } else {
        EXPECT_EQ(call.outcome, kNotTaken);
        EXPECT_EQ(digestOf(session.mosaic()), before);
        EXPECT_EQ(addTo(session, i), usual(i)) << "given again";
      }
      expectUsual(session, i + 1, frames());
      session.stop();
      return call;
    });
  }
}

TEST_P(SessionFaults, OfACopyAndTheStop) {
  sweepFaults(name("copy and stop"), [&](long failing) {
    Session session(options());
    expectUsual(session, 0, frames());
    const std::uint64_t before = digestOf(session.mosaic());
    FaultyCall call = callWithFault(failing, [&] {
      session.copyRegion(session.steadyBox());
      return "as usual";
    });
    EXPECT_TRUE(call.outcome == "as usual" || call.outcome == kNotTaken) << call.outcome;
    const long further = failing == 0 ? 0 : failing - call.passed.count;
    FaultyCall stop = callWithFault(further, [&] {
      session.stop();
      return "as usual";
    });
    EXPECT_EQ(stop.outcome, "as usual");
    EXPECT_EQ(digestOf(session.mosaic()), before);
    expectWholeSessionAsUsual();
    stop.passed.count += call.passed.count;
    if (!call.passed.failed.empty()) stop.passed.failed = call.passed.failed;
    if (call.outcome != "as usual") stop.outcome = call.outcome;
    return stop;
  });
}

TEST_P(SessionFaults, OfAWrongFrame) {
  sweepFaults(name("wrong frame"), [&](long failing) {
    Session session(options());
    expectUsual(session, 0, 2);
    const Frame small(10, 10, frame(0).channels, 9);
    FaultyCall call = callWithFault(failing, [&] {
      session.add(viewOf(small));
      return "taken";
    });
    EXPECT_TRUE(call.outcome.starts_with("Error 4: frame 2 has 10 x 10") ||
                call.outcome == kNotTaken)
        << call.outcome;
    expectUsual(session, 2, frames());
    return call;
  });
}

}  // namespace
