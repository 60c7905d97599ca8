// SPDX-License-Identifier: Apache-2.0
// Each reason as frames really bring it about, and what becomes of the frames after it.
#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <vector>

#include "framequilt/session.h"
#include "framequilt/tuning.h"
#include "tests/support/recorded_reports.h"
#include "tests/support/scene.h"
#include "tests/support/scoped_value.h"
#include "tests/support/session_frames.h"

using framequilt::FrameResult;
using framequilt::Refusal;
using framequilt::Session;
using framequilt::SessionOptions;
using framequilt::Verdict;

namespace {

constexpr int kRows = 240;
constexpr int kCols = 320;

/// A camera over one scene.
class SessionRefusals : public testing::Test {
 protected:
  Frame frameAt(int x, int y) const { return scene_.cut(x, y, kRows, kCols); }
  static Frame blank() { return Frame(kRows, kCols, 1, 128); }
  static Frame unrelated() { return Scene(kRows, kCols, 1, 99).picture(); }

  FrameResult add(Session& session, const Frame& frame) const { return session.add(viewOf(frame)); }
  FrameResult addAt(Session& session, int x, int y) const { return add(session, frameAt(x, y)); }
  /// With frames at (20, 100) and (120, 100) joined.
  void join(Session& session) const {
    addAt(session, 20, 100);
    ASSERT_EQ(addAt(session, 120, 100).verdict, Verdict::kJoined);
  }

  static SessionOptions options() { return grayOptions(kRows, kCols); }

  const Scene scene_{560, 900, 1, 12};
  const RecordedReports quiet_;
};

}  // namespace

TEST_F(SessionRefusals, ABlankFrameHasNoOverlap) {
  Session session(options());
  join(session);
  const FrameResult result = add(session, blank());
  EXPECT_EQ(explain(result), "no overlap found: matches 0, needs at least 11");
  EXPECT_FALSE(result.measures.offset);
  EXPECT_EQ(addAt(session, 220, 100).placement, cv::Point(200, 0));
}

TEST_F(SessionRefusals, AnUnrelatedFrameHasAFewMatchesByChance) {
  Session session(options());
  join(session);
  const FrameResult result = add(session, unrelated());
  EXPECT_EQ(result.reason, Refusal::kNoOverlap);
  EXPECT_GT(result.judged.value, 0);
  EXPECT_LE(result.judged.value, 3);
  EXPECT_EQ(addAt(session, 220, 100).placement, cv::Point(200, 0));
}

TEST_F(SessionRefusals, ReasonsAreThoseOfTheFrameItself) {
  Session session(options());
  join(session);
  const FrameResult first = add(session, unrelated());
  const FrameResult same = add(session, unrelated());
  EXPECT_EQ(same.reason, first.reason);
  EXPECT_EQ(same.judged.value, first.judged.value);
  EXPECT_EQ(add(session, blank()).reason, Refusal::kNoOverlap);
  EXPECT_EQ(add(session, unrelated()).judged.value, first.judged.value);
  EXPECT_EQ(addAt(session, 120, 100).reason, Refusal::kMovedTooLittle);
  EXPECT_EQ(add(session, blank()).reason, Refusal::kNoOverlap);
  EXPECT_EQ(add(session, blank()).reason, Refusal::kNoOverlap);
}

TEST_F(SessionRefusals, AStandingCameraMovedTooLittle) {
  Session session(options());
  join(session);
  EXPECT_EQ(explain(addAt(session, 120, 100)),
            "moved too little: moved by 0 %, needs more than 10 %");
  EXPECT_EQ(explain(addAt(session, 152, 100)),
            "moved too little: moved by 10 %, needs more than 10 %");
  // Small steps add up.
  const FrameResult result = addAt(session, 184, 100);
  EXPECT_EQ(result.placement, cv::Point(164, 0));
  EXPECT_EQ(result.measures.offset, cv::Point(64, 0));
}

TEST_F(SessionRefusals, SmallStepsBesideAFirstFrameAddUpToo) {
  Session session(options());
  for (const int x : {20, 26, 32, 38, 44}) {
    EXPECT_NE(addAt(session, x, 100).verdict, Verdict::kJoined);
  }
  EXPECT_EQ(session.firstFrame(), 0);
  EXPECT_EQ(addAt(session, 70, 100).placement, cv::Point(50, 0));
}

TEST(SessionWideFrames, WithHardlyAnyOverlapMovedTooFar) {
  const RecordedReports quiet;
  const Scene scene(240, 3900, 1, 11);
  SessionOptions options = optionsFor(scene.cut(0, 0, 240, 2000));
  options.cornerBudget = 10;
  Session session(options);
  session.add(viewOf(scene.cut(0, 0, 240, 2000)));
  const FrameResult result = session.add(viewOf(scene.cut(1840, 0, 240, 2000)));
  EXPECT_EQ(explain(result), "moved too far: overlap 8 %, needs more than 10 %");
  EXPECT_EQ(result.measures.offset, cv::Point(1840, 0));
  // The pair qualified, so the first frame is kept by the engine.
  EXPECT_EQ(session.add(viewOf(scene.cut(1200, 0, 240, 2000))).placement, cv::Point(1200, 0));
}

TEST_F(SessionRefusals, TheLimitsOfMovementAreTheTunedOnes) {
  const ScopedValue<float> half(ImageOverlap_minCpu, 0.5F);
  Session session(options());
  join(session);
  EXPECT_EQ(explain(addAt(session, 300, 100)),
            "moved too far: overlap 43.8 %, needs more than 50 %");
  EXPECT_EQ(addAt(session, 220, 100).verdict, Verdict::kJoined);
}

TEST_F(SessionRefusals, ADynamicSceneThatChangesTooMuchIsMoving) {
  SessionOptions dynamic = options();
  dynamic.dynamicScene = true;
  Session session(dynamic);
  addAt(session, 20, 100);
  const FrameResult result = addAt(session, 120, 100);
  EXPECT_EQ(result.reason, Refusal::kMovingScene);
  ASSERT_TRUE(result.measures.change);
  EXPECT_EQ(result.judged.value, result.measures.change->value);
  EXPECT_EQ(result.judged.limit, motionValueThCpu0);
  EXPECT_GE(result.judged.value, result.judged.limit);
  EXPECT_EQ(result.measures.offset, cv::Point(100, 0));
  // The change is that since the frame before, not since the reference.
  const FrameResult still = addAt(session, 120, 100);
  EXPECT_EQ(still.verdict, Verdict::kRefused);
  // Where no offset was found nothing else was measured either.
  EXPECT_FALSE(add(session, blank()).measures.change);
}

TEST_F(SessionRefusals, AFullMosaicTakesNoMore) {
  SessionOptions small = options();
  small.maxRows = small.maxCols = 6000;
  Session session(small);
  addAt(session, 20, 100);
  const FrameResult joined = addAt(session, 120, 100);
  EXPECT_EQ(joined.verdict, Verdict::kJoined);
  EXPECT_TRUE(joined.full);
  const cv::Mat before = session.mosaic().clone();
  EXPECT_EQ(explain(addAt(session, 220, 100)),
            "mosaic full: size 36000000 pixels, limit 36000000 pixels");
  EXPECT_EQ(cv::norm(session.mosaic(), before, cv::NORM_INF), 0.0);
}

TEST_F(SessionRefusals, OneMorePixelIsRoom) {
  SessionOptions small = options();
  small.maxRows = 6000;
  small.maxCols = 6001;
  Session session(small);
  join(session);
  const FrameResult next = addAt(session, 220, 100);
  EXPECT_EQ(next.verdict, Verdict::kJoined);
  EXPECT_FALSE(next.full);
}

TEST_F(SessionRefusals, AFirstFrameThatNothingJoinsGivesWay) {
  Session session(options());
  add(session, blank());
  EXPECT_FALSE(addAt(session, 20, 100).becameFirst);
  EXPECT_FALSE(addAt(session, 120, 100).becameFirst);
  EXPECT_TRUE(addAt(session, 220, 120).becameFirst);
  EXPECT_EQ(session.firstFrame(), 3);
  const FrameResult joined = addAt(session, 320, 120);
  EXPECT_EQ(joined.verdict, Verdict::kJoined);
  EXPECT_EQ(joined.placement, cv::Point(100, 0));
  EXPECT_EQ(joined.changed, cv::Rect(0, 0, kCols + 100, kRows));
  const FrameResult back = addAt(session, 220, 220);
  EXPECT_EQ(back.placement, cv::Point(0, 100));
  EXPECT_EQ(session.steadyBox(), cv::Rect(0, 0, kCols + 100, kRows + 100));
}

TEST_F(SessionRefusals, ARefusedFrameLeavesTheMosaicAlone) {
  Session session(options());
  join(session);
  const cv::Mat before = session.mosaic().clone();
  const cv::Rect box = session.steadyBox();
  for (const Frame& frame : {blank(), unrelated(), frameAt(130, 100)}) {
    EXPECT_EQ(add(session, frame).verdict, Verdict::kRefused);
    EXPECT_EQ(session.steadyBox(), box);
    EXPECT_EQ(cv::norm(session.mosaic(), before, cv::NORM_INF), 0.0);
  }
}
