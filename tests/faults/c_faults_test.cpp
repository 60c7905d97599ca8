// SPDX-License-Identifier: Apache-2.0
// The C interface with a fault at every point of its calls: a code and a line of text, no
// exception, and the session goes on as if the call had not been made.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "framequilt/framequilt_c.h"
#include "framequilt/tuning.h"
#include "tests/faults/fault_captures.h"
#include "tests/faults/fault_sweep.h"
#include "tests/support/scoped_value.h"
#include "tests/tools/temporary_folder.h"

namespace {

const char* const kOk = "FRAMEQUILT_OK";
const char* const kMemory = "FRAMEQUILT_E_MEMORY";

/// What a caller is told of a frame.
using Told = std::array<std::int32_t, 4>;

class CFaults : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(framequilt_init_options(&options_, sizeof options_), FRAMEQUILT_OK);
    const Frame& frame = capture_.frames.front();
    options_.rows = frame.rows;
    options_.cols = frame.cols;
    options_.channels = frame.channels;
    options_.backend = FRAMEQUILT_BACKEND_HOST;
    options_.log = [](const char* /*line*/, std::size_t /*length*/, void* /*user*/) {};
    framequilt_session* session = open();
    for (std::size_t i = 0; i < frames(); ++i) usual_.push_back(told(session, i));
    EXPECT_EQ(framequilt_close(session), FRAMEQUILT_OK);
  }

  std::size_t frames() const { return capture_.frames.size(); }
  const framequilt_options& options() const { return options_; }

  framequilt_session* open() const {
    framequilt_session* session = nullptr;
    EXPECT_EQ(framequilt_open(&options_, &session), FRAMEQUILT_OK)
        << framequilt_last_error(nullptr);
    return session;
  }

  framequilt_code add(framequilt_session* session, std::size_t i, framequilt_result& result) const {
    const Frame& given = capture_.frames[i];
    framequilt_frame frame = {};
    frame.size = sizeof frame;
    frame.pixels = given.bytes.data();
    frame.rows = given.rows;
    frame.cols = given.cols;
    frame.channels = given.channels;
    frame.order = given.channels == 1 ? FRAMEQUILT_GRAY : FRAMEQUILT_BGR;
    result = {};
    result.size = sizeof result;
    return framequilt_add(session, &frame, &result);
  }

  Told told(framequilt_session* session, std::size_t i) const {
    framequilt_result result;
    EXPECT_EQ(add(session, i, result), FRAMEQUILT_OK) << framequilt_last_error(session);
    return {result.verdict, result.reason, result.placement.x, result.placement.y};
  }

  void expectUsual(framequilt_session* session, std::size_t begin, std::size_t end) const {
    for (std::size_t i = begin; i < end; ++i) EXPECT_EQ(told(session, i), usual_[i]) << i;
  }

 private:
  const FaultCapture& capture_ = smallCaptures().front();
  const ScopedValue<int> limit_{motionValueThCpu0, 200};
  framequilt_options options_ = {};
  std::vector<Told> usual_;
};

TEST_F(CFaults, OfTheOpening) {
  sweepFaults("C interface, opening", [&](long failing) {
    framequilt_session* session = nullptr;
    FaultyCall call = callWithFault(
        failing, [&] { return framequilt_code_name(framequilt_open(&options(), &session)); });
    if (session != nullptr) {
      EXPECT_EQ(call.outcome, kOk);
      expectUsual(session, 0, frames());
    } else {
      EXPECT_TRUE(call.outcome == kMemory || call.outcome == "FRAMEQUILT_E_START") << call.outcome;
      EXPECT_NE(std::string(framequilt_last_error(nullptr)), "");
    }
    EXPECT_EQ(framequilt_close(session), FRAMEQUILT_OK);
    return call;
  });
}

TEST_F(CFaults, OfEachFrame) {
  for (std::size_t i = 0; i < frames(); ++i) {
    sweepFaults("C interface, frame " + std::to_string(i), [&](long failing) {
      framequilt_session* const session = open();
      expectUsual(session, 0, i);
      framequilt_result result;
      FaultyCall call =
          callWithFault(failing, [&] { return framequilt_code_name(add(session, i, result)); });
      EXPECT_TRUE(call.outcome == kOk || call.outcome == kMemory) << call.outcome;
      if (call.outcome == kMemory) {
        EXPECT_EQ(std::string(framequilt_last_error(session)),
                  "out of memory: the mosaic so far stays; use scale 2 or begin another mosaic");
        expectUsual(session, i, frames());
      } else {
        expectUsual(session, i + 1, frames());
      }
      EXPECT_EQ(framequilt_close(session), FRAMEQUILT_OK);
      return call;
    });
  }
}

TEST_F(CFaults, OfASavedMosaic) {
  const TemporaryFolder folder;
  const std::string path = folder.file("mosaic.png");
  const auto bytesOf = [&] {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  };
  framequilt_session* const session = open();
  expectUsual(session, 0, frames());
  ASSERT_EQ(framequilt_save_mosaic(session, path.c_str()), FRAMEQUILT_OK);
  const std::string usual = bytesOf();
  sweepFaults("C interface, saved mosaic", [&](long failing) {
    std::ofstream(path) << "older";
    FaultyCall call = callWithFault(failing, [&] {
      return framequilt_code_name(framequilt_save_mosaic(session, path.c_str()));
    });
    if (call.outcome == kOk) {
      EXPECT_EQ(bytesOf(), usual);
    } else {
      EXPECT_TRUE(call.outcome == kMemory || call.outcome == "FRAMEQUILT_E_FILE") << call.outcome;
      EXPECT_EQ(bytesOf(), "older");
      EXPECT_NE(std::string(framequilt_last_error(session)), "");
    }
    EXPECT_EQ(folder.names(), std::vector<std::string>{"mosaic.png"}) << "a part was left behind";
    return call;
  });
  EXPECT_EQ(framequilt_close(session), FRAMEQUILT_OK);
}

}  // namespace
