// SPDX-License-Identifier: Apache-2.0
// Placements and copied regions are steady while the mosaic grows beyond the matrix that a run
// begins with.
#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <vector>

#include "framequilt/session.h"
#include "tests/support/recorded_reports.h"
#include "tests/support/scene.h"
#include "tests/support/session_frames.h"

using framequilt::FrameResult;
using framequilt::Session;
using framequilt::Verdict;

namespace {

constexpr int kLong = 1200;
constexpr int kShort = 240;
constexpr int kStep = 560;
constexpr int kFrames = 8;

/// A way over a strip of scene, along columns or rows. In the matrix of 6000 pixels a side the
/// first frame begins at 2400: the sixth frame is the first to leave it.
struct Walk {
  bool alongRows, backwards;

  cv::Point corner(int index) const {
    const int way = (backwards ? kFrames - 1 - index : index) * kStep;
    return alongRows ? cv::Point(0, way) : cv::Point(way, 0);
  }
  Scene scene() const {
    const int whole = kLong + kStep * (kFrames - 1);
    return alongRows ? Scene(whole, kShort, 1, 21) : Scene(kShort, whole, 1, 21);
  }
  Frame frame(const Scene& scene, int index) const {
    const cv::Point at = corner(index);
    return scene.cut(at.x, at.y, alongRows ? kLong : kShort, alongRows ? kShort : kLong);
  }
};

class SessionWalk : public testing::TestWithParam<Walk> {
 protected:
  const Scene scene_ = GetParam().scene();
  const RecordedReports quiet_;
};

INSTANTIATE_TEST_SUITE_P(, SessionWalk,
                         testing::Values(Walk{false, false}, Walk{false, true}, Walk{true, false},
                                         Walk{true, true}),
                         [](const auto& instance) {
                           const bool down = instance.param.alongRows;
                           return instance.param.backwards ? (down ? "Up" : "Left")
                                                           : (down ? "Down" : "Right");
                         });

}  // namespace

TEST_P(SessionWalk, PlacesFramesWhereTheCameraWas) {
  const Walk& walk = GetParam();
  Session session(optionsFor(walk.frame(scene_, 0)));
  session.add(viewOf(walk.frame(scene_, 0)));
  cv::Point shiftSoFar;
  for (int i = 1; i < kFrames; ++i) {
    const FrameResult result = session.add(viewOf(walk.frame(scene_, i)));
    ASSERT_EQ(result.verdict, Verdict::kJoined) << explain(result);
    EXPECT_EQ(result.placement, walk.corner(i) - walk.corner(0));
    const cv::Rect box = session.steadyBox();
    EXPECT_EQ(session.mosaic().size(), box.size());
    EXPECT_EQ(result.mosaicPosition, result.placement - box.tl());
    EXPECT_EQ(result.changed & cv::Rect({}, box.size()), result.changed);
    if (i > 1) shiftSoFar += result.growthShift;
  }
  // Whatever lay at the corner of the first pair's mosaic has moved by all shifts together.
  const cv::Point firstCorner = walk.backwards ? walk.corner(1) - walk.corner(0) : cv::Point();
  EXPECT_EQ(shiftSoFar, firstCorner - session.steadyBox().tl());
}

TEST_P(SessionWalk, ChangesOnlyWhatItSays) {
  const Walk& walk = GetParam();
  Session session(optionsFor(walk.frame(scene_, 0)));
  session.add(viewOf(walk.frame(scene_, 0)));
  session.add(viewOf(walk.frame(scene_, 1)));
  for (int i = 2; i < kFrames; ++i) {
    const cv::Rect formerBox = session.steadyBox();
    cv::Mat expected = session.copyRegion(formerBox);
    const FrameResult result = session.add(viewOf(walk.frame(scene_, i)));
    cv::Mat now = session.copyRegion(formerBox);
    const cv::Rect changed = result.changed + session.steadyBox().tl() - formerBox.tl();
    const cv::Rect inside = changed & cv::Rect({}, formerBox.size());
    expected(inside).setTo(0);
    now(inside).setTo(0);
    EXPECT_EQ(cv::norm(now, expected, cv::NORM_INF), 0.0) << "frame " << i;
    // The former mosaic lies further right and down by the shift.
    const cv::Mat shifted = session.mosaic()(cv::Rect(result.growthShift, formerBox.size()));
    EXPECT_EQ(cv::norm(shifted, session.copyRegion(formerBox), cv::NORM_INF), 0.0);
  }
}

TEST_P(SessionWalk, ARegionThatNoLaterFrameTouchesStaysTheSame) {
  const Walk& walk = GetParam();
  Session session(optionsFor(walk.frame(scene_, 0)));
  session.add(viewOf(walk.frame(scene_, 0)));
  session.add(viewOf(walk.frame(scene_, 1)));
  // The end of the first frame that the others leave.
  const int start = walk.backwards ? kLong - 200 : 0;
  const cv::Rect region =
      walk.alongRows ? cv::Rect(10, start, 100, 200) : cv::Rect(start, 10, 200, 100);
  const cv::Mat before = session.copyRegion(region);
  EXPECT_GT(cv::countNonZero(before), 0);
  for (int i = 2; i < kFrames; ++i) {
    ASSERT_EQ(session.add(viewOf(walk.frame(scene_, i))).verdict, Verdict::kJoined);
    EXPECT_EQ(cv::norm(session.copyRegion(region), before, cv::NORM_INF), 0.0) << "frame " << i;
  }
}
