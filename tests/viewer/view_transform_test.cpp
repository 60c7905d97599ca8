// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/model/view_transform.h"

#include <gtest/gtest.h>

namespace framequilt::viewer {
namespace {

ViewTransform viewOf(int width, int height) {
  ViewTransform view;
  view.resize({width, height});
  return view;
}

TEST(ViewTransform, FitShowsAllInTheMiddle) {
  ViewTransform view = viewOf(400, 300);
  view.fit({-500, 100, 1000, 500}, 20);
  EXPECT_DOUBLE_EQ(view.scale(), 0.36);
  EXPECT_EQ(view.toScreen(QPointF(0, 350)), QPointF(200, 150));
  EXPECT_TRUE(view.visible().contains(QRectF(-500, 100, 1000, 500)));
}

TEST(ViewTransform, FitDoesNotEnlarge) {
  ViewTransform view = viewOf(400, 300);
  view.fit({0, 0, 10, 10}, 20);
  EXPECT_DOUBLE_EQ(view.scale(), 1);
}

TEST(ViewTransform, FitOfNothingChangesNothing) {
  ViewTransform view = viewOf(400, 300);
  const ViewTransform before = view;
  view.fit({}, 20);
  EXPECT_TRUE(view == before);
}

TEST(ViewTransform, ZoomKeepsWhatLiesUnderTheCursor) {
  ViewTransform view = viewOf(400, 300);
  view.fit({0, 0, 4000, 3000}, 0);
  const QPointF cursor(73, 211);
  const QPointF under = view.toMosaic(cursor);
  view.zoomAt(cursor, 3.7);
  // The offset is whole, so half a pixel of the screen may be lost each way.
  EXPECT_NEAR(view.toScreen(under).x(), cursor.x(), 0.5);
  EXPECT_NEAR(view.toScreen(under).y(), cursor.y(), 0.5);
}

TEST(ViewTransform, ZoomStopsAtItsLimits) {
  ViewTransform view = viewOf(400, 300);
  view.zoomAt({0, 0}, 1e6);
  EXPECT_DOUBLE_EQ(view.scale(), ViewTransform::kLargestScale);
  view.zoomAt({0, 0}, 1e-9);
  EXPECT_DOUBLE_EQ(view.scale(), ViewTransform::kSmallestScale);
}

TEST(ViewTransform, ZoomInStepsComesBackToOne) {
  ViewTransform view = viewOf(400, 300);
  for (int i = 0; i < 7; ++i) view.zoomAt({10, 10}, 1.25);
  for (int i = 0; i < 7; ++i) view.zoomAt({10, 10}, 1 / 1.25);
  EXPECT_EQ(view.scale(), 1);
}

TEST(ViewTransform, PanMovesByWholePixels) {
  ViewTransform view = viewOf(400, 300);
  const QPointF before = view.offset();
  view.pan({3.4, -2.6});
  EXPECT_EQ(view.offset() - before, QPointF(3, -3));
}

TEST(ViewTransform, ResizeKeepsTheMiddle) {
  ViewTransform view = viewOf(400, 300);
  view.centerOn({1000, 2000});
  view.resize({800, 700});
  EXPECT_EQ(view.toScreen(QPointF(1000, 2000)), QPointF(400, 350));
}

}  // namespace
}  // namespace framequilt::viewer
