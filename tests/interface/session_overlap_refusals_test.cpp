// SPDX-License-Identifier: Apache-2.0
// The overlap criterion: the engine overwrites its reference with what it measures, and remembers
// that a frame qualified. Neither may touch the next frame.
#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <string>

#include "framequilt/session.h"
#include "framequilt/tuning.h"
#include "tests/support/recorded_reports.h"
#include "tests/support/scene.h"
#include "tests/support/scoped_value.h"
#include "tests/support/session_frames.h"

using framequilt::Criterion;
using framequilt::FrameResult;
using framequilt::Measure;
using framequilt::Refusal;
using framequilt::Session;
using framequilt::SessionOptions;
using framequilt::Verdict;

namespace {

constexpr int kRows = 240;
constexpr int kCols = 320;

/// A camera over a scene that moves by itself; gray and colour, scale 1 and 2.
class SessionOverlap : public testing::TestWithParam<int> {
 protected:
  int channels() const { return GetParam() % 10; }
  int scale() const { return GetParam() / 10; }

  Frame frameAt(int x, int y) const {
    return scene_.cut(x * scale(), y * scale(), kRows * scale(), kCols * scale());
  }
  Frame darkAt(int x, int y) const { return withGain(frameAt(x, y), 128, 0); }

  /// Placements and offsets are in frame pixels.
  cv::Point scaled(int x, int y) const { return cv::Point(x, y) * scale(); }

  SessionOptions options() const {
    SessionOptions options = optionsFor(frameAt(0, 0));
    options.scale = scale();
    options.criterion = Criterion::kOverlap;
    options.dynamicScene = true;
    return options;
  }

  void join(Session& session) const {
    session.add(viewOf(frameAt(20, 100)));
    const FrameResult joined = session.add(viewOf(frameAt(120, 100)));
    ASSERT_EQ(joined.verdict, Verdict::kJoined) << explain(joined);
  }

  static void expectTooDark(const FrameResult& result) {
    EXPECT_EQ(result.verdict, Verdict::kRefused);
    EXPECT_EQ(result.reason, Refusal::kBrightness);
    ASSERT_TRUE(result.measures.brightness);
    EXPECT_EQ(result.judged.value, result.measures.brightness->value);
    EXPECT_EQ(result.judged.limit, brightThCpu0);
    // Half of a mean of about 110 is missing.
    EXPECT_NEAR(result.judged.value, 60, 15);
  }

  const Scene scene_{460 * scale(), 700 * scale(), channels(), 12};
  const RecordedReports quiet_;
};

INSTANTIATE_TEST_SUITE_P(, SessionOverlap, testing::Values(11, 13, 21, 23),
                         [](const auto& instance) {
                           return std::string(instance.param % 10 == 1 ? "Gray" : "Colour") +
                                  (instance.param / 10 == 1 ? "" : "Halved");
                         });

}  // namespace

TEST_P(SessionOverlap, ADarkFrameBesideTheFirstIsRefused) {
  Session session(options());
  session.add(viewOf(frameAt(20, 100)));
  expectTooDark(session.add(viewOf(darkAt(120, 100))));
  // The first frame goes along again as it was.
  const FrameResult joined = session.add(viewOf(frameAt(120, 100)));
  EXPECT_EQ(joined.verdict, Verdict::kJoined) << explain(joined);
  EXPECT_EQ(joined.placement, scaled(100, 0));
  EXPECT_EQ(joined.measures.brightness.value_or(Measure{-1, 0}).value, 0);
}

TEST_P(SessionOverlap, ADarkFrameLaterIsRefusedAndTheNextJoinsTheLastJoinedOne) {
  Session session(options());
  join(session);
  const cv::Mat before = session.mosaic().clone();
  for (int i = 0; i < 2; ++i) {
    const FrameResult dark = session.add(viewOf(darkAt(220, 120)));
    expectTooDark(dark);
    EXPECT_EQ(dark.measures.offset, scaled(100, 20));
    EXPECT_EQ(cv::norm(session.mosaic(), before, cv::NORM_INF), 0.0);
  }
  const FrameResult next = session.add(viewOf(frameAt(200, 140)));
  EXPECT_EQ(next.verdict, Verdict::kJoined) << explain(next);
  EXPECT_EQ(next.measures.offset, scaled(80, 40));
  EXPECT_EQ(next.placement, scaled(180, 40));
}

TEST_P(SessionOverlap, ARefusedFrameChangesNothingForTheNext) {
  cv::Mat expected;
  for (const bool withDark : {false, true}) {
    Session session(options());
    join(session);
    if (withDark) session.add(viewOf(darkAt(220, 120)));
    session.add(viewOf(frameAt(200, 140)));
    session.add(viewOf(frameAt(260, 60)));
    if (!withDark) {
      expected = session.mosaic();
    } else {
      ASSERT_EQ(session.mosaic().size(), expected.size());
      EXPECT_EQ(cv::norm(session.mosaic(), expected, cv::NORM_INF), 0.0);
    }
  }
}

TEST_P(SessionOverlap, EachFrameIsJudgedByItsOwnBrightness) {
  Session session(options());
  join(session);
  const double half = session.add(viewOf(darkAt(220, 120))).judged.value;
  const FrameResult lighter = session.add(viewOf(withGain(frameAt(220, 120), 150, 0)));
  EXPECT_EQ(lighter.reason, Refusal::kBrightness);
  EXPECT_LT(lighter.judged.value, half - 5);
  const FrameResult brighter = session.add(viewOf(withGain(frameAt(220, 120), 220, 0)));
  EXPECT_EQ(brighter.verdict, Verdict::kJoined) << explain(brighter);
  EXPECT_GT(brighter.measures.brightness.value_or(Measure{}).value, 1);
}

TEST_P(SessionOverlap, SharpnessIsNamedWhereTheBrightnessFits) {
  const ScopedValue<float> narrow(defintThCpu0, 0.01F);
  Session session(options());
  join(session);
  // Noise roughens the frame without making it darker.
  const FrameResult rough = session.add(viewOf(withNoise(frameAt(220, 120), 8, 3)));
  EXPECT_EQ(rough.reason, Refusal::kSharpness) << explain(rough);
  EXPECT_GT(rough.judged.value, 0.01);
  EXPECT_EQ(rough.judged.limit, static_cast<double>(0.01F));
  EXPECT_LT(rough.measures.brightness.value_or(Measure{99, 0}).value, 2);
}

TEST_P(SessionOverlap, ThreeDarkFramesMakeTheThirdTheFirst) {
  Session session(options());
  session.add(viewOf(frameAt(20, 100)));
  EXPECT_FALSE(session.add(viewOf(darkAt(120, 100))).becameFirst);
  EXPECT_FALSE(session.add(viewOf(darkAt(120, 110))).becameFirst);
  EXPECT_TRUE(session.add(viewOf(darkAt(120, 120))).becameFirst);
  const FrameResult joined = session.add(viewOf(darkAt(220, 130)));
  EXPECT_EQ(joined.verdict, Verdict::kJoined) << explain(joined);
  EXPECT_EQ(joined.placement, scaled(100, 10));
  EXPECT_EQ(joined.measures.brightness.value_or(Measure{-1, 0}).value, 0);
}

TEST_P(SessionOverlap, AStandingCameraKeepsTheReference) {
  Session session(options());
  join(session);
  EXPECT_EQ(session.add(viewOf(frameAt(124, 100))).reason, Refusal::kMovedTooLittle);
  expectTooDark(session.add(viewOf(darkAt(220, 120))));
  EXPECT_EQ(session.add(viewOf(frameAt(124, 104))).reason, Refusal::kMovedTooLittle);
  EXPECT_EQ(session.add(viewOf(frameAt(220, 120))).placement, scaled(200, 20));
}
