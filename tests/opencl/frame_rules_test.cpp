// SPDX-License-Identifier: Apache-2.0
// What becomes of a frame on a card, with offsets that the tests choose, and where that differs
// from the host.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <utility>
#include <vector>

#include "cpu/run_state.h"
#include "framequilt/framequilt.h"
#include "framequilt/tuning.h"
#include "opencl/OpenclJointFrame.h"
#include "opencl/OpenclJointState.h"
#include "tests/opencl/device_fixture.h"
#include "tests/opencl/journal.h"
#include "tests/opencl/scripted_offsets.h"
#include "tests/run/captures.h"
#include "tests/support/guarded.h"
#include "tests/support/random_images.h"
#include "tests/support/scoped_value.h"

namespace {

namespace layer = framequilt::opencl_layer;

using Entries = Journal::Entries;

constexpr int kRows = 240, kCols = 320;
constexpr int kMotion = 1, kOverlap = 0;
constexpr int kStatic = 0, kDynamic = 1;
/// A step that both directions allow.
constexpr ScriptedOffset kStep = {60, 40};

RunSettings settingsFor(int stitchMode, int staticDynamicFlag, int channels = 1) {
  RunSettings settings;
  settings.rows = kRows;
  settings.cols = kCols;
  settings.channels = channels;
  settings.stitchMode = stitchMode;
  settings.staticDynamicFlag = staticDynamicFlag;
  return settings;
}

Frame flat(int value, int channels = 1) { return Frame(kRows, kCols, channels, value); }

/// Every byte 0 to 255 is there.
Frame noise(std::uint64_t seed, int channels = 1, int low = 0, int high = 255) {
  Frame frame = flat(0, channels);
  frame.bytes = Random(seed).bytes(frame.bytes.size(), low, high);
  return frame;
}

Bytes withoutZeros(Bytes bytes) {
  std::replace(bytes.begin(), bytes.end(), 0, 1);
  return bytes;
}

cv::Mat boxOf(const FrameOutcome& outcome) {
  return outcome.mosaic(cv::Rect(outcome.topLeft.x, outcome.topLeft.y,
                                 outcome.bottomRight.x - outcome.topLeft.x,
                                 outcome.bottomRight.y - outcome.topLeft.y));
}

bool equal(const cv::Mat& one, const cv::Mat& two) {
  return one.size() == two.size() && one.type() == two.type() &&
         cv::norm(one, two, cv::NORM_INF) == 0.0;
}

Bytes referenceOnCard(int channels = 1) {
  return {theSorImageTempCL, theSorImageTempCL + std::ptrdiff_t{kRows} * kCols * channels};
}

enum class On { kCard, kHost };

class FrameRules : public EitherMemory {
 protected:
  FrameRules() { scriptOffset(kStep); }
  ~FrameRules() override { whileEstimating({}); }

  /// Opens a run there, which is checked.
  static std::unique_ptr<CaptureRun> openRun(On backend, const RunSettings& settings) {
    backend == On::kCard ? withCard() : withoutCard();
    auto run = std::make_unique<CaptureRun>(settings);
    EXPECT_EQ(openclDeviceFlag, backend == On::kCard);
    return run;
  }
};

FRAMEQUILT_IN_EITHER_MEMORY(FrameRules);

// --- The first frame ---

TEST_P(FrameRules, FirstFrameLiesInTheMiddleOfABlackMosaic) {
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

TEST_P(FrameRules, FirstFrameAgainStartsAnew) {
  const auto run = openRun(On::kCard, settingsFor(kMotion, kStatic));
  EXPECT_TRUE(run->first(flat(90), flat(90)).joined());
  scriptOffset({.matchNum = 10});
  const FrameOutcome again = run->first(flat(50), flat(50));
  EXPECT_EQ(again.topLeft, firstPosition(settingsFor(kMotion, kStatic)));
  EXPECT_EQ(again.flags.position, again.topLeft);
  EXPECT_EQ(cv::countNonZero(again.mosaic), kRows * kCols);
}

TEST_P(FrameRules, FrameLargerThanTheFirstMosaicIsRefusedWithATextForTheDebugHook) {
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

TEST_P(FrameRules, FrameAsLargeAsTheFirstMosaicFillsAColumnOfIt) {
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

TEST_P(FrameRules, MosaicIsFullOnceItHasThePixelsOfTheLimits) {
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

TEST_P(FrameRules, OffsetsOfATenthAndOfNineTenthsAreNotBlended) {
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

TEST_P(FrameRules, TenPairsAreNotBlended) {
  const auto run = openRun(On::kCard, settingsFor(kMotion, kStatic));
  expectLimits(*run, {{{60, 0, 10}, false}, {{60, 0, 11}, true}, {{60, 0, 0}, false}});
}

TEST_P(FrameRules, OverlapLimitsAreTheHostsToSet) {
  const auto run = openRun(On::kCard, settingsFor(kMotion, kStatic));
  const ScopedValue<float> least(ImageOverlap_minCL, 0.5F);
  const ScopedValue<float> most(ImageOverlap_maxCL, 0.75F);
  expectLimits(*run, {{{80, 0}, false}, {{81, 0}, true}, {{159, 0}, true}, {{160, 0}, false}});
}

// --- Qualification ---

TEST_P(FrameRules, FrameThatMovesTooMuchLeavesMosaicAndReference) {
  const auto run = openRun(On::kCard, settingsFor(kMotion, kDynamic));
  const FrameOutcome first = run->first(flat(100), flat(104));
  EXPECT_EQ(motionValueThCL, motionValueThCL0);
  EXPECT_TRUE(first.joined());
  const cv::Mat mosaic = boxOf(first).clone();
  const Bytes reference = referenceOnCard();

  const FrameOutcome refused = run->next(flat(109));
  EXPECT_EQ(refused.result, 0);
  EXPECT_EQ(refused.flags.stitch_flags, 0);
  EXPECT_FALSE(refused.joined());
  EXPECT_EQ(refused.topLeft, first.topLeft);
  EXPECT_EQ(refused.bottomRight, first.bottomRight);
  EXPECT_TRUE(equal(boxOf(refused), mosaic));
  EXPECT_EQ(referenceOnCard(), reference);

  // The motion is measured from frame to frame.
  EXPECT_EQ(run->next(flat(113)).flags.stitch_flags, 1);
}

TEST_P(FrameRules, StaticSceneMayMoveByAnythingButTheWholeRange) {
  const auto run = openRun(On::kCard, settingsFor(kMotion, kStatic));
  EXPECT_EQ(run->first(flat(1), flat(255)).flags.stitch_flags, 1);
  EXPECT_EQ(motionValueThCL, 255);
}

TEST_P(FrameRules, MotionLimitIsTheHostsToSet) {
  const auto run = openRun(On::kCard, settingsFor(kMotion, kDynamic));
  const ScopedValue<int> limit(motionValueThCL0, 20);
  EXPECT_EQ(run->first(flat(100), flat(119)).flags.stitch_flags, 1);
  EXPECT_EQ(run->next(flat(139)).flags.stitch_flags, 0);
}

TEST_P(FrameRules, FrameWithoutOffsetKeepsTheFlagAndTheLastFrame) {
  const auto run = openRun(On::kCard, settingsFor(kMotion, kDynamic));
  run->first(flat(100), flat(100));
  const Bytes reference = referenceOnCard();
  scriptOffset({.dx = 1, .dy = 1, .matchNum = 3, .found = false});
  const FrameOutcome lost = run->next(flat(200));
  EXPECT_EQ(lost.result, -1);
  EXPECT_EQ(lost.flags.stitch_flags, 1);
  EXPECT_EQ(lost.flags.offsetX, kStep.dx);
  EXPECT_EQ(lost.flags.matchNum, 3);
  EXPECT_FALSE(lost.joined());
  EXPECT_EQ(referenceOnCard(), reference);
  scriptOffset(kStep);
  EXPECT_EQ(run->next(flat(100)).flags.stitch_flags, 1);
}

TEST_P(FrameRules, OffsetOfTheWholeFrameDoesNotQualifyByItsOverlap) {
  const auto run = openRun(On::kCard, settingsFor(kOverlap, kStatic));
  const Frame texture = noise(5, 1, 1, 100);
  EXPECT_EQ(run->first(texture, texture).flags.stitch_flags, 1);
  for (const ScriptedOffset& offset : {ScriptedOffset{kCols, 0}, {0, kRows}, {kCols, kRows}}) {
    scriptOffset(offset);
    const FrameOutcome outcome = run->next(texture);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.flags.stitch_flags, 0);
  }
  scriptOffset(kStep);
  EXPECT_EQ(run->next(texture).flags.stitch_flags, 1);
}

// --- The hint ---

TEST_P(FrameRules, HintIsStoredBeforeTheOffsetIsEstimated) {
  const auto run = openRun(On::kCard, settingsFor(kMotion, kStatic));
  int seen = 0;
  const auto expectHint = [&](int dx, int dy, bool holds) {
    whileEstimating([&seen, dx, dy, holds](unsigned char*, unsigned char*) {
      ++seen;
      EXPECT_EQ(clMotordx, dx);
      EXPECT_EQ(clMotordy, dy);
      EXPECT_EQ(clMotorflage, holds);
    });
  };
  expectHint(-7, 8, true);
  run->first(flat(9), flat(9), {-7, 8, true});
  expectHint(5, -6, false);
  run->next(flat(9), {5, -6, false});
  EXPECT_EQ(seen, 2);
}

// --- Null and out of order ---

struct Call {
  int result;
  SPoint left = {1, 2}, right = {3, 4};
  cv::Mat mosaic;
  stitchflags flags = {};
};

Call callCard(unsigned char* src, unsigned char* dest, int frameIndex) {
  Call call;
  call.result = stichingImagedJointCL(src, dest, frameIndex, 1, 0, 0, false, call.left, call.right,
                                      call.mosaic, call.flags);
  return call;
}

TEST_P(FrameRules, NullIsRefusedWithItsLines) {
  const auto run = openRun(On::kCard, settingsFor(kMotion, kStatic));
  const FrameOutcome first = run->first(flat(70), flat(70));
  Journal journal;
  Frame frame = flat(60);
  unsigned char* const some = frame.bytes.data();
  const std::string refused = Journal::line("stitchingImageOffset ptr is null");
  const std::string isNull = Journal::line("thedestImage is NULL");
  const std::string startText = Journal::debug("stitchingImageOffsetCL 0");
  const auto expectRunState = [&](const Call& call) {
    EXPECT_EQ(call.result, -1);
    EXPECT_EQ(call.left, first.topLeft);
    EXPECT_EQ(call.right, first.bottomRight);
    EXPECT_EQ(call.mosaic.data, first.mosaic.data);
    EXPECT_EQ(call.flags.position, first.flags.position);
  };
  layer::resetRecords();
  expectRunState(callCard(some, nullptr, 0));
  EXPECT_EQ(journal.take(), (Entries{isNull, startText, refused}));
  expectRunState(callCard(nullptr, some, 0));
  EXPECT_EQ(journal.take(), (Entries{startText, refused}));
  expectRunState(callCard(nullptr, nullptr, 1));
  EXPECT_EQ(journal.take(), (Entries{isNull, Journal::debug("stitchingImageOffsetCL 1"), refused}));
  EXPECT_EQ(layer::callCount(), 0);
  EXPECT_EQ(frame.bytes, flat(60).bytes);
  // A later frame needs no reference from the caller.
  EXPECT_EQ(callCard(nullptr, some, 1).result, 0);
}

TEST_P(FrameRules, NoFrameIsTakenBeforeAStartNorAfterAStop) {
  Frame frame = flat(0);
  const auto expectRefused = [&](int frameIndex) {
    Journal journal;
    layer::resetRecords();
    const Call call = callCard(frame.bytes.data(), frame.bytes.data(), frameIndex);
    EXPECT_EQ(call.result, -1);
    EXPECT_TRUE(call.mosaic.empty());
    EXPECT_EQ(journal.take().back(), Journal::line("stitchingImageOffset ptr is null"));
    EXPECT_EQ(layer::callCount(), 0);
    EXPECT_EQ(frame.bytes, flat(0).bytes);
  };
  expectRefused(0);
  expectRefused(1);
  {
    const auto run = openRun(On::kCard, settingsFor(kMotion, kStatic));
    EXPECT_EQ(run->first(flat(9), flat(9)).result, 0);
  }
  expectRefused(0);
  expectRefused(1);
}

TEST_P(FrameRules, LaterFrameWithoutAFirstOneIsPlacedNowhereAsOnTheHost) {
  for (const int mode : {kMotion, kOverlap}) {
    for (const On backend : {On::kCard, On::kHost}) {
      const auto run = openRun(backend, settingsFor(mode, kStatic));
      const FrameOutcome outcome = run->next(noise(4, 1, 1, 255));
      EXPECT_EQ(outcome.result, 0);
      EXPECT_TRUE(outcome.mosaic.empty());
      EXPECT_EQ(outcome.topLeft, (SPoint{0, 0}));
      EXPECT_EQ(outcome.bottomRight, (SPoint{0, 0}));
      EXPECT_EQ(outcome.flags.position, (SPoint{0, 0}));
    }
  }
}

// --- The blend itself ---

TEST_P(FrameRules, BlendOfNullIsRefusedWithALine) {
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
  EXPECT_EQ(journal.take(), Entries{Journal::line("stitchingImageImageblend ptr is null")});
  EXPECT_EQ(position, (SPoint{5, 6}));
  EXPECT_TRUE(mosaic.empty());
}

TEST_P(FrameRules, BlendReadsNoSeventhArgument) {
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

// --- Where the card differs from the host, on purpose ---

/// The overlaps at `kStep` show the same texture, the second `offset` brighter.
std::pair<Frame, Frame> texturesApart(int offset) {
  const Frame reference = noise(5, 1, 1, 100);
  Frame frame = reference;
  for (int r = 0; r < kRows - kStep.dy; ++r) {
    for (int c = 0; c < kCols - kStep.dx; ++c) {
      frame.at(r, c) = reference.at(r + kStep.dy, c + kStep.dx);
    }
  }
  return {reference, withGain(frame, 256, offset)};
}

TEST_P(FrameRules, OverlapLimitsOnACardAreThoseOfAStaticSceneForEveryScene) {
  const auto [reference, brighter] = texturesApart(60);
  for (const int scene : {kStatic, kDynamic}) {
    {
      const auto run = openRun(On::kCard, settingsFor(kOverlap, scene));
      EXPECT_EQ(run->first(reference, brighter).flags.stitch_flags, 1);
      EXPECT_EQ(brightThCL, 128.0F);
      EXPECT_EQ(defintThCL, 128.0F);
      EXPECT_EQ(brightThCL0, 40.0F);
      EXPECT_EQ(defintThCL0, 30.0F);
    }
    const auto run = openRun(On::kHost, settingsFor(kOverlap, scene));
    EXPECT_EQ(run->first(reference, brighter).flags.stitch_flags, scene == kStatic ? 1 : 0);
  }
  const auto [dark, atLimit] = texturesApart(128);
  const auto run = openRun(On::kCard, settingsFor(kOverlap, kStatic));
  const stitchflags flags = run->first(dark, atLimit).flags;
  EXPECT_EQ(flags.brightTwo - flags.brightOne, 128.0F);
  EXPECT_EQ(flags.stitch_flags, 0);
}

TEST_P(FrameRules, FlagOnACardIsClearedByAFrameWhoseOverlapDoesNotQualify) {
  const Frame dark = noise(5, 1, 1, 60);
  const Frame bright = noise(6, 1, 200, 255);
  for (const On backend : {On::kCard, On::kHost}) {
    const auto run = openRun(backend, settingsFor(kOverlap, kStatic));
    EXPECT_EQ(run->first(dark, dark).flags.stitch_flags, 1);
    const FrameOutcome outcome = run->next(bright);
    ASSERT_GT(outcome.flags.brightTwo - outcome.flags.brightOne, 128.0F);
    EXPECT_EQ(outcome.flags.stitch_flags, backend == On::kCard ? 0 : 1);
    EXPECT_EQ(outcome.joined(), backend == On::kHost);
  }
}

TEST_P(FrameRules, SharpnessOnACardIsTakenFromTheWholeOverlap) {
  // Texture on the right only, where the host does not look.
  Frame frame = noise(8, 1, 1, 255);
  for (int r = 0; r < kRows; ++r) {
    for (int c = 0; c < kCols - 120; ++c) frame.at(r, c) = 100;
  }
  float sharpness[2];
  for (const On backend : {On::kCard, On::kHost}) {
    const auto run = openRun(backend, settingsFor(kOverlap, kStatic));
    sharpness[backend == On::kCard ? 0 : 1] = run->first(frame, frame).flags.definitionOne;
  }
  EXPECT_GT(sharpness[0], 10.0F);
  EXPECT_GT(std::fabs(sharpness[0] - sharpness[1]), 2.0F);
}

TEST_P(FrameRules, CallersFrameItselfIsFusedOnACard) {
  for (const On backend : {On::kCard, On::kHost}) {
    const auto run = openRun(backend, settingsFor(kMotion, kStatic, 3));
    const Frame changed = noise(9, 3, 1, 255);
    Frame reference = flat(90, 3);
    Frame frame = reference;
    // The host has taken its copy by then.
    whileEstimating([&](unsigned char*, unsigned char*) {
      std::copy(changed.bytes.begin(), changed.bytes.end(), frame.bytes.begin());
    });
    Call outcome = {};
    EXPECT_EQ(stichingImagedJoint(reference.bytes.data(), frame.bytes.data(), 0, 1, 0, 0, false,
                                  outcome.left, outcome.right, outcome.mosaic, outcome.flags),
              0);
    ASSERT_EQ(outcome.flags.position,
              firstPosition(settingsFor(kMotion, kStatic)) + (SPoint{kStep.dx, kStep.dy}));
    // Where only the new frame lies.
    const int row = kRows - 1;
    const int col = kCols - 1;
    const unsigned char* const pixel =
        outcome.mosaic.ptr(outcome.flags.position.y + row, outcome.flags.position.x + col);
    const unsigned char seen[3] = {pixel[0], pixel[1], pixel[2]};
    for (int k = 0; k < 3; ++k) {
      EXPECT_EQ(seen[k], backend == On::kCard ? changed.at(row, col, k) : 90);
    }
    EXPECT_EQ(frame.bytes, changed.bytes);
  }
}

TEST_P(FrameRules, EveryNewFrameIsPreJudgedOnACardWhereItLies) {
  for (const int channels : {1, 3}) {
    for (const On backend : {On::kCard, On::kHost}) {
      const auto run = openRun(backend, settingsFor(kMotion, kStatic, channels));
      const Frame reference = noise(11, channels);
      const FrameOutcome first = run->first(reference, noise(12, channels));
      EXPECT_EQ(first.reference, withoutZeros(reference.bytes));
      const auto expectFrame = [&](const FrameOutcome& outcome, const Frame& given) {
        EXPECT_EQ(outcome.frame, backend == On::kCard ? withoutZeros(given.bytes) : given.bytes);
        EXPECT_NE(withoutZeros(given.bytes), given.bytes);
      };
      expectFrame(first, noise(12, channels));
      expectFrame(run->next(noise(13, channels)), noise(13, channels));
      // Also one that is then refused.
      scriptOffset({.found = false});
      expectFrame(run->next(noise(14, channels)), noise(14, channels));
      scriptOffset(kStep);
    }
  }
}

TEST_P(FrameRules, FramesAreNotOverwrittenByTheirOverlapOnACard) {
  for (const int channels : {1, 3}) {
    for (const On backend : {On::kCard, On::kHost}) {
      const auto run = openRun(backend, settingsFor(kOverlap, kStatic, channels));
      const Frame reference = noise(15, channels, 1, 255);
      const Frame frame = noise(16, channels, 1, 255);
      const FrameOutcome outcome = run->first(reference, frame);
      EXPECT_EQ(outcome.reference == reference.bytes, backend == On::kCard);
      EXPECT_EQ(outcome.frame == frame.bytes, backend == On::kCard);
    }
  }
}

TEST_P(FrameRules, ReferenceSurvivesAFrameThatIsRefusedByItsOverlapOnACard) {
  const Frame dark = noise(5, 1, 1, 60);
  const Frame bright = noise(6, 1, 200, 255);
  {
    const auto run = openRun(On::kCard, settingsFor(kOverlap, kStatic));
    run->first(dark, dark);
    const Bytes reference = referenceOnCard();
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(run->next(bright).flags.stitch_flags, 0);
      EXPECT_EQ(referenceOnCard(), reference);
    }
  }
  // The host's flag must not have been raised before.
  const auto run = openRun(On::kHost, settingsFor(kOverlap, kStatic));
  const auto reference = [] { return Bytes(theSorImageTemp, theSorImageTemp + kRows * kCols); };
  EXPECT_EQ(run->first(dark, bright).flags.stitch_flags, 0);
  const Bytes former = reference();
  EXPECT_EQ(run->next(bright).flags.stitch_flags, 0);
  EXPECT_NE(reference(), former);
}

// --- Growth ---

TEST_P(FrameRules, MosaicGrowsToTheLeftAndTheTopAsOnTheHost) {
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
