// SPDX-License-Identifier: Apache-2.0
// Whole captures through a session: every frame lands where the camera was, and the mosaic is that
// of the entry points called by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "framequilt/session.h"
#include "framequilt/tuning.h"
#include "tests/run/captures.h"
#include "tests/support/recorded_reports.h"
#include "tests/support/scoped_value.h"
#include "tests/support/session_frames.h"

using framequilt::Criterion;
using framequilt::FrameResult;
using framequilt::Session;
using framequilt::SessionOptions;
using framequilt::Verdict;

namespace {

SessionOptions optionsOf(const CaptureKind& kind) {
  const RunSettings settings = kind.settings();
  SessionOptions options;
  options.rows = settings.rows;
  options.cols = settings.cols;
  options.channels = kind.channels;
  options.scale = kind.scale;
  options.cornerBudget = settings.cornerBudget;
  options.criterion = kind.stitchMode != 0 ? Criterion::kMotion : Criterion::kOverlap;
  options.dynamicScene = kind.staticDynamicFlag != 0;
  return options;
}

/// How far the camera went from the frame before, in frame pixels.
cv::Point stepTo(int index, const CaptureKind& kind) {
  const SPoint step = RoundTrip::corner(index) - RoundTrip::corner(index - 1);
  return cv::Point(step.x, step.y) * kind.scale;
}

/// Where the camera was, in frame pixels from the first frame.
cv::Point truth(int index, const CaptureKind& kind) {
  const SPoint way = RoundTrip::corner(index) - RoundTrip::corner(0);
  return cv::Point(way.x, way.y) * kind.scale;
}

/// The mosaic of the entry points called by hand.
cv::Mat mosaicByHand(const RoundTrip& capture, const CaptureKind& kind) {
  const ScopedValue<int> scaleOfRun(scale, kind.scale);
  CaptureRun run(kind.settings());
  const FrameOutcome last = capture.play(run).back();
  return last
      .mosaic(cv::Rect(cv::Point(last.topLeft.x, last.topLeft.y),
                       cv::Point(last.bottomRight.x, last.bottomRight.y)))
      .clone();
}

class SessionCapture : public testing::TestWithParam<CaptureKind> {
 protected:
  /// The results of a whole capture, each frame with a hint or none with any.
  std::vector<FrameResult> play(Session& session, bool hints) const {
    std::vector<FrameResult> results;
    for (int i = 0; i < RoundTrip::kFrames; ++i) {
      const std::optional<cv::Point> hint =
          hints && i > 0 ? std::optional(stepTo(i, GetParam())) : std::nullopt;
      results.push_back(session.add(viewOf(capture_.frame(i)), hint));
    }
    return results;
  }

  void expectTruth(const std::vector<FrameResult>& results) const {
    EXPECT_EQ(results[0].verdict, Verdict::kWaiting);
    for (int i = 1; i < RoundTrip::kFrames; ++i) {
      SCOPED_TRACE("frame " + std::to_string(i));
      const FrameResult& result = results[static_cast<std::size_t>(i)];
      EXPECT_EQ(result.frame, i);
      EXPECT_EQ(result.verdict, Verdict::kJoined) << explain(result);
      EXPECT_EQ(result.placement, truth(i, GetParam()));
      EXPECT_EQ(result.measures.offset, stepTo(i, GetParam()));
      EXPECT_GE(result.measures.matches.value, 11);
    }
  }

  const RoundTrip capture_{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(, SessionCapture, testing::ValuesIn(everyKind()),
                         [](const auto& instance) { return instance.param.name(); });

class HintedCapture : public SessionCapture {};

/// All but those of low contrast: the strips that hints select may show a single corner of it.
std::vector<CaptureKind> hintedKinds() {
  std::vector<CaptureKind> kinds = everyKind();
  const auto lowContrast = [](const CaptureKind& kind) {
    return kind.stitchMode != 0 && kind.staticDynamicFlag != 0;
  };
  kinds.erase(std::remove_if(kinds.begin(), kinds.end(), lowContrast), kinds.end());
  return kinds;
}

INSTANTIATE_TEST_SUITE_P(, HintedCapture, testing::ValuesIn(hintedKinds()),
                         [](const auto& instance) { return instance.param.name(); });

}  // namespace

TEST_P(SessionCapture, LandsWhereTheCameraWasAndIsTheMosaicOfTheEntryPoints) {
  const cv::Mat expected = mosaicByHand(capture_, GetParam());
  const RecordedReports quiet;
  Session session(optionsOf(GetParam()));
  expectTruth(play(session, false));
  // From column 104 and row 150 to 640 and 480 of the scene, whose first frame begins at 200, 150.
  EXPECT_EQ(session.steadyBox(), cv::Rect(-96, 0, 536, 330));
  const cv::Mat mosaic = session.mosaic();
  ASSERT_EQ(mosaic.size(), expected.size());
  ASSERT_EQ(mosaic.type(), expected.type());
  EXPECT_EQ(cv::norm(mosaic, expected, cv::NORM_INF), 0.0);
  EXPECT_EQ(cv::norm(mosaic, session.copyRegion(session.steadyBox()), cv::NORM_INF), 0.0);
}

TEST_P(HintedCapture, LandsThereToo) {
  const RecordedReports quiet;
  Session session(optionsOf(GetParam()));
  expectTruth(play(session, true));
}

TEST_P(SessionCapture, LeavesTheCallersFramesAlone) {
  const RecordedReports quiet;
  Session session(optionsOf(GetParam()));
  for (int i = 0; i < 3; ++i) {
    const Frame given = capture_.frame(i);
    session.add(viewOf(given));
    EXPECT_EQ(given.bytes, capture_.frame(i).bytes);
  }
}

TEST_P(SessionCapture, IsTheSameInTheNextSession) {
  const RecordedReports quiet;
  cv::Mat first;
  for (int round = 0; round < 2; ++round) {
    Session session(optionsOf(GetParam()));
    play(session, false);
    if (round == 0) first = session.mosaic();
    EXPECT_EQ(cv::norm(session.mosaic(), first, cv::NORM_INF), 0.0);
  }
}

TEST(SessionMeasures, OfJoinedFramesAreWithinTheirLimits) {
  const RecordedReports quiet;
  for (const CaptureKind& kind : everyKind()) {
    SCOPED_TRACE(kind.name());
    const RoundTrip capture(kind);
    Session session(optionsOf(kind));
    session.add(viewOf(capture.frame(0)));
    const framequilt::Measures measures = session.add(viewOf(capture.frame(1))).measures;
    // 120 of 320 columns.
    ASSERT_TRUE(measures.moved && measures.overlap);
    EXPECT_DOUBLE_EQ(measures.moved->value, 37.5);
    EXPECT_NEAR(measures.moved->limit, 10, 1e-5);
    EXPECT_DOUBLE_EQ(measures.overlap->value, 62.5);
    EXPECT_NEAR(measures.overlap->limit, 10, 1e-5);
    const bool byMotion = kind.stitchMode != 0;
    const bool dynamic = kind.staticDynamicFlag != 0;
    ASSERT_EQ(measures.change.has_value(), byMotion && dynamic);
    ASSERT_EQ(measures.brightness.has_value(), !byMotion);
    ASSERT_EQ(measures.sharpness.has_value(), !byMotion);
    if (byMotion && dynamic) {
      EXPECT_EQ(measures.change->value > 0, kind.scale == 1);
      EXPECT_LT(measures.change->value, measures.change->limit);
      EXPECT_EQ(measures.change->limit, motionValueThCpu0);
    } else if (!byMotion) {
      // Both sides show the same bytes.
      EXPECT_EQ(measures.brightness->value, 0);
      EXPECT_EQ(measures.brightness->limit, dynamic ? brightThCpu0 : 128);
      EXPECT_EQ(measures.sharpness->value, 0);
      EXPECT_EQ(measures.sharpness->limit, dynamic ? defintThCpu0 : 128);
    }
  }
}
