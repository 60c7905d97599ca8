// SPDX-License-Identifier: Apache-2.0
// Frames that are large enough for a second thread at every step: the caller searches one of the
// images itself, and a thread of its own helps with the fusion.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "cpu/run_state.h"
#include "framequilt/framequilt.h"
#include "tests/run/captures.h"

namespace {

constexpr int kRows = 720;
constexpr int kCols = 800;

class LargeFrames : public testing::TestWithParam<int> {
 protected:
  static RunSettings settings() {
    RunSettings settings;
    settings.rows = kRows;
    settings.cols = kCols;
    settings.channels = GetParam();
    return settings;
  }

  Frame at(SPoint corner) const { return scene_.cut(corner.x, corner.y, kRows, kCols); }

  /// Where a frame with its corner at `corner` of the scene lies, the first being at (300, 200).
  static SPoint placeOf(SPoint corner) { return firstPosition(settings()) + corner - kStart; }

  static constexpr SPoint kStart = {300, 200};
  Scene scene_{1300, 1500, GetParam(), 11};
};

INSTANTIATE_TEST_SUITE_P(Channels, LargeFrames, testing::Values(1, 3));

TEST_P(LargeFrames, LandWhereTheCameraWasInEveryDirection) {
  const std::vector<SPoint> path = {kStart, {500, 280}, {400, 460}, {180, 380}, {260, 120}};
  CaptureRun run(settings());
  const std::vector<FrameOutcome> outcomes = run.play(scene_, path);
  std::vector<Placement> frames = {{path[0], kRows, kCols}};
  for (std::size_t i = 1; i < path.size(); ++i) {
    SCOPED_TRACE("frame " + std::to_string(i));
    EXPECT_EQ(outcomes[i - 1].result, 0);
    EXPECT_EQ(outcomes[i - 1].flags.position, placeOf(path[i]));
    frames.push_back({path[i], kRows, kCols});
  }
  expectMosaicShows(outcomes.back().mosaic, scene_.picture(), placeOf({0, 0}), frames);
}

/// Such a frame cannot be copied beside the search, and what that gives is what this gives.
TEST_P(LargeFrames, GivenInTheLibrarysOwnBufferMakeTheSameMosaic) {
  const std::vector<SPoint> path = {kStart, {500, 280}, {400, 460}, {180, 380}, {260, 120}};
  const auto digestOf = [&](bool inOwnBuffer) {
    CaptureRun run(settings());
    FrameOutcome outcome = run.first(at(path[0]), at(path[1]));
    Digest digest;
    addOutcome(digest, outcome);
    for (std::size_t i = 2; i < path.size(); ++i) {
      const Frame frame = at(path[i]);
      if (inOwnBuffer) {
        std::copy(frame.bytes.begin(), frame.bytes.end(), thedestImageScale);
        outcome.result =
            stichingImagedJoint(nullptr, thedestImageScale, 1, 1, 0, 0, false, outcome.topLeft,
                                outcome.bottomRight, outcome.mosaic, outcome.flags);
      } else {
        outcome = run.next(frame);
      }
      EXPECT_EQ(outcome.result, 0);
      EXPECT_EQ(outcome.flags.position, placeOf(path[i]));
      addOutcome(digest, outcome);
    }
    return digest.value();
  };
  EXPECT_EQ(digestOf(true), digestOf(false));
}

TEST_P(LargeFrames, ReferenceOutlivesRefusedFrames) {
  CaptureRun run(settings());
  ASSERT_TRUE(run.first(at(kStart), at({460, 200})).joined());

  // No offset, then an offset that is too small to be blended.
  EXPECT_EQ(run.next(noiseFrame(kRows, kCols, GetParam(), 5)).result, -1);
  const FrameOutcome near = run.next(at({470, 204}));
  EXPECT_EQ(near.result, 0);
  EXPECT_EQ(near.flags.stitch_flags, 1);
  EXPECT_FALSE(near.joined());
  EXPECT_EQ(near.flags.offsetX, 10);

  const FrameOutcome last = run.next(at({480, 380}));
  EXPECT_EQ(last.flags.offsetX, 20);
  EXPECT_EQ(last.flags.offsetY, 180);
  EXPECT_EQ(last.flags.position, placeOf({480, 380}));
  expectMosaicShows(
      last.mosaic, scene_.picture(), placeOf({0, 0}),
      {{kStart, kRows, kCols}, {{460, 200}, kRows, kCols}, {{480, 380}, kRows, kCols}});
}

}  // namespace
