// SPDX-License-Identifier: Apache-2.0
// Scales, shapes and channel counts at which little can be found. All memory that is touched is the
// run's own: the build with address checks sees to that.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <opencv2/core.hpp>
#include <string>

#include "framequilt/framequilt.h"
#include "framequilt/tuning.h"
#include "tests/run/captures.h"
#include "tests/support/random_images.h"
#include "tests/support/scoped_value.h"

namespace {

/// The pixel of the reference that working pixel (row, col) has to show; below 0: black.
using SourcePixel = std::function<std::ptrdiff_t(int row, int col)>;

Frame randomFrame(int rows, int cols, int channels) { return noiseFrame(rows, cols, channels, 77); }

/// Checks that the mosaic shows `reference` as `source` says where the run starts, and is black
/// around it.
void expectReferencePlaced(const FrameOutcome& outcome, const Frame& reference, SPoint start,
                           int workingRows, int workingCols, const SourcePixel& source) {
  ASSERT_EQ(outcome.mosaic.rows, 6000);
  ASSERT_EQ(outcome.mosaic.cols, 6000);
  const int channels = outcome.mosaic.channels();
  int wrong = 0, lit = 0;
  for (int r = 0; r < workingRows; ++r) {
    for (int c = 0; c < workingCols; ++c) {
      const std::ptrdiff_t pixel = source(r, c);
      for (int k = 0; k < channels; ++k) {
        const int expected =
            pixel < 0 ? 0 : reference.bytes[static_cast<std::size_t>(pixel * channels + k)];
        lit += expected != 0;
        wrong += outcome.mosaic.ptr(start.y + r, start.x + c)[k] != expected;
      }
    }
  }
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(cv::countNonZero(outcome.mosaic.reshape(1)), lit);
}

struct ScaleCase {
  int scale, frameScale;
};

/// Runs one pair of frames; the second is blank, so that nothing is ever blended.
FrameOutcome outcomeAtScale(const ScaleCase& scales, const Frame& reference) {
  const ScopedValue<int> scaleOfRun(scale, scales.scale);
  RunSettings settings = RunSettings::forFrame(reference);
  settings.frameScale = scales.frameScale;
  CaptureRun run(settings);
  const Frame blank(reference.rows, reference.cols, reference.channels, 128);
  FrameOutcome outcome = run.first(reference, blank);
  EXPECT_EQ(outcome.result, -1);
  EXPECT_EQ(run.next(reference).result, -1);
  return outcome;
}

SPoint startOf(const Frame& frame, int scaleOfRun) {
  return firstPosition(RunSettings::forFrame(frame), scaleOfRun);
}

/// Source pixel of packed pixel `index` when every `step`th pixel of a frame `cols` wide is taken
/// into rows of `packedCols`.
std::ptrdiff_t sampledFrom(int index, int packedCols, int step, int cols) {
  return std::ptrdiff_t{index / packedCols * step} * cols + index % packedCols * step;
}

TEST(UnusualScale, ThreeTakesEveryThirdPixel) {
  for (const int channels : {1, 3}) {
    const Frame reference = randomFrame(120, 159, channels);
    expectReferencePlaced(outcomeAtScale({3, 3}, reference), reference, startOf(reference, 3), 40,
                          53, [](int r, int c) { return (3 * r) * 159 + 3 * c; });
  }
}

TEST(UnusualScale, ThreeRoundsTheWidthUpAndShearsTheFrame) {
  // 161 / 3 rounds to 54, the mosaic takes 53 columns.
  const Frame reference = randomFrame(120, 161, 3);
  expectReferencePlaced(outcomeAtScale({3, 3}, reference), reference, startOf(reference, 3), 40, 53,
                        [](int r, int c) { return sampledFrom(r * 53 + c, 54, 3, 161); });
}

TEST(UnusualScale, FourTakesEveryFourthPixel) {
  const Frame reference = randomFrame(120, 160, 3);
  expectReferencePlaced(outcomeAtScale({4, 4}, reference), reference, startOf(reference, 4), 30, 40,
                        [](int r, int c) { return (4 * r) * 160 + 4 * c; });
}

TEST(UnusualScale, SixReachesPastTheFrameWhereTheMosaicStaysBlack) {
  const Frame reference = randomFrame(60, 90, 1);
  expectReferencePlaced(outcomeAtScale({6, 6}, reference), reference, startOf(reference, 6), 10, 15,
                        [](int r, int c) {
                          const int pixel = (r * 90 + c) * 8;
                          return pixel < 60 * 90 ? pixel : -1;
                        });
}

TEST(UnusualScale, FrameScaledMoreThanTheRunFillsItsStart) {
  const Frame reference = randomFrame(60, 90, 3);
  expectReferencePlaced(outcomeAtScale({1, 2}, reference), reference, startOf(reference, 1), 60, 90,
                        [](int r, int c) {
                          const int packed = r * 90 + c;
                          return packed < 30 * 45 ? sampledFrom(packed, 45, 2, 90) : -1;
                        });
}

TEST(UnusualScale, FrameScaledLessThanTheRunIsCutOff) {
  const Frame reference = randomFrame(60, 90, 3);
  expectReferencePlaced(outcomeAtScale({2, 1}, reference), reference, startOf(reference, 2), 30, 45,
                        [](int r, int c) { return r * 45 + c; });
  expectReferencePlaced(outcomeAtScale({4, 2}, reference), reference, startOf(reference, 4), 15, 22,
                        [](int r, int c) { return sampledFrom(r * 22 + c, 45, 2, 90); });
}

TEST(UnusualScale, LargerThanTheFrameLeavesNothingToPlace) {
  const Frame reference = randomFrame(5, 7, 3);
  const FrameOutcome outcome = outcomeAtScale({8, 8}, reference);
  EXPECT_EQ(outcome.topLeft, (SPoint{3000, 3000}));
  EXPECT_EQ(outcome.bottomRight, (SPoint{3000, 3000}));
}

TEST(UnusualScale, FourAfterOneSearchesInTheSizeOfTheRunBefore) {
  const Scene scene(560, 700, 1, 11);
  {
    CaptureRun run(RunSettings{});
    ASSERT_TRUE(run.first(scene.cut(200, 150, 240, 320), scene.cut(300, 150, 240, 320)).joined());
  }
  ASSERT_EQ(gray_pointdownscal_row, 120);
  const ScopedValue<int> scaleOfRun(scale, 4);
  for (const int mode : {0, 1}) {
    RunSettings settings;
    settings.frameScale = 4;
    settings.stitchMode = mode;
    CaptureRun run(settings);
    const FrameOutcome outcome =
        run.first(scene.cut(200, 150, 240, 320), scene.cut(280, 150, 240, 320));
    EXPECT_EQ(gray_pointdownscal_row, 120);
    EXPECT_EQ(gray_pointdownscal_col, 160);
    EXPECT_EQ(outcome.topLeft.x, 3000 - 40 + std::min(0, outcome.flags.offsetX));
    run.next(scene.cut(300, 150, 240, 320));
  }
}

/// All modes and both scales over a frame shape; nothing can be found, all of it must be refused.
void expectRefusedEverywhere(int rows, int cols, int channels) {
  SCOPED_TRACE(std::to_string(rows) + " x " + std::to_string(cols) + ", " +
               std::to_string(channels) + " channels");
  const Frame frame = randomFrame(rows, cols, channels);
  for (const int scaleOfRun : {1, 2}) {
    const ScopedValue<int> scaled(scale, scaleOfRun);
    for (const int mode : {0, 1}) {
      RunSettings settings = RunSettings::forFrame(frame);
      settings.frameScale = scaleOfRun;
      settings.stitchMode = mode;
      CaptureRun run(settings);
      EXPECT_EQ(run.first(frame, frame).result, -1);
      EXPECT_EQ(run.next(frame).result, -1);
      EXPECT_EQ(run.next(frame, {rows / 3, -cols / 3, true}).result, -1);
    }
  }
}

TEST(TinyFrames, HaveNoCorners) {
  for (const int channels : {1, 3}) {
    expectRefusedEverywhere(1, 1, channels);
    expectRefusedEverywhere(1, 40, channels);
    expectRefusedEverywhere(40, 1, channels);
    expectRefusedEverywhere(2, 3, channels);
    expectRefusedEverywhere(7, 5, channels);
    expectRefusedEverywhere(16, 16, channels);
  }
}

TEST(TinyFrames, ArePlacedAllTheSame) {
  const Frame frame = randomFrame(2, 3, 3);
  CaptureRun run(RunSettings::forFrame(frame));
  const FrameOutcome outcome = run.first(frame, frame);
  expectReferencePlaced(outcome, frame, {2999, 2999}, 2, 3, [](int r, int c) { return r * 3 + c; });
}

/// A capture in which only the channel count is unusual.
FrameOutcome outcomeWithChannels(int channels, int mode) {
  const Scene scene(560, 700, channels, 11);
  RunSettings settings;
  settings.channels = channels;
  settings.stitchMode = mode;
  CaptureRun run(settings);
  run.first(scene.cut(200, 150, 240, 320), scene.cut(300, 150, 240, 320));
  return run.next(scene.cut(380, 150, 240, 320));
}

TEST(UnusualChannels, TwoOrFourLeaveTheMosaicBlack) {
  for (const int channels : {2, 4}) {
    for (const int mode : {0, 1}) {
      SCOPED_TRACE(std::to_string(channels) + " channels, mode " + std::to_string(mode));
      const FrameOutcome outcome = outcomeWithChannels(channels, mode);
      EXPECT_EQ(outcome.mosaic.type(), CV_8UC3);
      EXPECT_EQ(cv::countNonZero(outcome.mosaic.reshape(1)), 0);
    }
  }
}

TEST(UnusualChannels, NoneOrLessAreRefused) {
  Frame frame = randomFrame(60, 90, 1);
  for (const int channels : {0, -1}) {
    RunSettings settings = RunSettings::forFrame(frame);
    settings.channels = channels;
    SCOPED_TRACE(channels);
    if (channels < 0) {
      EXPECT_THROW(initJoint(60, 90, channels, 1, 20000, 20000, 1, 0), std::bad_alloc);
      uinitJoint();
      continue;
    }
    CaptureRun run(settings);
    EXPECT_EQ(run.first(frame, frame).result, -1);
  }
}

TEST(CornerBudget, BelowZeroFindsNothing) {
  const Scene scene(560, 700, 3, 11);
  for (const int budget : {-6, -8, -1000}) {
    SCOPED_TRACE(budget);
    RunSettings settings;
    settings.channels = 3;
    settings.cornerBudget = budget;
    CaptureRun run(settings);
    EXPECT_EQ(run.first(scene.cut(200, 150, 240, 320), scene.cut(300, 150, 240, 320)).result, -1);
    EXPECT_EQ(run.next(scene.cut(300, 150, 240, 320)).result, -1);
  }
}

TEST(CornerBudget, LargeFindsMorePairs) {
  const Scene scene(480, 740, 1, 11);
  const auto pairs = [&](int budget) {
    RunSettings settings;
    settings.rows = 480;
    settings.cols = 640;
    settings.cornerBudget = budget;
    CaptureRun run(settings);
    return run.first(scene.cut(0, 0, 480, 640), scene.cut(100, 0, 480, 640)).flags.matchNum;
  };
  EXPECT_GT(pairs(8), pairs(1));
}

TEST(DescriptorLength, ShorterStillPlacesTheFrame) {
  const Scene scene(560, 700, 1, 11);
  for (const int length : {199, 100, 32}) {
    SCOPED_TRACE(length);
    const ScopedValue<int> shorter(demesion, length);
    CaptureRun run(RunSettings{});
    const FrameOutcome outcome =
        run.first(scene.cut(200, 150, 240, 320), scene.cut(300, 150, 240, 320));
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.flags.offsetX, 100);
  }
}

TEST(DescriptorLength, NoneMatchesNothing) {
  const Scene scene(560, 700, 1, 11);
  for (const int length : {0, -5}) {
    SCOPED_TRACE(length);
    const ScopedValue<int> none(demesion, length);
    CaptureRun run(RunSettings{});
    EXPECT_EQ(run.first(scene.cut(200, 150, 240, 320), scene.cut(300, 150, 240, 320)).result, -1);
  }
}

}  // namespace
