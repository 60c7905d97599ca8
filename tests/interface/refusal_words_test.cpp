// SPDX-License-Identifier: Apache-2.0
// The words for refusals, to the byte: users and scripts compare them.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "framequilt/session.h"

using framequilt::explain;
using framequilt::Refusal;
using framequilt::RefusalWords;
using framequilt::wordsFor;

namespace {

struct Expected {
  Refusal refusal;
  std::string reason, quantity, unit, relation, advice;
  std::string line;        ///< Of value 12 and limit 34.5.
  std::string unmeasured;  ///< Of no value and limit 34.5.
};

const std::vector<Expected> kExpected = {
    {Refusal::kNoOverlap, "no overlap found", "matches", "", "needs at least",
     "let neighbouring frames share about half, in focus and with texture",
     "no overlap found: matches 12, needs at least 34.5",
     "no overlap found: matches not measurable, needs at least 34.5"},
    {Refusal::kTooFewMatches, "too few matches", "matches", "", "needs at least",
     "let frames overlap more, or raise the corner budget",
     "too few matches: matches 12, needs at least 34.5",
     "too few matches: matches not measurable, needs at least 34.5"},
    {Refusal::kMovedTooLittle, "moved too little", "moved by", "%", "needs more than",
     "nothing is lost: move on, or hand over fewer frames",
     "moved too little: moved by 12 %, needs more than 34.5 %",
     "moved too little: moved by not measurable, needs more than 34.5 %"},
    {Refusal::kMovedTooFar, "moved too far", "overlap", "%", "needs more than",
     "slow down or take frames more often", "moved too far: overlap 12 %, needs more than 34.5 %",
     "moved too far: overlap not measurable, needs more than 34.5 %"},
    {Refusal::kMovingScene, "moving scene", "change", "gray levels", "needs less than",
     "let the scene come to rest, or treat it as static",
     "moving scene: change 12 gray levels, needs less than 34.5 gray levels",
     "moving scene: change not measurable, needs less than 34.5 gray levels"},
    {Refusal::kBrightness, "brightness differs", "difference", "gray levels", "needs less than",
     "keep exposure and lighting fixed",
     "brightness differs: difference 12 gray levels, needs less than 34.5 gray levels",
     "brightness differs: difference not measurable, needs less than 34.5 gray levels"},
    {Refusal::kSharpness, "sharpness differs", "difference", "levels", "needs less than",
     "keep the focus, and hold still while a frame is taken",
     "sharpness differs: difference 12 levels, needs less than 34.5 levels",
     "sharpness differs: difference not measurable, needs less than 34.5 levels"},
    {Refusal::kMosaicFull, "mosaic full", "size", "pixels", "limit",
     "raise the limit of rows and columns, or begin another mosaic",
     "mosaic full: size 12 pixels, limit 34.5 pixels",
     "mosaic full: size not measurable, limit 34.5 pixels"},
};

std::string numberIn(double value) {
  const std::string line = explain(Refusal::kNoOverlap, {value, 1});
  const std::string start = "no overlap found: matches ";
  const std::string end = ", needs at least 1";
  EXPECT_EQ(line.substr(0, start.size()), start);
  EXPECT_EQ(line.substr(line.size() - end.size()), end);
  return line.substr(start.size(), line.size() - start.size() - end.size());
}

}  // namespace

TEST(RefusalWords, AreWhatEveryToolSays) {
  for (const Expected& expected : kExpected) {
    const RefusalWords& words = wordsFor(expected.refusal);
    EXPECT_EQ(words.reason, expected.reason);
    EXPECT_EQ(words.quantity, expected.quantity);
    EXPECT_EQ(words.unit, expected.unit);
    EXPECT_EQ(words.relation, expected.relation);
    EXPECT_EQ(words.advice, expected.advice);
  }
}

TEST(RefusalWords, OfNoRefusalAreEmpty) {
  const RefusalWords& words = wordsFor(Refusal::kNone);
  EXPECT_TRUE(words.reason.empty() && words.quantity.empty() && words.unit.empty() &&
              words.relation.empty() && words.advice.empty());
  EXPECT_EQ(explain(Refusal::kNone, {12, 34}), "");
}

TEST(RefusalLine, NamesReasonMeasureAndLimit) {
  for (const Expected& expected : kExpected) {
    EXPECT_EQ(explain(expected.refusal, {12, 34.5}), expected.line);
    EXPECT_EQ(explain(expected.refusal, {NAN, 34.5}), expected.unmeasured);
  }
}

TEST(RefusalLine, IsThatOfTheResult) {
  framequilt::FrameResult result;
  EXPECT_EQ(explain(result), "");
  result.reason = Refusal::kMovedTooFar;
  result.judged = {6, 10};
  EXPECT_EQ(explain(result), "moved too far: overlap 6 %, needs more than 10 %");
}

TEST(RefusalLine, ShowsWholeNumbersPlainlyAndOthersWithOneDecimal) {
  EXPECT_EQ(numberIn(0), "0");
  EXPECT_EQ(numberIn(10.0000024), "10");
  EXPECT_EQ(numberIn(9.9999976), "10");
  EXPECT_EQ(numberIn(10.04), "10.0");
  EXPECT_EQ(numberIn(10.06), "10.1");
  EXPECT_EQ(numberIn(-2.5), "-2.5");
  EXPECT_EQ(numberIn(36000000), "36000000");
  EXPECT_EQ(numberIn(2147483647), "2147483647");
}
