// SPDX-License-Identifier: Apache-2.0
#include <framequilt/tuning.h>
#include <gtest/gtest.h>

#include <cmath>
#include <new>
#include <vector>

#include "fake_engine.h"
#include "tools/framequilt/run_driver.h"

using framequilt::tool::Outcome;
using framequilt::tool::Refusal;
using framequilt::tool::RunDriver;
using framequilt::tool::RunSettings;
using Verdict = framequilt::tool::Outcome::Verdict;

namespace {

// Limits of movement: 10 and 90 of 100 columns, 5 and 45 of 50 rows.
constexpr int kRows = 50;
constexpr int kCols = 100;

cv::Mat frame() { return cv::Mat(kRows, kCols, CV_8UC1, cv::Scalar(9)); }

/// The outcomes of frames that meet these answers, after a first frame.
std::vector<Outcome> outcomes(const std::vector<FakeEngine::Answer>& answers,
                              const RunSettings& settings = {kRows, kCols, 1}) {
  FakeEngine engine;
  engine.answers = answers;
  RunDriver run(settings, engine.entryPoints());
  run.offer(frame());
  std::vector<Outcome> results;
  for (std::size_t i = 0; i < answers.size(); ++i) results.push_back(run.offer(frame()));
  return results;
}

FakeEngine::Answer failedWithMatches(int matches) {
  return [=](FakeEngine::Run& run) {
    run.flags.matchNum = matches;
    return -1;
  };
}

/// Measures of the overlap criterion that a frame failed.
FakeEngine::Answer measured(float bright, float otherBright, float sharp, float otherSharp) {
  return [=](FakeEngine::Run& run) {
    run.flags.brightOne = bright;
    run.flags.brightTwo = otherBright;
    run.flags.definitionOne = sharp;
    run.flags.definitionTwo = otherSharp;
    return 0;
  };
}

class OverlapReasons : public testing::Test {
 protected:
  void SetUp() override {
    brightThCpu = 40;
    defintThCpu = 30;
  }
  void TearDown() override { brightThCpu = defintThCpu = 0; }

  static Refusal reasonOf(const FakeEngine::Answer& answer) {
    RunSettings settings{kRows, kCols, 1};
    settings.overlapMode = true;
    return outcomes({answer}, settings)[0].refusal;
  }
};

}  // namespace

TEST(RunDriverReasons, AFailureWithoutACountFoundNoOverlap) {
  EXPECT_EQ(outcomes({FakeEngine::noEstimate()})[0].refusal, Refusal::kNoOverlap);
}

TEST(RunDriverReasons, AFailureThatCountedPairsHadTooFew) {
  EXPECT_EQ(outcomes({failedWithMatches(10)})[0].refusal, Refusal::kTooFewMatches);
}

TEST(RunDriverReasons, ACountLeftByAnEarlierFrameIsNoReason) {
  const auto results = outcomes({FakeEngine::blended(30, 0), FakeEngine::noEstimate(),
                                 failedWithMatches(7), FakeEngine::noEstimate()});
  EXPECT_EQ(results[1].refusal, Refusal::kNoOverlap);
  EXPECT_EQ(results[2].refusal, Refusal::kTooFewMatches);
  EXPECT_EQ(results[3].refusal, Refusal::kNoOverlap);
}

TEST(RunDriverReasons, TheLongerWayDecidesWhatIsTooLittleAndTooFar) {
  const auto reasonOf = [](int dx, int dy) {
    return outcomes({FakeEngine::qualified(dx, dy)})[0].refusal;
  };
  EXPECT_EQ(reasonOf(0, 0), Refusal::kMovedTooLittle);
  EXPECT_EQ(reasonOf(-10, 3), Refusal::kMovedTooLittle);
  EXPECT_EQ(reasonOf(90, 3), Refusal::kMovedTooFar);
  EXPECT_EQ(reasonOf(-99, 3), Refusal::kMovedTooFar);
  EXPECT_EQ(reasonOf(2, 5), Refusal::kMovedTooLittle);
  EXPECT_EQ(reasonOf(2, -45), Refusal::kMovedTooFar);
  EXPECT_EQ(reasonOf(45, -45), Refusal::kMovedTooFar);
}

TEST(RunDriverReasons, AnEstimateThatDidNotQualifyByMotionIsAMovingScene) {
  const auto results = outcomes({FakeEngine::blended(30, 0), [](FakeEngine::Run& run) {
                                   FakeEngine::qualified(30, 0)(run);
                                   run.flags.stitch_flags = 0;
                                   return 0;
                                 }});
  EXPECT_EQ(results[1].verdict, Verdict::kRefused);
  EXPECT_EQ(results[1].refusal, Refusal::kMovingScene);
}

TEST_F(OverlapReasons, BrightnessIsNamedFirst) {
  EXPECT_EQ(reasonOf(measured(100, 140, 50, 50)), Refusal::kBrightness);
  EXPECT_EQ(reasonOf(measured(140, 100, 50, 150)), Refusal::kBrightness);
  EXPECT_EQ(reasonOf(measured(NAN, NAN, 50, 50)), Refusal::kBrightness);
}

TEST_F(OverlapReasons, SharpnessWhenTheBrightnessFits) {
  EXPECT_EQ(reasonOf(measured(100, 139, 50, 80)), Refusal::kSharpness);
  EXPECT_EQ(reasonOf(measured(100, 100, NAN, NAN)), Refusal::kSharpness);
}

TEST(RunDriverPlacements, StayWhenTheMosaicGrowsLeftAndUp) {
  const auto results =
      outcomes({FakeEngine::blended(-30, -10, kCols, kRows), FakeEngine::blended(-30, 4),
                FakeEngine::blended(-30, -20, 0, kRows), FakeEngine::blended(7, 30)});
  EXPECT_EQ(results[0].placement, cv::Point(-30, -10));
  EXPECT_EQ(results[1].placement, cv::Point(-60, -6));
  EXPECT_EQ(results[2].placement, cv::Point(-90, -26));
  EXPECT_EQ(results[3].placement, cv::Point(-83, 4));
}

TEST(RunDriverPlacements, AreInPixelsOfTheFrames) {
  RunSettings halved{kRows, kCols, 1};
  halved.scale = 2;
  EXPECT_EQ(outcomes({FakeEngine::blended(15, -4)}, halved)[0].placement, cv::Point(30, -8));
}

TEST(RunDriverPlacements, AJoinedFrameTellsItsMatches) {
  EXPECT_EQ(outcomes({FakeEngine::blended(30, 0)})[0].matches, 50);
}

TEST(RunDriverResult, OneSaysThatTheMosaicIsFull) {
  const auto results = outcomes({FakeEngine::blended(30, 0), [](FakeEngine::Run& run) {
                                   FakeEngine::blended(30, 0)(run);
                                   return 1;
                                 }});
  EXPECT_FALSE(results[0].full);
  EXPECT_TRUE(results[1].full);
  EXPECT_EQ(results[1].verdict, Verdict::kJoined);
}

TEST(RunDriverMosaic, IsTheFilledBoxOnceAFrameJoined) {
  FakeEngine engine;
  const cv::Mat whole(60, 80, CV_8UC1, cv::Scalar(3));
  const auto placed = [&](FakeEngine::Run& run) {
    run.topLeft = {10, 20};
    run.bottomRight = {50, 55};
    run.mosaic = whole;
    return FakeEngine::blended(30, 0)(run);
  };
  engine.answers = {FakeEngine::noEstimate(), placed};
  RunDriver run({kRows, kCols, 1}, engine.entryPoints());
  run.offer(frame());
  EXPECT_TRUE(run.mosaic().empty());
  run.offer(frame());
  EXPECT_TRUE(run.mosaic().empty());
  run.offer(frame());
  EXPECT_EQ(run.mosaic().size(), cv::Size(40, 35));
  EXPECT_EQ(run.mosaic().data, whole.ptr(20) + 10);
}

TEST(RunDriverMosaic, StaysWhenAFrameThrows) {
  FakeEngine engine;
  engine.answers = {[](FakeEngine::Run& run) {
                      run.bottomRight = {4, 3};
                      run.mosaic = cv::Mat(9, 9, CV_8UC1, cv::Scalar(3));
                      return FakeEngine::blended(30, 0)(run);
                    },
                    [](FakeEngine::Run&) -> int { throw std::bad_alloc(); }};
  RunDriver run({kRows, kCols, 1}, engine.entryPoints());
  run.offer(frame());
  run.offer(frame());
  EXPECT_THROW(run.offer(frame()), std::bad_alloc);
  EXPECT_EQ(run.mosaic().size(), cv::Size(4, 3));
}
