// SPDX-License-Identifier: Apache-2.0
// Why frames are refused, and the measures that come back with them.
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/core.hpp>
#include <vector>

#include "framequilt/session.h"
#include "framequilt/tuning.h"
#include "tests/support/scoped_value.h"
#include "tests/support/scripted_engine.h"
#include "tests/support/session_frames.h"

using framequilt::Criterion;
using framequilt::FrameResult;
using framequilt::Measure;
using framequilt::Refusal;
using framequilt::Session;
using framequilt::SessionOptions;
using framequilt::Verdict;

namespace {

// Limits of movement: 10 and 90 of 100 columns, 5 and 45 of 50 rows.
constexpr int kRows = 50;
constexpr int kCols = 100;

SessionOptions options(Criterion criterion = Criterion::kMotion, int scale = 1) {
  SessionOptions options = grayOptions(kRows, kCols);
  options.criterion = criterion;
  options.scale = scale;
  return options;
}

cv::Mat frame() { return cv::Mat(kRows, kCols, CV_8UC1, cv::Scalar(9)); }

/// The results of frames that meet these answers, after a first frame.
std::vector<FrameResult> results(const std::vector<ScriptedEngine::Answer>& answers,
                                 const SessionOptions& asked = options()) {
  ScriptedEngine engine;
  engine.answers = answers;
  Session session(asked);
  session.add(frame());
  std::vector<FrameResult> all;
  for (std::size_t i = 0; i < answers.size(); ++i) all.push_back(session.add(frame()));
  return all;
}

FrameResult resultOf(const ScriptedEngine::Answer& answer,
                     const SessionOptions& asked = options()) {
  return results({answer}, asked)[0];
}

/// Measures of the overlap criterion that a frame failed.
ScriptedEngine::Answer overlap(float bright, float otherBright, float sharp, float otherSharp) {
  return [=](ScriptedEngine::Run& run) {
    run.flags.brightOne = bright;
    run.flags.brightTwo = otherBright;
    run.flags.definitionOne = sharp;
    run.flags.definitionTwo = otherSharp;
    return ScriptedEngine::measured(30, 0)(run);
  };
}

class OverlapReasons : public testing::Test {
 protected:
  static FrameResult resultOf(const ScriptedEngine::Answer& answer) {
    return results({answer}, options(Criterion::kOverlap))[0];
  }

 private:
  ScopedValue<float> bright_{brightThCpu, 40.0F};
  ScopedValue<float> sharp_{defintThCpu, 30.0F};
};

}  // namespace

TEST(SessionReasons, AFailureWithoutACountFoundNoOverlap) {
  const FrameResult result = resultOf(ScriptedEngine::noEstimate());
  EXPECT_EQ(result.verdict, Verdict::kRefused);
  EXPECT_EQ(result.reason, Refusal::kNoOverlap);
  EXPECT_EQ(explain(result), "no overlap found: matches 0, needs at least 11");
}

TEST(SessionReasons, AFailureThatCountedPairsHadTooFew) {
  const FrameResult result = resultOf(ScriptedEngine::failedWith(10));
  EXPECT_EQ(result.reason, Refusal::kTooFewMatches);
  EXPECT_EQ(explain(result), "too few matches: matches 10, needs at least 11");
  EXPECT_EQ(resultOf(ScriptedEngine::failedWith(4)).reason, Refusal::kTooFewMatches);
}

TEST(SessionReasons, PairsThatAgreeByChanceAreNoOverlap) {
  const FrameResult result = resultOf(ScriptedEngine::failedWith(3));
  EXPECT_EQ(result.reason, Refusal::kNoOverlap);
  EXPECT_EQ(explain(result), "no overlap found: matches 3, needs at least 11");
}

TEST(SessionReasons, ACountLeftByAnEarlierFrameIsNoReason) {
  const auto all = results({ScriptedEngine::blended(30, 0), ScriptedEngine::noEstimate(),
                            ScriptedEngine::failedWith(7), ScriptedEngine::noEstimate(),
                            ScriptedEngine::failedWith(7), ScriptedEngine::failedWith(7)});
  EXPECT_EQ(all[1].reason, Refusal::kNoOverlap);
  EXPECT_EQ(all[2].reason, Refusal::kTooFewMatches);
  EXPECT_EQ(all[3].reason, Refusal::kNoOverlap);
  EXPECT_EQ(all[4].reason, Refusal::kTooFewMatches);
  EXPECT_EQ(all[5].reason, Refusal::kTooFewMatches);
}

TEST(SessionReasons, AFailureMeasuresNothingButItsPairs) {
  const FrameResult result =
      results({ScriptedEngine::blended(30, 0), ScriptedEngine::failedWith(3)})[1];
  EXPECT_EQ(result.measures.matches.value, 3);
  EXPECT_EQ(result.measures.matches.limit, 11);
  EXPECT_FALSE(result.measures.offset);
  EXPECT_FALSE(result.measures.moved);
  EXPECT_FALSE(result.measures.overlap);
  EXPECT_FALSE(result.measures.change);
  EXPECT_FALSE(result.measures.brightness);
  EXPECT_FALSE(result.measures.sharpness);
}

TEST(SessionReasons, TheLongerWayDecidesWhatIsTooLittleAndTooFar) {
  const auto reasonOf = [](int dx, int dy) {
    return resultOf(ScriptedEngine::qualified(dx, dy)).reason;
  };
  EXPECT_EQ(reasonOf(0, 0), Refusal::kMovedTooLittle);
  EXPECT_EQ(reasonOf(-10, 3), Refusal::kMovedTooLittle);
  EXPECT_EQ(reasonOf(90, 3), Refusal::kMovedTooFar);
  EXPECT_EQ(reasonOf(-99, 3), Refusal::kMovedTooFar);
  EXPECT_EQ(reasonOf(2, 5), Refusal::kMovedTooLittle);
  EXPECT_EQ(reasonOf(2, -45), Refusal::kMovedTooFar);
  EXPECT_EQ(reasonOf(45, -45), Refusal::kMovedTooFar);
}

TEST(SessionReasons, MovementIsInPercentOfTheSideItGoesAlong) {
  EXPECT_EQ(explain(resultOf(ScriptedEngine::qualified(-7, 3))),
            "moved too little: moved by 7 %, needs more than 10 %");
  EXPECT_EQ(explain(resultOf(ScriptedEngine::qualified(1, 3))),
            "moved too little: moved by 6 %, needs more than 10 %");
  EXPECT_EQ(explain(resultOf(ScriptedEngine::qualified(94, 3))),
            "moved too far: overlap 6 %, needs more than 10 %");
  EXPECT_EQ(explain(resultOf(ScriptedEngine::qualified(3, -47))),
            "moved too far: overlap 6 %, needs more than 10 %");
  // Half the size, half the way.
  EXPECT_EQ(explain(resultOf(ScriptedEngine::qualified(47, 0), options(Criterion::kMotion, 2))),
            "moved too far: overlap 6 %, needs more than 10 %");
}

TEST(SessionReasons, FollowTheLimitsInForce) {
  const ScopedValue<float> least(ImageOverlap_minCpu, 0.25F);
  const ScopedValue<float> most(ImageOverlap_maxCpu, 0.5F);
  EXPECT_EQ(explain(resultOf(ScriptedEngine::qualified(50, 0))),
            "moved too little: moved by 50 %, needs more than 50 %");
  EXPECT_EQ(explain(resultOf(ScriptedEngine::qualified(75, 0))),
            "moved too far: overlap 25 %, needs more than 25 %");
}

TEST(SessionReasons, AnEstimateThatDidNotQualifyByMotionIsAMovingScene) {
  const auto all = results({ScriptedEngine::blended(30, 0), ScriptedEngine::measured(30, 0)});
  EXPECT_EQ(all[1].verdict, Verdict::kRefused);
  EXPECT_EQ(all[1].reason, Refusal::kMovingScene);
}

TEST(SessionReasons, AJoinedFrameHasItsMeasuresAndNoReason) {
  const FrameResult result = resultOf(ScriptedEngine::blended(30, -5));
  EXPECT_EQ(result.reason, Refusal::kNone);
  EXPECT_EQ(explain(result), "");
  EXPECT_EQ(result.measures.matches.value, 50);
  EXPECT_EQ(result.measures.offset, cv::Point(30, -5));
  EXPECT_DOUBLE_EQ(result.measures.moved.value_or(Measure{}).value, 30.0);
  EXPECT_DOUBLE_EQ(result.measures.overlap.value_or(Measure{}).value, 70.0);
}

TEST(SessionReasons, OffsetsAreInFramePixels) {
  const FrameResult result =
      resultOf(ScriptedEngine::blended(15, -4), options(Criterion::kMotion, 2));
  EXPECT_EQ(result.measures.offset, cv::Point(30, -8));
}

TEST_F(OverlapReasons, BrightnessIsNamedFirst) {
  EXPECT_EQ(explain(resultOf(overlap(100, 140, 50, 50))),
            "brightness differs: difference 40 gray levels, needs less than 40 gray levels");
  EXPECT_EQ(resultOf(overlap(140, 99.5F, 50, 150)).reason, Refusal::kBrightness);
  EXPECT_EQ(explain(resultOf(overlap(NAN, NAN, 50, 50))),
            "brightness differs: difference not measurable, needs less than 40 gray levels");
}

TEST_F(OverlapReasons, SharpnessWhenTheBrightnessFits) {
  EXPECT_EQ(explain(resultOf(overlap(100, 139, 50, 80.5F))),
            "sharpness differs: difference 30.5 levels, needs less than 30 levels");
  EXPECT_EQ(explain(resultOf(overlap(100, 100, NAN, NAN))),
            "sharpness differs: difference not measurable, needs less than 30 levels");
}

TEST_F(OverlapReasons, BothDifferencesComeBackWithEveryEstimate) {
  const FrameResult result = resultOf(overlap(100, 102.5F, 90, 50));
  EXPECT_DOUBLE_EQ(result.measures.brightness.value_or(Measure{}).value, 2.5);
  EXPECT_DOUBLE_EQ(result.measures.brightness.value_or(Measure{}).limit, 40);
  EXPECT_DOUBLE_EQ(result.measures.sharpness.value_or(Measure{}).value, 40);
  EXPECT_DOUBLE_EQ(result.measures.sharpness.value_or(Measure{}).limit, 30);
  EXPECT_FALSE(result.measures.change);
}

TEST_F(OverlapReasons, TheLatchOfAnEarlierFrameQualifiesNoOther) {
  const auto all = results({ScriptedEngine::blended(30, 0), overlap(100, 150, 50, 50)},
                           options(Criterion::kOverlap));
  EXPECT_EQ(all[1].reason, Refusal::kBrightness);
}
