// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/stitch_command.h"

#include <gtest/gtest.h>

#include <csignal>
#include <new>
#include <opencv2/core.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "scenes.h"
#include "temporary_folder.h"
#include "tests/support/scripted_engine.h"
#include "tool_error_text.h"

using framequilt::tool::ExitStatus;
using framequilt::tool::InputSettings;
using framequilt::tool::kMosaicWritten;
using framequilt::tool::kNothingJoined;
using framequilt::tool::openInputs;
using framequilt::tool::stitch;
using framequilt::tool::stitchCapture;
using framequilt::tool::StitchOptions;

namespace {

constexpr int kRows = 8;
constexpr int kCols = 10;

/// A folder of five small pictures and an engine that answers as told.
class StitchCommand : public testing::Test {
 protected:
  explicit StitchCommand(ScriptedEngine::Device device = ScriptedEngine::Device::kNone)
      : engine_(device) {}

  void SetUp() override {
    for (const char* name : {"f1.png", "f2.png", "f3.png", "f4.png", "f5.png"}) {
      save(pictures_.file(name), texture(kRows, kCols));
    }
    options_.inputs = {pictures_.path()};
    options_.output = outputs_.file("mosaic.png");
  }

  ExitStatus run(bool terminal = false) { return stitch(options_, {out_, notes_, terminal}); }

  std::string errorOf() {
    return toolErrorOf([&] { run(); });
  }

  /// Joins; the mosaic's box is 13 x 9 of 20 x 20 pixels.
  static ScriptedEngine::Answer joins() {
    return [](ScriptedEngine::Run& run) {
      const int result = ScriptedEngine::blended(3, 1)(run);
      run.topLeft = {};
      run.bottomRight = {13, 9};
      run.mosaic = cv::Mat(20, 20, CV_8UC1, cv::Scalar(77));
      return result;
    };
  }
  static ScriptedEngine::Answer failsWith(int code, const char* description) {
    return [=](ScriptedEngine::Run&) -> int {
      throw cv::Exception(code, description, "function", "file.cpp", 1);
    };
  }
  static ScriptedEngine::Answer runsOutOfMemory() {
    return [](ScriptedEngine::Run&) -> int { throw std::bad_alloc(); };
  }

  void expectMosaic() {
    const cv::Mat mosaic = cv::imread(options_.output, cv::IMREAD_UNCHANGED);
    ASSERT_EQ(mosaic.size(), cv::Size(13, 9));
    EXPECT_EQ(cv::norm(mosaic, cv::Mat(9, 13, CV_8UC1, cv::Scalar(77)), cv::NORM_INF), 0);
  }

  TemporaryFolder pictures_, outputs_;
  StitchOptions options_;
  ScriptedEngine engine_;
  std::ostringstream out_, notes_;
};

const char* const kNoMemory =
    "framequilt: out of memory: the mosaic so far stays; use scale 2 or begin another mosaic\n";

}  // namespace

TEST_F(StitchCommand, OutOfMemoryStillSavesTheMosaicSoFar) {
  engine_.answers = {joins(), runsOutOfMemory()};
  EXPECT_EQ(run(), kMosaicWritten);
  EXPECT_EQ(notes_.str(), kNoMemory);
  EXPECT_EQ(out_.str().rfind("frames read: 2\njoined: 2\nrefused: 0\n", 0), 0U) << out_.str();
  expectMosaic();
  EXPECT_EQ(engine_.stops, 1);
}

TEST_F(StitchCommand, AMosaicThatCannotGrowIsSavedAsItIs) {
  engine_.answers = {joins(), failsWith(cv::Error::StsNoMem, "Failed to allocate 9 bytes")};
  EXPECT_EQ(run(), kMosaicWritten);
  EXPECT_EQ(notes_.str(), kNoMemory);
  expectMosaic();
}

TEST_F(StitchCommand, AnotherFailureIsNamedInOneLine) {
  engine_.answers = {joins(), failsWith(cv::Error::StsBadSize, "odd size")};
  EXPECT_EQ(run(), kMosaicWritten);
  EXPECT_EQ(notes_.str(),
            "framequilt: stitching failed (odd size): the mosaic so far stays; use scale 2 or "
            "begin another mosaic\n");
  expectMosaic();
}

TEST_F(StitchCommand, OutOfMemoryBeforeAnyJoinWritesNothing) {
  engine_.answers = {runsOutOfMemory()};
  EXPECT_EQ(run(), kNothingJoined);
  EXPECT_EQ(outputs_.names(), std::vector<std::string>{});
}

TEST_F(StitchCommand, AFullMosaicEndsTheRunAndIsSaved) {
  engine_.answers = {joins(), ScriptedEngine::full(joins())};
  EXPECT_EQ(run(), kMosaicWritten);
  EXPECT_EQ(engine_.calls.size(), 2U);
  EXPECT_EQ(notes_.str(),
            "framequilt: the mosaic is full (frames not read: 2): raise --max-rows or "
            "--max-cols\n");
  expectMosaic();
}

TEST_F(StitchCommand, ANewFirstFrameIsReported) {
  engine_.answers.assign(3, ScriptedEngine::noEstimate());
  engine_.answers.push_back(joins());
  EXPECT_EQ(run(), kMosaicWritten);
  EXPECT_EQ(notes_.str(),
            "framequilt: three frames did not fit the first one: starting again from 'f4.png'\n");
}

TEST_F(StitchCommand, NothingJoinedKeepsAnOlderMosaic) {
  writeText(options_.output, "older");
  engine_.answers.assign(4, ScriptedEngine::noEstimate());
  EXPECT_EQ(run(), kNothingJoined);
  EXPECT_EQ(readText(options_.output), "older");
  EXPECT_EQ(outputs_.names(), std::vector<std::string>{"mosaic.png"});
  EXPECT_NE(out_.str().find("joined: 0\nrefused: 5\n"), std::string::npos) << out_.str();
  EXPECT_NE(out_.str().find("no mosaic written: nothing could be joined; each frame should share "
                            "about half with the one before\n"),
            std::string::npos);
}

TEST_F(StitchCommand, ASummaryTellsCountsReasonsSizeTimesAndPlace) {
  engine_.answers = {joins(), joins(), ScriptedEngine::noEstimate(), joins()};
  EXPECT_EQ(run(), kMosaicWritten);
  const std::string text = out_.str();
  EXPECT_EQ(text.rfind("frames read: 5\njoined: 4\nrefused: 1\n"
                       "  no overlap found: 1 ('f4.png'): let neighbouring frames share about "
                       "half, in focus and with texture\n"
                       "mosaic: 13 x 9 pixels, gray\nms per frame: median ",
                       0),
            0U)
      << text;
  EXPECT_NE(text.find("\nwritten to: " + options_.output + "\n"), std::string::npos) << text;
}

TEST_F(StitchCommand, PicturesThatAreLeftOutAreCounted) {
  writeText(pictures_.file("f6.png"), "no picture");
  engine_.answers.assign(4, joins());
  EXPECT_EQ(run(), kMosaicWritten);
  EXPECT_NE(out_.str().find("refused: 0\nleft out: 1\nmosaic: "), std::string::npos) << out_.str();
}

TEST_F(StitchCommand, OneFrameIsNotEnough) {
  options_.inputs = {pictures_.file("f1.png")};
  EXPECT_EQ(errorOf(), "'" + pictures_.file("f1.png") + "' gives only one frame: give two or more");
}

TEST_F(StitchCommand, AnInterruptionWhilePicturesAreListedIsNotACaptureOfOneFrame) {
  writeText(pictures_.file("f2.png"), "no picture");
  // It comes with the remark on the second picture.
  const auto open = [this](InputSettings settings) {
    settings.note = [](const std::string&) { std::raise(SIGINT); };
    return openInputs(options_.inputs, settings);
  };
  EXPECT_EQ(toolErrorOf([&] {
              stitchCapture(options_, {out_, notes_, false}, open, nullptr);
            }),
            "interrupted before a second picture was read");
  EXPECT_EQ(outputs_.names(), std::vector<std::string>{});
}

TEST_F(StitchCommand, ATerminalShowsOneLineOfProgress) {
  engine_.answers.assign(4, joins());
  EXPECT_EQ(run(true), kMosaicWritten);
  EXPECT_EQ(notes_.str().find('\n'), std::string::npos) << notes_.str();
  EXPECT_EQ(notes_.str().rfind("\r\x1b[K1 of 5 frames, 0 joined, 0 refused, ", 0), 0U);
  EXPECT_NE(notes_.str().find("\r\x1b[K2 of 5 frames, 2 joined, 0 refused, "), std::string::npos);
  EXPECT_NE(notes_.str().find("\r\x1b[K5 of 5 frames, 5 joined, 0 refused, "), std::string::npos);
  EXPECT_EQ(notes_.str().rfind("\r\x1b[K"), notes_.str().size() - 4);
}

TEST_F(StitchCommand, ElsewhereALineTellsOfEach25Frames) {
  options_.inputs.assign(11, pictures_.path());
  engine_.answers.assign(54, joins());
  EXPECT_EQ(run(), kMosaicWritten);
  const std::string notes = notes_.str();
  EXPECT_EQ(notes.rfind("framequilt: 25 of 55 frames, 25 joined, 0 refused, ", 0), 0U) << notes;
  EXPECT_NE(notes.find("\nframequilt: 50 of 55 frames, 50 joined, "), std::string::npos) << notes;
  EXPECT_EQ(std::count(notes.begin(), notes.end(), '\n'), 2);
}

TEST_F(StitchCommand, HintsReachTheEngine) {
  options_.hints = outputs_.file("hints.csv");
  writeText(options_.hints, "frame,dx,dy\n2,3,1\n4,-2,5\n");
  engine_.answers.assign(4, joins());
  EXPECT_EQ(run(), kMosaicWritten);
  EXPECT_TRUE(engine_.calls[0].motorFlag);
  EXPECT_EQ(engine_.calls[0].motor, cv::Point(3, 1));
  EXPECT_FALSE(engine_.calls[1].motorFlag);
  EXPECT_TRUE(engine_.calls[2].motorFlag);
  // Where the view moves left, the engine counts rows the other way.
  EXPECT_EQ(engine_.calls[2].motor, cv::Point(-2, -5));
}

TEST_F(StitchCommand, BackendIsChosen) {
  options_.backend = "host";
  options_.report = outputs_.file("report.json");
  engine_.answers.assign(4, joins());
  EXPECT_EQ(run(), kMosaicWritten);
  EXPECT_NE(readText(options_.report).find("\"backend\": \"host\""), std::string::npos);
  options_.backend = "opencl";
  EXPECT_THROW(run(), framequilt::Error);
  EXPECT_EQ(engine_.starts, 1);
}

class StitchCommandOnDevice : public StitchCommand {
 protected:
  StitchCommandOnDevice() : StitchCommand(ScriptedEngine::Device::kServes) {}
};

TEST_F(StitchCommandOnDevice, IsTakenUnlessTheHostIsAskedFor) {
  options_.report = outputs_.file("report.json");
  for (const char* backend : {"auto", "opencl", "host"}) {
    options_.backend = backend;
    engine_.calls.clear();
    engine_.answers.assign(4, joins());
    EXPECT_EQ(run(), kMosaicWritten) << backend;
    const std::string used = std::string(backend) == "host" ? "host" : "opencl";
    EXPECT_NE(readText(options_.report).find("\"backend\": \"" + used + "\""), std::string::npos)
        << backend;
  }
}

TEST_F(StitchCommand, OptionsReachTheEngine) {
  engine_.answers.assign(4, joins());
  EXPECT_EQ(run(), kMosaicWritten);
  EXPECT_EQ(engine_.startArguments, (std::vector<int>{kRows, kCols, 1, 8, 20000, 20000, 1, 0}));
  options_.mode = "overlap";
  options_.dynamicScene = true;
  options_.cornerBudget = 3;
  options_.maxRows = 7000;
  options_.maxCols = 8000;
  options_.scale = 2;
  options_.every = 2;
  engine_.calls.clear();
  EXPECT_EQ(run(), kMosaicWritten);
  EXPECT_EQ(engine_.startArguments, (std::vector<int>{kRows, kCols, 1, 3, 7000, 8000, 0, 1}));
  EXPECT_EQ(engine_.calls.size(), 2U);
  EXPECT_EQ(engine_.calls[0].frameScale, 2);
}
