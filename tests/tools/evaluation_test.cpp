// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/evaluation.h"

#include <gtest/gtest.h>

#include "tools/framequilt/evaluation_report.h"

using framequilt::tool::EvaluatedFrame;
using framequilt::tool::evaluatePlacements;
using framequilt::tool::Evaluation;
using framequilt::tool::evaluationJson;
using framequilt::tool::evaluationText;

namespace {

EvaluatedFrame placed(int number, cv::Point2d placement, cv::Point2d truth) {
  return {number, placement, truth};
}
EvaluatedFrame refused(int number, cv::Point2d truth) { return {number, std::nullopt, truth}; }

/// Steps are off by 3-4-5 (the third frame) and by 1.5 (the fifth).
const std::vector<EvaluatedFrame> kFrames = {refused(1, {0, 0}), placed(2, {0, 0}, {100, 50}),
                                             placed(3, {13, 4}, {110, 50}), refused(4, {120, 50}),
                                             placed(5, {33, 5.5}, {130, 50})};

}  // namespace

TEST(Evaluation, FramesAreCountedAndJoinedOnesToo) {
  const Evaluation result = evaluatePlacements(kFrames);
  EXPECT_EQ(result.frames, 5);
  EXPECT_EQ(result.joined, 3);
  EXPECT_DOUBLE_EQ(result.joinedPercent(), 60);
}

TEST(Evaluation, AStepLeadsFromTheJoinedFrameBefore) {
  const Evaluation result = evaluatePlacements(kFrames);
  ASSERT_TRUE(result.step);
  EXPECT_DOUBLE_EQ(result.step->median, 1.5);
  EXPECT_DOUBLE_EQ(result.step->p95, 5);
  EXPECT_DOUBLE_EQ(result.step->max, 5);
  EXPECT_EQ(result.misplaced, std::vector<int>{3});
}

TEST(Evaluation, PlacementsCountFromTheFirstJoinedFrame) {
  const Evaluation result = evaluatePlacements(kFrames);
  ASSERT_TRUE(result.placement);
  EXPECT_DOUBLE_EQ(result.placement->median, 5);
  EXPECT_DOUBLE_EQ(result.placement->max, std::hypot(3, 5.5));
  EXPECT_DOUBLE_EQ(result.drift.value(), std::hypot(3, 5.5));
}

TEST(Evaluation, DriftIsTheErrorOfTheLastFrameNotTheLargest) {
  const Evaluation result = evaluatePlacements(
      {placed(1, {0, 0}, {0, 0}), placed(2, {9, 0}, {0, 0}), placed(3, {1, 0}, {0, 0})});
  EXPECT_DOUBLE_EQ(result.drift.value(), 1);
  EXPECT_DOUBLE_EQ(result.placement->max, 9);
  EXPECT_EQ(result.misplaced, (std::vector<int>{2, 3}));
}

TEST(Evaluation, FourPixelsAreNotMisplacedYet) {
  EXPECT_TRUE(
      evaluatePlacements({placed(1, {0, 0}, {0, 0}), placed(2, {0, 4}, {0, 0})}).misplaced.empty());
  EXPECT_FALSE(evaluatePlacements({placed(1, {0, 0}, {0, 0}), placed(2, {0, 4.01}, {0, 0})})
                   .misplaced.empty());
}

TEST(Evaluation, PercentilesAreNearestRanks) {
  std::vector<EvaluatedFrame> frames = {placed(0, {0, 0}, {0, 0})};
  for (int i = 1; i <= 20; ++i) {  // The step to frame i is off by i hundredths.
    frames.push_back(placed(i, *frames.back().placement + cv::Point2d(0.01 * i, 0), {0, 0}));
  }
  const Evaluation result = evaluatePlacements(frames);
  EXPECT_NEAR(result.step->median, 0.10, 1e-9);
  EXPECT_NEAR(result.step->p95, 0.19, 1e-9);
  EXPECT_NEAR(result.step->max, 0.20, 1e-9);
  EXPECT_NEAR(result.placement->median, 0.55, 1e-9);
}

TEST(Evaluation, OneJoinedFrameTellsNothingOfErrors) {
  for (const auto& frames :
       {std::vector<EvaluatedFrame>{}, {refused(1, {0, 0}), placed(2, {0, 0}, {5, 5})}}) {
    const Evaluation result = evaluatePlacements(frames);
    EXPECT_FALSE(result.step);
    EXPECT_FALSE(result.placement);
    EXPECT_FALSE(result.drift);
    EXPECT_TRUE(result.misplaced.empty());
  }
}

TEST(EvaluationReport, LinesTellAllNumbers) {
  EXPECT_EQ(evaluationText(evaluatePlacements(kFrames)),
            "frames: 5\n"
            "joined: 3 (60.0 %)\n"
            "step error (px): median 1.50, p95 5.00, max 5.00\n"
            "misplaced steps (> 4 px): 1 (frames 3)\n"
            "drift (px): 6.26\n"
            "placement error (px): median 5.00, max 6.26\n");
}

TEST(EvaluationReport, MisplacedFramesAreListed) {
  Evaluation evaluation;
  evaluation.misplaced = {3, 12, 40};
  EXPECT_NE(evaluationText(evaluation).find("misplaced steps (> 4 px): 3 (frames 3, 12, 40)\n"),
            std::string::npos);
}

TEST(EvaluationReport, UnknownErrorsAreDashes) {
  EXPECT_EQ(evaluationText(evaluatePlacements({})),
            "frames: 0\njoined: 0 (0.0 %)\nstep error (px): -\nmisplaced steps (> 4 px): 0\n"
            "drift (px): -\nplacement error (px): -\n");
}

TEST(EvaluationReport, JsonTellsTheSame) {
  Evaluation evaluation = evaluatePlacements(kFrames);
  evaluation.drift = 6.25;
  evaluation.placement->max = 6.5;
  EXPECT_EQ(evaluationJson(evaluation),
            "{\n"
            "  \"frames\": 5,\n"
            "  \"joined\": 3,\n"
            "  \"joined_percent\": 60.0,\n"
            "  \"step_error_px\": {\n"
            "    \"median\": 1.5,\n"
            "    \"p95\": 5.0,\n"
            "    \"max\": 5.0\n"
            "  },\n"
            "  \"misplaced_steps\": [\n"
            "    3\n"
            "  ],\n"
            "  \"drift_px\": 6.25,\n"
            "  \"placement_error_px\": {\n"
            "    \"median\": 5.0,\n"
            "    \"max\": 6.5\n"
            "  }\n"
            "}\n");
}

TEST(EvaluationReport, UnknownErrorsAreNullInJson) {
  EXPECT_EQ(evaluationJson(evaluatePlacements({})),
            "{\n"
            "  \"frames\": 0,\n"
            "  \"joined\": 0,\n"
            "  \"joined_percent\": 0.0,\n"
            "  \"step_error_px\": {\n"
            "    \"median\": null,\n"
            "    \"p95\": null,\n"
            "    \"max\": null\n"
            "  },\n"
            "  \"misplaced_steps\": [],\n"
            "  \"drift_px\": null,\n"
            "  \"placement_error_px\": {\n"
            "    \"median\": null,\n"
            "    \"max\": null\n"
            "  }\n"
            "}\n");
}
