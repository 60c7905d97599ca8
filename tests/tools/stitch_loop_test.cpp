// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/stitch_loop.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <opencv2/core.hpp>
#include <sstream>
#include <stdexcept>
#include <string>

#include "tests/support/scripted_engine.h"
#include "tests/support/session_frames.h"
#include "tools/framequilt/tool_error.h"

using framequilt::Session;
using framequilt::tool::CaptureShape;
using framequilt::tool::Console;
using framequilt::tool::FrameSource;
using framequilt::tool::Hints;
using framequilt::tool::SourceFrame;
using framequilt::tool::stitchFrames;
using framequilt::tool::StitchLog;
using framequilt::tool::ToolError;

namespace {

constexpr int kRows = 8;
constexpr int kCols = 10;

/// Gives two frames, then fails.
class FailingSource final : public FrameSource {
 public:
  explicit FailingSource(std::function<void()> fail) : fail_(std::move(fail)) {}

  CaptureShape shape() const override { return {kRows, kCols, 1}; }
  std::optional<std::size_t> count() const override { return std::nullopt; }
  std::optional<SourceFrame> next() override {
    if (++given_ > 2) fail_();
    return SourceFrame{cv::Mat(kRows, kCols, CV_8UC1, cv::Scalar(9)), given_, "f", {}};
  }
  std::size_t skipped() const override { return 0; }

 private:
  std::function<void()> fail_;
  std::size_t given_ = 0;
};

/// What is remarked when the source fails so; both frames before it are in the mosaic.
std::string remarkOf(const std::function<void()>& fail) {
  ScriptedEngine engine;
  engine.answers = {ScriptedEngine::blended(3, 1)};
  Session session(grayOptions(kRows, kCols));
  FailingSource source(fail);
  StitchLog log;
  std::ostringstream notes;
  Console console(notes, false, Console::Amount::kNormal);
  stitchFrames(source, Hints(), session, log, console);
  EXPECT_EQ(log.joined(), 2U);
  EXPECT_FALSE(session.mosaic().empty());
  return notes.str();
}

}  // namespace

TEST(StitchLoop, ASourceThatFailsKeepsTheMosaicSoFar) {
  EXPECT_EQ(remarkOf([] { throw std::bad_alloc(); }),
            "framequilt: out of memory: use --scale 2 or fewer pictures\n");
  EXPECT_EQ(remarkOf([] { throw ToolError("no luck: try again"); }),
            "framequilt: no luck: try again\n");
  EXPECT_EQ(remarkOf([] { throw std::runtime_error("first line\nsecond line"); }),
            "framequilt: first line\n");
  EXPECT_EQ(remarkOf([] {
              throw cv::Exception(cv::Error::StsError, "decoder broke", "decode", "file.cpp", 1);
            }).rfind("framequilt: OpenCV(", 0),
            0U);
}
