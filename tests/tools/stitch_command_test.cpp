// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/stitch_command.h"

#include <gtest/gtest.h>

#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "fake_engine.h"
#include "scenes.h"
#include "temporary_folder.h"

using framequilt::tool::ExitStatus;
using framequilt::tool::kMosaicWritten;
using framequilt::tool::kNothingJoined;
using framequilt::tool::stitch;
using framequilt::tool::StitchOptions;
using framequilt::tool::ToolError;

namespace {

/// A folder of five small pictures and an engine that answers as told.
class StitchCommand : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"f1.png", "f2.png", "f3.png", "f4.png", "f5.png"}) {
      save(pictures_.file(name), texture(8, 10));
    }
    options_.inputs = {pictures_.path()};
    options_.output = outputs_.file("mosaic.png");
  }

  ExitStatus run() { return stitch(options_, out_, notes_, engine_.entryPoints()); }

  static FakeEngine::Answer joins() {
    return [](FakeEngine::Run& run) {
      run.bottomRight = {13, 9};
      run.mosaic = cv::Mat(20, 20, CV_8UC1, cv::Scalar(77));
      return FakeEngine::blended(3, 1)(run);
    };
  }
  static FakeEngine::Answer failsWith(int code, const char* description) {
    return [=](FakeEngine::Run&) -> int {
      throw cv::Exception(code, description, "function", "file.cpp", 1);
    };
  }
  static FakeEngine::Answer runsOutOfMemory() {
    return [](FakeEngine::Run&) -> int { throw std::bad_alloc(); };
  }

  void expectMosaic() {
    const cv::Mat mosaic = cv::imread(options_.output, cv::IMREAD_UNCHANGED);
    ASSERT_EQ(mosaic.size(), cv::Size(13, 9));
    EXPECT_EQ(cv::norm(mosaic, cv::Mat(9, 13, CV_8UC1, cv::Scalar(77)), cv::NORM_INF), 0);
  }

  TemporaryFolder pictures_, outputs_;
  StitchOptions options_;
  FakeEngine engine_;
  std::ostringstream out_, notes_;
};

}  // namespace

TEST_F(StitchCommand, OutOfMemoryStillSavesTheMosaicSoFar) {
  engine_.answers = {joins(), runsOutOfMemory()};
  EXPECT_EQ(run(), kMosaicWritten);
  EXPECT_EQ(notes_.str(), "framequilt: out of memory: use --scale 2 or fewer pictures\n");
  EXPECT_EQ(out_.str().rfind("frames read: 2\njoined: 2\nrefused: 0\n", 0), 0U) << out_.str();
  expectMosaic();
  EXPECT_EQ(engine_.stops, 1);
}

TEST_F(StitchCommand, AMosaicThatCannotGrowIsSavedAsItIs) {
  engine_.answers = {joins(), failsWith(cv::Error::StsNoMem, "Failed to allocate 9 bytes")};
  EXPECT_EQ(run(), kMosaicWritten);
  EXPECT_EQ(notes_.str(), "framequilt: out of memory: use --scale 2 or fewer pictures\n");
  expectMosaic();
}

TEST_F(StitchCommand, AnotherFailureIsNamedInOneLine) {
  engine_.answers = {joins(), failsWith(cv::Error::StsBadSize, "odd size")};
  EXPECT_EQ(run(), kMosaicWritten);
  EXPECT_EQ(notes_.str(), "framequilt: stitching failed (odd size): use fewer pictures\n");
  expectMosaic();
}

TEST_F(StitchCommand, OutOfMemoryBeforeAnyJoinWritesNothing) {
  engine_.answers = {runsOutOfMemory()};
  EXPECT_EQ(run(), kNothingJoined);
  EXPECT_EQ(outputs_.names(), std::vector<std::string>{});
}

TEST_F(StitchCommand, AFullMosaicEndsTheRunAndIsSaved) {
  engine_.answers = {joins(), [](FakeEngine::Run& run) {
                       joins()(run);
                       return 1;
                     }};
  EXPECT_EQ(run(), kMosaicWritten);
  EXPECT_EQ(engine_.calls.size(), 2U);
  EXPECT_EQ(notes_.str(),
            "framequilt: the mosaic is full (pictures not read: 2): raise --max-rows or "
            "--max-cols\n");
  expectMosaic();
}

TEST_F(StitchCommand, ANewFirstFrameIsReported) {
  engine_.answers.assign(3, FakeEngine::noEstimate());
  engine_.answers.push_back(joins());
  EXPECT_EQ(run(), kMosaicWritten);
  EXPECT_EQ(notes_.str(),
            "framequilt: three frames did not fit the first one: starting again from '" +
                pictures_.file("f4.png") + "'\n");
}

TEST_F(StitchCommand, NothingJoinedKeepsAnOlderMosaic) {
  writeText(options_.output, "older");
  engine_.answers.assign(4, FakeEngine::noEstimate());
  EXPECT_EQ(run(), kNothingJoined);
  EXPECT_EQ(readText(options_.output), "older");
  EXPECT_EQ(outputs_.names(), std::vector<std::string>{"mosaic.png"});
  EXPECT_NE(out_.str().find("joined: 0\nrefused: 5\n"), std::string::npos) << out_.str();
  EXPECT_NE(out_.str().find("no mosaic written: nothing could be joined"), std::string::npos);
}

TEST_F(StitchCommand, ASummaryTellsCountsSizeTimesAndPlace) {
  engine_.answers = {joins(), joins(), FakeEngine::noEstimate(), joins()};
  EXPECT_EQ(run(), kMosaicWritten);
  const std::string text = out_.str();
  EXPECT_EQ(
      text.rfind("frames read: 5\njoined: 4\nrefused: 1\n  '" + pictures_.file("f4.png") +
                     "': no overlap found\nmosaic: 13 x 9 pixels, gray\nms per frame: median ",
                 0),
      0U)
      << text;
  EXPECT_NE(text.find("\nwritten to: " + options_.output + "\n"), std::string::npos) << text;
}

TEST_F(StitchCommand, OnePictureIsNotEnough) {
  options_.inputs = {pictures_.file("f1.png")};
  try {
    run();
    ADD_FAILURE();
  } catch (const ToolError& failure) {
    EXPECT_EQ(failure.what(),
              "'" + pictures_.file("f1.png") + "' is the only picture: give two or more");
  }
}

TEST_F(StitchCommand, MosaicAndPlacementsNeedTwoNames) {
  options_.placements = options_.output;
  try {
    run();
    ADD_FAILURE();
  } catch (const ToolError& failure) {
    EXPECT_EQ(failure.what(),
              "'" + options_.output + "' is asked to be mosaic and placements: name two files");
  }
}
