// SPDX-License-Identifier: Apache-2.0
// Where frames lie, while the mosaic grows.
#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <vector>

#include "framequilt/session.h"
#include "tests/support/scripted_engine.h"
#include "tests/support/session_frames.h"
#include "tests/support/thrown_error.h"

using framequilt::FrameResult;
using framequilt::Refusal;
using framequilt::Session;
using framequilt::SessionOptions;
using framequilt::Verdict;

namespace {

constexpr int kRows = 50;
constexpr int kCols = 100;

SessionOptions options(int scale = 1) {
  SessionOptions options = grayOptions(kRows, kCols);
  options.scale = scale;
  return options;
}

cv::Mat frame() { return cv::Mat(kRows, kCols, CV_8UC1, cv::Scalar(9)); }

/// A session that has taken its first frame.
class SessionPlaces : public testing::Test {
 protected:
  void begin(const std::vector<ScriptedEngine::Answer>& answers) {
    engine_.answers = answers;
    session_.add(frame());
  }

  ScriptedEngine engine_;
  Session session_{options()};
};

}  // namespace

TEST_F(SessionPlaces, OfTheFirstPairAppearTogether) {
  begin({ScriptedEngine::blended(-30, 10)});
  const FrameResult result = session_.add(frame());
  EXPECT_EQ(result.placement, cv::Point(-30, 10));
  EXPECT_EQ(result.mosaicPosition, cv::Point(0, 10));
  EXPECT_EQ(result.changed, cv::Rect(0, 0, 130, 60));
  EXPECT_EQ(result.growthShift, cv::Point());
  EXPECT_EQ(session_.steadyBox(), cv::Rect(-30, 0, 130, 60));
  EXPECT_EQ(session_.mosaic().size(), cv::Size(130, 60));
}

TEST_F(SessionPlaces, ToTheLeftAndTopShiftWhatLaySoFar) {
  begin({ScriptedEngine::blended(40, 10), ScriptedEngine::blended(-60, -20),
         ScriptedEngine::blended(50, 5), ScriptedEngine::blended(-80, 0)});
  session_.add(frame());
  const FrameResult third = session_.add(frame());
  EXPECT_EQ(third.placement, cv::Point(-20, -10));
  EXPECT_EQ(third.mosaicPosition, cv::Point(0, 0));
  EXPECT_EQ(third.changed, cv::Rect(0, 0, kCols, kRows));
  EXPECT_EQ(third.growthShift, cv::Point(20, 10));
  EXPECT_EQ(session_.steadyBox(), cv::Rect(-20, -10, 160, 70));

  const FrameResult inside = session_.add(frame());
  EXPECT_EQ(inside.placement, cv::Point(30, -5));
  EXPECT_EQ(inside.mosaicPosition, cv::Point(50, 5));
  EXPECT_EQ(inside.changed, cv::Rect(50, 5, kCols, kRows));
  EXPECT_EQ(inside.growthShift, cv::Point());

  const FrameResult fifth = session_.add(frame());
  EXPECT_EQ(fifth.growthShift, cv::Point(30, 0));
  EXPECT_EQ(fifth.mosaicPosition, cv::Point(0, 5));
  EXPECT_EQ(session_.steadyBox(), cv::Rect(-50, -10, 190, 70));
}

TEST_F(SessionPlaces, StayWhenTheEngineMakesRoomAtTheLeftAndTop) {
  begin({ScriptedEngine::blended(-30, -10, kCols, kRows), ScriptedEngine::blended(-30, 4),
         ScriptedEngine::blended(-30, -20, 0, kRows), ScriptedEngine::blended(7, 30),
         ScriptedEngine::blended(-60, 1, kCols, 0)});
  EXPECT_EQ(session_.add(frame()).placement, cv::Point(-30, -10));
  EXPECT_EQ(session_.steadyBox(), cv::Rect(-30, -10, 130, 60));
  EXPECT_EQ(session_.add(frame()).placement, cv::Point(-60, -6));
  const FrameResult fourth = session_.add(frame());
  EXPECT_EQ(fourth.placement, cv::Point(-90, -26));
  // The margin of the matrix is nothing that a caller sees: only the box counts.
  EXPECT_EQ(fourth.growthShift, cv::Point(30, 16));
  EXPECT_EQ(session_.steadyBox(), cv::Rect(-90, -26, 190, 76));
  EXPECT_EQ(session_.add(frame()).placement, cv::Point(-83, 4));
  const FrameResult sixth = session_.add(frame());
  EXPECT_EQ(sixth.placement, cv::Point(-143, 5));
  EXPECT_EQ(sixth.mosaicPosition, cv::Point(0, 31));
  EXPECT_EQ(sixth.growthShift, cv::Point(53, 0));
}

TEST_F(SessionPlaces, OfRefusedFramesAreNone) {
  begin({ScriptedEngine::blended(-30, 10), ScriptedEngine::qualified(3, 3)});
  session_.add(frame());
  const cv::Rect box = session_.steadyBox();
  const FrameResult refused = session_.add(frame());
  EXPECT_EQ(refused.changed, cv::Rect());
  EXPECT_EQ(refused.growthShift, cv::Point());
  EXPECT_EQ(session_.steadyBox(), box);
}

TEST_F(SessionPlaces, TheMosaicIsTheFilledBoxWithoutACopy) {
  begin({ScriptedEngine::noEstimate(), ScriptedEngine::blended(-30, 10)});
  EXPECT_TRUE(session_.mosaic().empty());
  session_.add(frame());
  EXPECT_TRUE(session_.mosaic().empty());
  EXPECT_TRUE(session_.steadyBox().empty());
  session_.add(frame());
  const ScriptedEngine::Run& run = engine_.run();
  EXPECT_EQ(session_.mosaic().data, run.mosaic.ptr(run.topLeft.y) + run.topLeft.x);
}

TEST_F(SessionPlaces, ACopiedRegionNamesSteadyPixels) {
  begin({[](ScriptedEngine::Run& run) {
    const int result = ScriptedEngine::blended(-30, 10)(run);
    run.mosaic.setTo(7);  // Also where no frame lies.
    run.mosaic.at<unsigned char>(run.topLeft.y + 4, run.topLeft.x + 30 + 3) = 200;
    return result;
  }});
  EXPECT_EQ(cv::norm(session_.copyRegion({-2, -2, 4, 4}), cv::NORM_INF), 0.0);
  EXPECT_EQ(session_.copyRegion({-2, -2, 4, 4}).type(), CV_8UC1);
  session_.add(frame());
  const cv::Mat region = session_.copyRegion({2, 2, 5, 6});
  EXPECT_EQ(region.size(), cv::Size(5, 6));
  EXPECT_EQ(region.at<unsigned char>(2, 1), 200);
  EXPECT_EQ(cv::sum(region)[0], 29 * 7 + 200);
  EXPECT_EQ(cv::sum(session_.copyRegion({-31, -1, 2, 2}))[0], 7);
  EXPECT_TRUE(session_.copyRegion({0, 0, 0, 0}).empty());
}

TEST_F(SessionPlaces, ARegionNeedsASize) {
  const ThrownError refusal = {
      framequilt::ErrorCode::kInvalidOption,
      "the region has a negative size: give its top-left corner, width and height"};
  EXPECT_EQ(errorOf([&] { session_.copyRegion({0, 0, -1, 5}); }), refusal);
  EXPECT_EQ(errorOf([&] { session_.copyRegion({0, 0, 5, -1}); }), refusal);
}

TEST(SessionPlacesAtScaleTwo, AreInFramePixelsAndBoxesInMosaicPixels) {
  ScriptedEngine engine;
  engine.answers = {ScriptedEngine::blended(15, -4), ScriptedEngine::blended(-25, 3, kCols, 0)};
  Session session(options(2));
  session.add(frame());
  const FrameResult second = session.add(frame());
  EXPECT_EQ(engine.calls[0].frameScale, 2);
  EXPECT_EQ(second.placement, cv::Point(30, -8));
  EXPECT_EQ(second.mosaicPosition, cv::Point(15, 0));
  EXPECT_EQ(second.changed, cv::Rect(0, 0, 65, 29));
  EXPECT_EQ(session.steadyBox(), cv::Rect(0, -4, 65, 29));
  const FrameResult third = session.add(frame());
  EXPECT_EQ(third.placement, cv::Point(-20, -2));
  EXPECT_EQ(third.changed, cv::Rect(0, 3, 50, 25));
  EXPECT_EQ(third.growthShift, cv::Point(10, 0));
}

TEST(SessionFull, RefusesLaterFramesWithoutTheEngine) {
  ScriptedEngine engine;
  engine.answers = {ScriptedEngine::blended(30, 0),
                    ScriptedEngine::full(ScriptedEngine::blended(30, 0, 0, 50))};
  SessionOptions small = options();
  small.maxRows = 6001;
  small.maxCols = 6000;
  Session session(small);
  session.add(frame());
  EXPECT_FALSE(session.add(frame()).full);
  const FrameResult last = session.add(frame());
  EXPECT_TRUE(last.full);
  EXPECT_EQ(last.verdict, Verdict::kJoined);
  for (int i = 3; i < 5; ++i) {
    const FrameResult refused = session.add(frame());
    EXPECT_EQ(refused.frame, i);
    EXPECT_EQ(refused.verdict, Verdict::kRefused);
    EXPECT_EQ(refused.reason, Refusal::kMosaicFull);
    EXPECT_TRUE(refused.full);
    EXPECT_EQ(explain(refused), "mosaic full: size 36300000 pixels, limit 36006000 pixels");
  }
  EXPECT_EQ(engine.calls.size(), 2U);
  EXPECT_EQ(session.steadyBox(), cv::Rect(0, 0, 160, 50));
}

TEST(SessionFull, IsNoMosaicWithoutFrames) {
  // The engine speaks of a limit that the empty mosaic has reached.
  ScriptedEngine engine;
  engine.answers = {ScriptedEngine::full(ScriptedEngine::qualified(2, 0)),
                    ScriptedEngine::full(ScriptedEngine::measured(30, 0)),
                    ScriptedEngine::full(ScriptedEngine::blended(30, 0))};
  SessionOptions small = options();
  small.maxRows = small.maxCols = 100;
  Session session(small);
  session.add(frame());
  const FrameResult still = session.add(frame());
  EXPECT_EQ(still.reason, Refusal::kMovedTooLittle);
  EXPECT_FALSE(still.full);
  EXPECT_FALSE(session.add(frame()).full);
  const FrameResult joined = session.add(frame());
  EXPECT_EQ(joined.verdict, Verdict::kJoined);
  EXPECT_TRUE(joined.full);
  EXPECT_EQ(explain(session.add(frame())), "mosaic full: size 36000000 pixels, limit 10000 pixels");
}
