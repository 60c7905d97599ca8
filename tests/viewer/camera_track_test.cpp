// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/model/camera_track.h"

#include <gtest/gtest.h>

namespace framequilt::viewer {
namespace {

FrameResult resultOf(Verdict verdict, cv::Point placement = {}) {
  FrameResult result;
  result.verdict = verdict;
  result.placement = placement;
  return result;
}

CameraTrack trackOf(int scale = 1) {
  CameraTrack track;
  track.begin({100, 80}, scale);
  track.add(resultOf(Verdict::kWaiting));
  return track;
}

TEST(CameraTrack, TheFirstFrameJoinsWithTheNextOne) {
  CameraTrack track = trackOf();
  EXPECT_FALSE(track.marks()[0].joined);
  EXPECT_TRUE(track.path().empty());
  track.add(resultOf(Verdict::kJoined, {30, -10}));
  EXPECT_TRUE(track.marks()[0].joined);
  ASSERT_EQ(track.path().size(), 2U);
  EXPECT_EQ(track.path()[0], QPointF(50, 40));
  EXPECT_EQ(track.path()[1], QPointF(80, 30));
}

TEST(CameraTrack, PlacesAreInMosaicPixels) {
  CameraTrack track = trackOf(2);
  track.add(resultOf(Verdict::kJoined, {30, -10}));
  EXPECT_EQ(track.marks()[1].place, QRectF(15, -5, 50, 40));
}

TEST(CameraTrack, ARefusedFrameLiesWhereItsOffsetSays) {
  CameraTrack track = trackOf();
  track.add(resultOf(Verdict::kJoined, {30, 0}));
  FrameResult refused = resultOf(Verdict::kRefused);
  refused.measures.offset = cv::Point(95, 5);
  track.add(refused);
  EXPECT_FALSE(track.marks()[2].joined);
  EXPECT_TRUE(track.marks()[2].measured);
  EXPECT_EQ(track.marks()[2].place.topLeft(), QPointF(125, 5));
  EXPECT_EQ(track.path().size(), 2U);
}

TEST(CameraTrack, WithoutAnOffsetItLiesWhereTheCameraWasLast) {
  CameraTrack track = trackOf();
  track.add(resultOf(Verdict::kJoined, {30, 7}));
  track.add(resultOf(Verdict::kRefused));
  EXPECT_FALSE(track.marks()[2].measured);
  EXPECT_EQ(track.marks()[2].place.topLeft(), QPointF(30, 7));
}

TEST(CameraTrack, AFrameThatBecameFirstIsTheOneThatJoins) {
  CameraTrack track = trackOf();
  FrameResult replaced = resultOf(Verdict::kRefused);
  replaced.becameFirst = true;
  track.add(replaced);
  track.add(resultOf(Verdict::kJoined, {10, 10}));
  EXPECT_FALSE(track.marks()[0].joined);
  EXPECT_TRUE(track.marks()[1].joined);
  EXPECT_TRUE(track.marks()[2].joined);
}

}  // namespace
}  // namespace framequilt::viewer
