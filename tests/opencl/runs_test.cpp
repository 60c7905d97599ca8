// SPDX-License-Identifier: Apache-2.0
// Whole runs through the entry points: the card makes the host's mosaic.
#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "framequilt/framequilt.h"
#include "tests/opencl/device_fixture.h"
#include "tests/run/captures.h"
#include "tests/support/capture_run.h"

namespace {

class Runs : public EitherMemory {
 protected:
  /// Plays the round trip; `onCard` is checked.
  std::vector<FrameOutcome> play(const CaptureKind& kind, bool onCard) {
    onCard ? withCard() : withoutCard();
    const RoundTrip trip(kind);
    CaptureRun run(kind.settings());
    EXPECT_EQ(openclDeviceFlag, onCard);
    std::vector<FrameOutcome> outcomes = trip.play(run);
    return outcomes;
  }
};

cv::Rect boxOf(const FrameOutcome& outcome) {
  return {outcome.topLeft.x, outcome.topLeft.y, outcome.bottomRight.x - outcome.topLeft.x,
          outcome.bottomRight.y - outcome.topLeft.y};
}

void expectSamePixels(const cv::Mat& card, const cv::Mat& host) {
  ASSERT_EQ(card.size(), host.size());
  ASSERT_EQ(card.type(), host.type());
  EXPECT_EQ(cv::norm(card, host, cv::NORM_INF), 0.0);
}

void expectSame(const FrameOutcome& card, const FrameOutcome& host) {
  EXPECT_EQ(card.result, host.result);
  EXPECT_EQ(card.topLeft, host.topLeft);
  EXPECT_EQ(card.bottomRight, host.bottomRight);
  EXPECT_EQ(card.flags.offsetX, host.flags.offsetX);
  EXPECT_EQ(card.flags.offsetY, host.flags.offsetY);
  EXPECT_EQ(card.flags.matchNum, host.flags.matchNum);
  EXPECT_EQ(card.flags.position, host.flags.position);
  EXPECT_EQ(card.flags.stitch_flags, host.flags.stitch_flags);
  EXPECT_EQ(card.flags.brightOne, host.flags.brightOne);
  EXPECT_EQ(card.flags.brightTwo, host.flags.brightTwo);
  EXPECT_EQ(card.mosaic.size(), host.mosaic.size());
}

TEST_P(Runs, MakesTheHostsMosaic) {
  for (const CaptureKind& kind : everyKind()) {
    if (kind.scale != 1) continue;
    SCOPED_TRACE(kind.name());
    const std::vector<FrameOutcome> card = play(kind, true);
    const std::vector<FrameOutcome> host = play(kind, false);
    ASSERT_EQ(card.size(), host.size());
    int joined = 0;
    for (std::size_t i = 0; i < card.size(); ++i) {
      SCOPED_TRACE("frame " + std::to_string(i + 1));
      expectSame(card[i], host[i]);
      joined += card[i].joined() ? 1 : 0;
    }
    // Each run's outcomes share one mosaic, which holds whatever was ever blended.
    expectSamePixels(card.back().mosaic(boxOf(card.back())),
                     host.back().mosaic(boxOf(host.back())));
    EXPECT_EQ(joined, RoundTrip::kFrames - 1);
    expectOnlyKeptBuffer();
  }
}

FRAMEQUILT_IN_EITHER_MEMORY(Runs);

}  // namespace
