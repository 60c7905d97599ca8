// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <new>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "fake_engine.h"
#include "tools/framequilt/run_driver.h"
#include "tools/framequilt/tool_error.h"

using framequilt::tool::Outcome;
using framequilt::tool::RunDriver;
using framequilt::tool::RunSettings;
using framequilt::tool::ToolError;
using Verdict = framequilt::tool::Outcome::Verdict;

namespace {

constexpr int kRows = 8;
constexpr int kCols = 10;

RunSettings settings() { return {kRows, kCols, 1}; }
cv::Mat frame(int value) { return cv::Mat(kRows, kCols, CV_8UC1, cv::Scalar(value)); }
std::vector<unsigned char> bytes(int value) {
  return std::vector<unsigned char>(kRows * kCols, static_cast<unsigned char>(value));
}

}  // namespace

TEST(RunDriverProtocol, TheFirstFrameWaitsForTheSecond) {
  FakeEngine engine;
  RunDriver run(settings(), engine.entryPoints());
  EXPECT_EQ(run.offer(frame(1)).verdict, Verdict::kWaiting);
  EXPECT_TRUE(engine.calls.empty());
}

TEST(RunDriverProtocol, TheFirstPairGoesTogetherWithIndexZero) {
  FakeEngine engine;
  engine.answers = {FakeEngine::blended(3, 1)};
  RunDriver run(settings(), engine.entryPoints());
  run.offer(frame(1));
  EXPECT_EQ(run.offer(frame(2)).verdict, Verdict::kJoined);
  ASSERT_EQ(engine.calls.size(), 1U);
  EXPECT_EQ(engine.calls[0].frameIndex, 0);
  EXPECT_EQ(engine.calls[0].reference, bytes(1));
  EXPECT_EQ(engine.calls[0].frame, bytes(2));
  EXPECT_FALSE(engine.calls[0].motorFlag);
}

TEST(RunDriverProtocol, LaterFramesGoAlone) {
  FakeEngine engine;
  engine.answers = {FakeEngine::blended(3, 1), FakeEngine::blended(3, 1)};
  RunDriver run(settings(), engine.entryPoints());
  for (int value = 1; value <= 3; ++value) run.offer(frame(value));
  EXPECT_NE(engine.calls[1].frameIndex, 0);
  EXPECT_TRUE(engine.calls[1].reference.empty());
  EXPECT_EQ(engine.calls[1].frame, bytes(3));
}

TEST(RunDriverProtocol, TheFirstFrameIsOfferedAgainUntilAPairQualifies) {
  FakeEngine engine;
  engine.answers = {FakeEngine::noEstimate(), FakeEngine::blended(3, 1)};
  RunDriver run(settings(), engine.entryPoints());
  run.offer(frame(1));
  EXPECT_EQ(run.offer(frame(2)).verdict, Verdict::kRefused);
  EXPECT_EQ(run.offer(frame(3)).verdict, Verdict::kJoined);
  EXPECT_EQ(engine.calls[1].frameIndex, 0);
  EXPECT_EQ(engine.calls[1].reference, bytes(1));
  EXPECT_EQ(engine.calls[1].frame, bytes(3));
}

TEST(RunDriverProtocol, AQualifiedPairThatIsNotBlendedLeavesAReference) {
  FakeEngine engine;
  engine.answers = {FakeEngine::qualified(0, 0), FakeEngine::blended(3, 1)};
  RunDriver run(settings(), engine.entryPoints());
  run.offer(frame(1));
  EXPECT_EQ(run.offer(frame(2)).verdict, Verdict::kRefused);
  const Outcome third = run.offer(frame(3));
  EXPECT_NE(engine.calls[1].frameIndex, 0);
  EXPECT_EQ(third.verdict, Verdict::kJoined);
  EXPECT_EQ(third.placement, cv::Point(3, 1));
}

TEST(RunDriverProtocol, AFlagBesideAFailedEstimateCountsForNothing) {
  FakeEngine engine;
  engine.answers = {[](FakeEngine::Run& run) {
                      run.flags.stitch_flags = 1;
                      return -1;
                    },
                    FakeEngine::blended(3, 1)};
  RunDriver run(settings(), engine.entryPoints());
  for (int value = 1; value <= 3; ++value) run.offer(frame(value));
  EXPECT_EQ(engine.calls[1].frameIndex, 0);
}

TEST(RunDriverProtocol, AfterThreeFailuresTheNewestFrameBecomesTheFirst) {
  FakeEngine engine;
  engine.answers = {FakeEngine::noEstimate(), FakeEngine::noEstimate(), FakeEngine::noEstimate(),
                    FakeEngine::blended(-2, 5)};
  RunDriver run(settings(), engine.entryPoints());
  run.offer(frame(1));
  EXPECT_EQ(run.offer(frame(2)).verdict, Verdict::kRefused);
  EXPECT_EQ(run.offer(frame(3)).verdict, Verdict::kRefused);
  EXPECT_EQ(run.offer(frame(4)).verdict, Verdict::kBecameFirst);
  const Outcome fifth = run.offer(frame(5));
  EXPECT_EQ(engine.calls[3].frameIndex, 0);
  EXPECT_EQ(engine.calls[3].reference, bytes(4));
  EXPECT_EQ(fifth.verdict, Verdict::kJoined);
  EXPECT_EQ(fifth.placement, cv::Point(-2, 5));
}

TEST(RunDriverProtocol, ANewFirstFrameHasThreeAttemptsToo) {
  FakeEngine engine;
  engine.answers.assign(6, FakeEngine::noEstimate());
  RunDriver run(settings(), engine.entryPoints());
  std::vector<Verdict> verdicts;
  for (int value = 1; value <= 7; ++value) verdicts.push_back(run.offer(frame(value)).verdict);
  EXPECT_EQ(verdicts, (std::vector<Verdict>{Verdict::kWaiting, Verdict::kRefused, Verdict::kRefused,
                                            Verdict::kBecameFirst, Verdict::kRefused,
                                            Verdict::kRefused, Verdict::kBecameFirst}));
}

TEST(RunDriverProtocol, OnceAFrameJoinedFailuresDoNotBeginAnew) {
  FakeEngine engine;
  engine.answers.assign(5, FakeEngine::noEstimate());
  engine.answers[0] = FakeEngine::blended(3, 1);
  RunDriver run(settings(), engine.entryPoints());
  run.offer(frame(1));
  run.offer(frame(2));
  for (int value = 3; value <= 6; ++value) {
    EXPECT_EQ(run.offer(frame(value)).verdict, Verdict::kRefused);
    EXPECT_NE(engine.calls.back().frameIndex, 0);
  }
}

TEST(RunDriverProtocol, InOverlapModeTheFramesSurviveTheEngine) {
  FakeEngine engine;
  engine.overwritesFrames = true;
  engine.answers = {FakeEngine::noEstimate(), FakeEngine::noEstimate()};
  RunSettings overlap = settings();
  overlap.overlapMode = true;
  RunDriver run(overlap, engine.entryPoints());
  const cv::Mat second = frame(2);
  run.offer(frame(1));
  run.offer(second);
  EXPECT_EQ(cv::norm(second, frame(2), cv::NORM_INF), 0);
  run.offer(frame(3));
  EXPECT_EQ(engine.calls[1].reference, bytes(1));
}

TEST(RunDriverProtocol, TheFirstFrameIsKeptEvenIfTheCallerReusesItsBuffer) {
  FakeEngine engine;
  engine.answers = {FakeEngine::blended(3, 1)};
  RunDriver run(settings(), engine.entryPoints());
  cv::Mat buffer = frame(1);
  run.offer(buffer);
  buffer.setTo(2);
  run.offer(buffer);
  EXPECT_EQ(engine.calls[0].reference, bytes(1));
}

TEST(RunDriverProtocol, TheStartReceivesTheSettings) {
  FakeEngine engine;
  RunSettings all{kRows, kCols, 3, true, true, 2, 5, 700, 900};
  RunDriver run(all, engine.entryPoints());
  EXPECT_EQ(engine.startArguments, (std::vector<int>{kRows, kCols, 3, 5, 700, 900, 0, 1}));
}

TEST(RunDriverProtocol, TheDefaultIsMotionOfAStaticScene) {
  FakeEngine engine;
  RunDriver run(settings(), engine.entryPoints());
  EXPECT_EQ(engine.startArguments, (std::vector<int>{kRows, kCols, 1, 1, 20000, 20000, 1, 0}));
}

TEST(RunDriverProtocol, TheRunIsStoppedOnceAtTheEnd) {
  FakeEngine engine;
  {
    RunDriver run(settings(), engine.entryPoints());
    EXPECT_EQ(engine.stops, 0);
  }
  EXPECT_EQ(engine.stops, 1);
}

TEST(RunDriverProtocol, AStartThatFailsIsStoppedToo) {
  FakeEngine engine;
  engine.onStart = [] { return false; };
  EXPECT_THROW(RunDriver(settings(), engine.entryPoints()), ToolError);
  EXPECT_EQ(engine.stops, 1);
  engine.onStart = []() -> bool { throw std::bad_alloc(); };
  EXPECT_THROW(RunDriver(settings(), engine.entryPoints()), std::bad_alloc);
  EXPECT_EQ(engine.stops, 2);
}

TEST(RunDriverProtocol, FramesAboveTheMosaicsSideAreRefusedNamingScale) {
  FakeEngine engine;
  EXPECT_NO_THROW(RunDriver({6000, 6000, 1}, engine.entryPoints()));
  EXPECT_NO_THROW(RunDriver({12001, 5, 1, false, false, 2}, engine.entryPoints()));
  const auto errorOf = [&](const RunSettings& large) -> std::string {
    try {
      RunDriver run(large, engine.entryPoints());
    } catch (const ToolError& failure) {
      return failure.what();
    }
    return "no error";
  };
  EXPECT_EQ(errorOf({5, 6001, 1}),
            "frames of 6001 x 5 pixels are more than 6000 a side: use --scale 2");
  EXPECT_EQ(errorOf({12002, 5, 1}),
            "frames of 5 x 12002 pixels are more than 6000 a side even halved: make them smaller");
  EXPECT_EQ(errorOf({12002, 5, 1, false, false, 2}),
            "frames of 5 x 12002 pixels are more than 6000 a side even halved: make them smaller");
}
