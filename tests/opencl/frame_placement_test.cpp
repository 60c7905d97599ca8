// SPDX-License-Identifier: Apache-2.0
// Where frames lie on a card: the first one, those that are blended, and the mosaic round them.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <opencv2/core.hpp>
#include <string>
#include <utility>
#include <vector>

#include "framequilt/tuning.h"
#include "opencl/OpenclJointFrame.h"
#include "opencl/OpenclJointState.h"
#include "tests/opencl/frame_rules.h"
#include "tests/opencl/journal.h"
#include "tests/support/random_images.h"
#include "tests/support/scoped_value.h"

namespace {

using namespace frame_rules;

class FramePlacement : public Fixture {};
FRAMEQUILT_IN_EITHER_MEMORY(FramePlacement);

// --- The first frame ---

TEST_P(FramePlacement, FirstFrameLiesInTheMiddleOfABlackMosaic) {
  for (const auto& [rows, cols, channels] :
       {std::array<int, 3>{40, 60, 1}, {41, 63, 3}, {1, 1, 1}, {16, 17, 3}}) {
    SCOPED_TRACE(std::to_string(rows) + " x " + std::to_string(cols));
    RunSettings settings = settingsFor(kMotion, kStatic, channels);
    settings.rows = rows;
    settings.cols = cols;
    const auto run = openRun(On::kCard, settings);
    Frame reference(rows, cols, channels);
    reference.bytes = Random(3).bytes(reference.bytes.size());
    scriptOffset({.found = false});
    const FrameOutcome outcome = run->first(reference, reference);
    EXPECT_EQ(outcome.result, -1);
    const SPoint start = {3000 - cols / 2, 3000 - rows / 2};
    EXPECT_EQ(outcome.topLeft, start);
    EXPECT_EQ(outcome.bottomRight, start + (SPoint{cols, rows}));
    EXPECT_EQ(outcome.flags.position, start);
    EXPECT_EQ(outcome.mosaic.size(), cv::Size(6000, 6000));
    EXPECT_EQ(outcome.mosaic.type(), channels == 1 ? CV_8UC1 : CV_8UC3);
    Bytes expected = withoutZeros(reference.bytes);
    EXPECT_TRUE(equal(boxOf(outcome), cv::Mat(rows, cols, outcome.mosaic.type(), expected.data())));
    EXPECT_EQ(cv::countNonZero(outcome.mosaic.reshape(1)), static_cast<int>(expected.size()));
  }
}

TEST_P(FramePlacement, FirstFrameAgainStartsAnew) {
  const auto run = openRun(On::kCard, settingsFor(kMotion, kStatic));
  EXPECT_TRUE(run->first(flat(90), flat(90)).joined());
  scriptOffset({.matchNum = 10});
  const FrameOutcome again = run->first(flat(50), flat(50));
  EXPECT_EQ(again.topLeft, firstPosition(settingsFor(kMotion, kStatic)));
  EXPECT_EQ(again.flags.position, again.topLeft);
  EXPECT_EQ(cv::countNonZero(again.mosaic), kRows * kCols);
}

TEST_P(FramePlacement, FrameLargerThanTheFirstMosaicIsRefusedWithATextForTheDebugHook) {
  RunSettings settings = settingsFor(kMotion, kStatic);
  settings.rows = 6001;
  settings.cols = 3;
  const auto run = openRun(On::kCard, settings);
  Journal journal;
  const Frame frame(6001, 3, 1, 7);
  const FrameOutcome outcome = run->first(frame, frame);
  EXPECT_EQ(outcome.result, -1);
  EXPECT_EQ(outcome.mosaic.size(), cv::Size(6000, 6000));
  EXPECT_EQ(cv::countNonZero(outcome.mosaic), 0);
  const Entries entries = journal.take();
  ASSERT_GE(entries.size(), 2U);
  EXPECT_EQ(entries[entries.size() - 2], Journal::debug("willSmallImgToBigImgAssignRowCol failed"));
  EXPECT_EQ(entries.back(), Journal::debug("stichingImagedJointCL failed"));
}

TEST_P(FramePlacement, FrameAsLargeAsTheFirstMosaicFillsAColumnOfIt) {
  RunSettings settings = settingsFor(kMotion, kStatic);
  settings.rows = 6000;
  settings.cols = 3;
  const auto run = openRun(On::kCard, settings);
  scriptOffset({.matchNum = 10});
  const Frame frame(6000, 3, 1, 7);
  const FrameOutcome outcome = run->first(frame, frame);
  EXPECT_EQ(outcome.result, 0);
  EXPECT_EQ(outcome.topLeft, (SPoint{2999, 0}));
  EXPECT_EQ(cv::countNonZero(outcome.mosaic), 18000);
}

TEST_P(FramePlacement, MosaicIsFullOnceItHasThePixelsOfTheLimits) {
  for (const auto& [side, full] : {std::pair{6000, 1}, {6001, 0}, {40000, 0}}) {
    const ScopedValue<int> rowLimit(MAXROWCL, 30000);
    const ScopedValue<int> colLimit(MAXCOLCL, 30000);
    RunSettings settings = settingsFor(kMotion, kStatic);
    settings.maxRow = side;
    settings.maxCol = 6000;
    const auto run = openRun(On::kCard, settings);
    EXPECT_EQ(MAXROWCL, std::min(side, 30000));
    EXPECT_EQ(run->first(flat(9), flat(9)).result, full);
    scriptOffset({.found = false});
    EXPECT_EQ(run->next(flat(9)).result, -1);
    scriptOffset(kStep);
  }
}

// --- Blend limits ---

struct Limit {
  ScriptedOffset offset;
  bool blended;
};

void expectLimits(CaptureRun& run, const std::vector<Limit>& limits) {
  run.first(flat(100), flat(100));
  for (const Limit& limit : limits) {
    const ScriptedOffset& offset = limit.offset;
    SCOPED_TRACE(std::to_string(offset.dx) + ", " + std::to_string(offset.dy) + ", " +
                 std::to_string(offset.matchNum) + " pairs");
    scriptOffset(offset);
    const Bytes former = referenceOnCard();
    const FrameOutcome outcome = run.next(flat(100));
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.flags.stitch_flags, 1);
    EXPECT_EQ(outcome.joined(), limit.blended);
    const SPoint step = limit.blended ? SPoint{offset.dx, offset.dy} : SPoint{0, 0};
    EXPECT_EQ(outcome.flags.position, outcome.formerPosition + step);
    const std::string mark = "kkkkkkkkkkkkkkkkkkkkkkk" +
                             std::to_string(std::max(std::abs(offset.dx), std::abs(offset.dy)));
    EXPECT_EQ(outcome.lines.back() == mark, limit.blended);
    if (!limit.blended) {
      EXPECT_EQ(referenceOnCard(), former);
    }
  }
}

TEST_P(FramePlacement, OffsetsOfATenthAndOfNineTenthsAreNotBlended) {
  const auto run = openRun(On::kCard, settingsFor(kMotion, kStatic));
  expectLimits(*run, {{{32, 0}, false},
                      {{33, 0}, true},
                      {{-32, 0}, false},
                      {{-33, 0}, true},
                      {{288, 0}, false},
                      {{287, 0}, true},
                      {{-288, 0}, false},
                      {{-287, 0}, true},
                      {{0, 24}, false},
                      {{0, 25}, true},
                      {{0, -24}, false},
                      {{0, -25}, true},
                      {{0, 216}, false},
                      {{0, 215}, true},
                      {{0, -216}, false},
                      {{0, -215}, true},
                      // Only the larger one counts; equal ones are held against the height.
                      {{27, 26}, false},
                      {{33, 1}, true},
                      {{1, 25}, true},
                      {{25, 25}, true},
                      {{216, 216}, false},
                      {{0, 0}, false}});
}

TEST_P(FramePlacement, TenPairsAreNotBlended) {
  const auto run = openRun(On::kCard, settingsFor(kMotion, kStatic));
  expectLimits(*run, {{{60, 0, 10}, false}, {{60, 0, 11}, true}, {{60, 0, 0}, false}});
}

TEST_P(FramePlacement, OverlapLimitsAreTheHostsToSet) {
  const auto run = openRun(On::kCard, settingsFor(kMotion, kStatic));
  const ScopedValue<float> least(ImageOverlap_minCL, 0.5F);
  const ScopedValue<float> most(ImageOverlap_maxCL, 0.75F);
  expectLimits(*run, {{{80, 0}, false}, {{81, 0}, true}, {{159, 0}, true}, {{160, 0}, false}});
}

// --- The blend itself ---

TEST_P(FramePlacement, BlendOfNullIsRefusedWithALine) {
  const auto run = openRun(On::kCard, settingsFor(kMotion, kStatic));
  Journal journal;
  SPoint left = {1, 2};
  SPoint right = {3, 4};
  SPoint position = {5, 6};
  imgInfo info = {};
  cv::Mat mosaic;
  EXPECT_FALSE(stitchingImageImageblendCL(cv::Mat(9, 9, CV_8UC1), nullptr, {0, 1, kRows, kCols}, {},
                                          left, right, {}, left, right, position, info, mosaic,
                                          theSorImageTempCL));
  EXPECT_EQ(journal.take(), Entries{"stitchingImageImageblend ptr is null"});
  EXPECT_EQ(position, (SPoint{5, 6}));
  EXPECT_TRUE(mosaic.empty());
}

TEST_P(FramePlacement, BlendReadsNoSeventhArgument) {
  const auto run = openRun(On::kCard, settingsFor(kMotion, kStatic));
  const cv::Mat start(3 * kRows, 3 * kCols, CV_8UC1, cv::Scalar(40));
  stitchflags flags = {};
  flags.position = {kCols, kRows};
  flags.offsetX = 30;
  flags.offsetY = -20;
  Frame frame = noise(6, 1, 1, 255);
  const auto blendWith = [&](SPoint unread) {
    SPoint left = {kCols, kRows};
    SPoint right = {2 * kCols, 2 * kRows};
    SPoint position = {};
    imgInfo info = {7, 7, 7, 7};
    cv::Mat mosaic;
    EXPECT_TRUE(stitchingImageImageblendCL(start.clone(), frame.bytes.data(), {0, 1, kRows, kCols},
                                           flags, left, right, unread, left, right, position, info,
                                           mosaic, theSorImageTempCL));
    EXPECT_EQ(position, (SPoint{kCols + 30, kRows - 20}));
    EXPECT_EQ(left, (SPoint{kCols, kRows - 20}));
    EXPECT_EQ(right, (SPoint{2 * kCols + 30, 2 * kRows}));
    EXPECT_EQ(info.channels, 1);
    EXPECT_EQ(info.rows, kRows);
    EXPECT_EQ(info.cols, kCols);
    return mosaic;
  };
  EXPECT_TRUE(equal(blendWith({0, 0}), blendWith({-5000, 77})));
}

// --- Growth ---

TEST_P(FramePlacement, MosaicGrowsToTheLeftAndTheTopAsOnTheHost) {
  constexpr ScriptedOffset kUpLeft = {-210, -210};
  constexpr int kSteps = 15;
  FrameOutcome last[2];
  for (const On backend : {On::kCard, On::kHost}) {
    const auto run = openRun(backend, settingsFor(kMotion, kStatic));
    scriptOffset(kUpLeft);
    FrameOutcome& outcome = last[backend == On::kCard ? 0 : 1];
    for (int i = 0; i < kSteps; ++i) {
      const Frame frame = noise(20 + static_cast<std::uint64_t>(i), 1, 1, 255);
      outcome = i == 0 ? run->first(flat(99), frame) : run->next(frame);
      ASSERT_TRUE(outcome.joined());
    }
  }
  // The last two steps each end above it.
  EXPECT_EQ(last[0].mosaic.size(), cv::Size(6000 + kCols, 6000 + 2 * kRows));
  EXPECT_EQ(last[0].flags.position,
            firstPosition(settingsFor(kMotion, kStatic)) +
                (SPoint{kCols + kSteps * kUpLeft.dx, 2 * kRows + kSteps * kUpLeft.dy}));
  EXPECT_EQ(last[0].flags.position, last[1].flags.position);
  EXPECT_EQ(last[0].topLeft, last[1].topLeft);
  EXPECT_EQ(last[0].bottomRight, last[1].bottomRight);
  EXPECT_TRUE(equal(boxOf(last[0]), boxOf(last[1])));
}

}  // namespace
