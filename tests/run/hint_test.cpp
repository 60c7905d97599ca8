// SPDX-License-Identifier: Apache-2.0
// A displacement known beforehand limits where corners are searched.
#include <gtest/gtest.h>

#include <string>

#include "tests/run/captures.h"

namespace {

constexpr int kRows = 240;
constexpr int kCols = 320;
constexpr SPoint kReference = {200, 150};

struct HintedStep {
  std::string name;
  SPoint step, hint;
};

void PrintTo(const HintedStep& step, std::ostream* out) { *out << step.name; }

class Hints : public testing::TestWithParam<HintedStep> {
 protected:
  FrameOutcome outcomeWith(Hint hint) const {
    const Scene scene(560, 700, 1, 11);
    RunSettings settings;
    settings.rows = kRows;
    settings.cols = kCols;
    CaptureRun run(settings);
    const SPoint corner = kReference + GetParam().step;
    return run.first(scene.cut(kReference.x, kReference.y, kRows, kCols),
                     scene.cut(corner.x, corner.y, kRows, kCols), hint);
  }

  FrameOutcome outcomeWith(SPoint hint) const { return outcomeWith(Hint{hint.x, hint.y, true}); }

  void expectPlaced(const FrameOutcome& outcome) const {
    EXPECT_EQ(outcome.result, 0);
    EXPECT_TRUE(outcome.joined());
    EXPECT_EQ(outcome.flags.offsetX, GetParam().step.x);
    EXPECT_EQ(outcome.flags.offsetY, GetParam().step.y);
  }
};

// Of a step to the left the rows are taken the other way round.
INSTANTIATE_TEST_SUITE_P(, Hints,
                         testing::Values(HintedStep{"RightDown", {110, 70}, {110, 70}},
                                         HintedStep{"RightUp", {110, -70}, {110, -70}},
                                         HintedStep{"LeftDown", {-110, 70}, {-110, -70}},
                                         HintedStep{"LeftUp", {-110, -70}, {-110, 70}},
                                         HintedStep{"Right", {140, 0}, {140, 0}},
                                         HintedStep{"Down", {0, 100}, {0, 100}}),
                         [](const auto& instance) { return instance.param.name; });

TEST_P(Hints, LeadToTheSamePlaceWithMorePairs) {
  const FrameOutcome unhinted = outcomeWith(Hint{});
  const FrameOutcome hinted = outcomeWith(GetParam().hint);
  expectPlaced(unhinted);
  expectPlaced(hinted);
  // The whole budget of corners goes to the part that both frames show.
  EXPECT_GT(hinted.flags.matchNum, unhinted.flags.matchNum);
}

TEST_P(Hints, MayBeAFewPixelsOff) {
  // Corners lie on every second pixel of a strip, and pairs agree when they differ by one of those.
  const FrameOutcome outcome = outcomeWith(GetParam().hint + (SPoint{5, -3}));
  ASSERT_TRUE(outcome.joined());
  EXPECT_NEAR(outcome.flags.offsetX, GetParam().step.x, 2);
  EXPECT_NEAR(outcome.flags.offsetY, GetParam().step.y, 2);
}

TEST_P(Hints, CountOnlyWhileTheirFlagIsSet) {
  const Hint unset = {-GetParam().hint.x, -GetParam().hint.y, false};
  const FrameOutcome outcome = outcomeWith(unset);
  expectPlaced(outcome);
  EXPECT_EQ(outcome.flags.matchNum, outcomeWith(Hint{}).flags.matchNum);
}

TEST_P(Hints, OfTheOppositeDirectionSearchWhereNothingIsShared) {
  // At more than half a frame the two strips have no scene in common.
  const SPoint step = GetParam().step;
  const SPoint wrong = {step.x == 0 ? 0 : (step.x > 0 ? -250 : 250),
                        step.y == 0 ? 0 : (step.y > 0 ? -190 : 190)};
  const FrameOutcome outcome = outcomeWith(wrong);
  EXPECT_FALSE(outcome.joined() && outcome.flags.offsetX == step.x &&
               outcome.flags.offsetY == step.y);
}

TEST(HintsLeft, WithTheRowsAsTheyAreSearchTheWrongRows) {
  const Scene scene(560, 700, 1, 11);
  RunSettings settings;
  const SPoint step = {-110, 150};
  const Frame reference = scene.cut(250, 100, kRows, kCols);
  const Frame frame = scene.cut(250 + step.x, 100 + step.y, kRows, kCols);
  const auto matches = [&](int dy) {
    CaptureRun run(settings);
    const FrameOutcome outcome = run.first(reference, frame, {step.x, dy, true});
    return outcome.result == 0 ? outcome.flags.matchNum : 0;
  };
  // 90 rows are shared. The strips are 90 rows each: the shared ones, or those farthest from them.
  EXPECT_GT(matches(-step.y), 10);
  EXPECT_EQ(matches(step.y), 0);
}

}  // namespace
