// SPDX-License-Identifier: Apache-2.0
// Mosaics of more than 2^31 bytes, where every index has to be wider than an int. They take address
// space of twice their size, and memory where frames lie.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <tuple>
#include <vector>

#include "cpu/mosaic_growth.h"
#include "framequilt/framequilt.h"
#include "framequilt/tuning.h"
#include "imaging/fusion.h"
#include "tests/opencl/frame_rules.h"
#include "tests/support/random_images.h"
#include "tests/support/scoped_value.h"

namespace {

using frame_rules::On;

/// Of a frame in the mosaic.
constexpr int kSide = 3000;
constexpr int kStep = 2600;
constexpr int kLargestSide = 46340;
constexpr int kChannels = 3;
constexpr std::int64_t kTwoGiB = std::int64_t{1} << 31U;

/// Rows of noise in 1..255, each another stretch of it.
Frame noisyFrame(std::uint64_t seed, int side) {
  Frame frame(side, side, kChannels);
  const std::size_t row = static_cast<std::size_t>(side) * kChannels;
  const Bytes noise = Random(seed).bytes(4 * row, 1, 255);
  for (std::size_t r = 0; r < static_cast<std::size_t>(side); ++r) {
    std::copy_n(noise.data() + r * 7919 % (3 * row), row, frame.bytes.data() + r * row);
  }
  return frame;
}

cv::Mat matOf(Frame& frame) { return cv::Mat(frame.rows, frame.cols, CV_8UC3, frame.bytes.data()); }

cv::Rect placeOf(const FrameOutcome& outcome) {
  return {outcome.flags.position.x, outcome.flags.position.y, kSide, kSide};
}

/// What `ground` becomes under `frame`.
Frame fused(const cv::Mat& ground, Frame frame) {
  Frame result(kSide, kSide, kChannels);
  ground.copyTo(matOf(result));
  twoImageFusion(result.bytes.data(), frame.bytes.data(), kChannels, 0, kSide, kSide);
  return result;
}

/// Row by row: OpenCV's own counts are ints.
std::int64_t pixelsSet(const cv::Mat& mosaic) {
  std::int64_t set = 0;
  for (int r = 0; r < mosaic.rows; ++r) {
    const cv::Vec3b* const row = mosaic.ptr<cv::Vec3b>(r);
    set += std::count_if(row, row + mosaic.cols, [](const cv::Vec3b& p) { return p[0] != 0; });
  }
  return set;
}

/// Pixels under `count` frames that lie a step apart along the diagonal.
std::int64_t pixelsOfDiagonal(std::int64_t count) {
  constexpr std::int64_t kOverlap = kSide - kStep;
  return count * kSide * kSide - (count - 1) * kOverlap * kOverlap;
}

using Kind = std::tuple<On, int>;

std::string kindName(const testing::TestParamInfo<Kind>& kind) {
  return std::string(std::get<0>(kind.param) == On::kCard ? "Card" : "Host") +
         (std::get<1>(kind.param) == frame_rules::kMotion ? "Motion" : "Overlap");
}

/// One way of sharing memory with the card is enough: the mosaic never lies there.
class LargeMosaic : public DeviceFixture, public testing::WithParamInterface<Kind> {
 protected:
  LargeMosaic() { std::get<0>(GetParam()) == On::kCard ? withCard() : withoutCard(); }
};

INSTANTIATE_TEST_SUITE_P(, LargeMosaic,
                         testing::Combine(testing::Values(On::kHost, On::kCard),
                                          testing::Values(frame_rules::kMotion,
                                                          frame_rules::kOverlap)),
                         kindName);

TEST_P(LargeMosaic, TakesFramesBeyondTwoGiB) {
  const int stitchMode = std::get<1>(GetParam());
  RunSettings settings = frame_rules::settingsFor(stitchMode, frame_rules::kStatic, kChannels);
  // On the host at half size: it copies large frames of scale 1 beside a search of its own.
  settings.frameScale = std::get<0>(GetParam()) == On::kHost ? 2 : 1;
  const ScopedValue<int> ofHost(scale, settings.frameScale);
  settings.rows = settings.cols = kSide * settings.frameScale;
  settings.maxRow = settings.maxCol = kLargestSide;
  const ScopedValue<int> rowsOfCard(MAXROWCL, kLargestSide);
  const ScopedValue<int> colsOfCard(MAXCOLCL, kLargestSide);
  scriptOffset({kStep, kStep});
  CaptureRun run(settings);
  ASSERT_EQ(openclDeviceFlag, std::get<0>(GetParam()) == On::kCard);

  FrameOutcome outcome = run.first(noisyFrame(0, settings.rows), noisyFrame(1, settings.rows));
  int frames = 2;
  for (int beyond = 0; beyond < 3; ++frames) {
    ASSERT_EQ(outcome.result, 0);
    ASSERT_TRUE(outcome.joined()) << "frame " << frames;
    // The mosaic shares its pixels with the run.
    const cv::Rect next = placeOf(outcome) + cv::Point(kStep, kStep);
    const cv::Rect there = next & cv::Rect({}, outcome.mosaic.size());
    cv::Mat ground = cv::Mat::zeros(next.size(), CV_8UC3);
    outcome.mosaic(there).copyTo(ground(there - next.tl()));

    const Frame frame = noisyFrame(static_cast<std::uint64_t>(frames), settings.rows);
    outcome = run.next(frame);
    EXPECT_EQ(placeOf(outcome), next);
    Frame expected = fused(ground, everyNth(frame, settings.frameScale));
    EXPECT_EQ(cv::norm(outcome.mosaic(next), matOf(expected), cv::NORM_INF), 0.0);
    const std::int64_t lastByte =
        std::int64_t{next.br().y - 1} * static_cast<std::int64_t>(outcome.mosaic.step[0]);
    if (lastByte >= kTwoGiB) ++beyond;
  }
  EXPECT_GT(static_cast<std::int64_t>(outcome.mosaic.total()) * kChannels, kTwoGiB);
  EXPECT_EQ(pixelsSet(outcome.mosaic), pixelsOfDiagonal(frames));
}

TEST(LargeMosaicGrowth, KeepsWhatLiesBeyondTwoGiB) {
  constexpr int kLarge = 30000;
  constexpr int kGrowth = 300;
  const cv::Scalar colour(10, 20, 30);
  // Black memory that takes none before it is written.
  const std::unique_ptr<void, decltype(&std::free)> memory(
      std::calloc(static_cast<std::size_t>(kLarge) * kLarge, kChannels), &std::free);
  ASSERT_NE(memory, nullptr);
  cv::Mat mosaic(kLarge, kLarge, CV_8UC3, memory.get());
  const std::vector<cv::Rect> marks = {{0, 0, 5, 4},
                                       {kLarge - 5, 0, 5, 4},
                                       {0, kLarge - 4, 5, 4},
                                       {kLarge - 5, kLarge - 4, 5, 4},
                                       {20000, 28000, 50, 40}};
  for (const cv::Rect& mark : marks) mosaic(mark).setTo(colour);
  cv::Mat grown;
  SPoint position, topLeft, bottomRight;
  BorderExpand(mosaic, kGrowth, 2 * kGrowth, -10, -20, 100, 100, kLarge, kLarge, {5, 5}, grown,
               position, {0, 0}, {kLarge, kLarge}, topLeft, bottomRight);
  EXPECT_EQ(grown.size(), cv::Size(kLarge + 2 * kGrowth, kLarge + kGrowth));
  EXPECT_EQ(position, (SPoint{5 + 2 * kGrowth, 5 + kGrowth}));
  std::int64_t marked = 0;
  for (const cv::Rect& mark : marks) {
    const cv::Mat moved = grown(mark + cv::Point(2 * kGrowth, kGrowth));
    EXPECT_EQ(cv::norm(moved, cv::Mat(mark.size(), CV_8UC3, colour), cv::NORM_INF), 0.0);
    marked += mark.area();
  }
  EXPECT_EQ(pixelsSet(grown), marked);
}

}  // namespace
