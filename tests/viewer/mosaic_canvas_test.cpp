// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/window/mosaic_canvas.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>

#include "tests/viewer/viewer_test_mosaic.h"
#include "tools/viewer/window/theme.h"

namespace framequilt::viewer {
namespace {

class MosaicCanvasTest : public testing::Test {
 protected:
  MosaicCanvasTest() {
    canvas_.resize(400, 300);
    canvas_.show();
    canvas_.open(mosaic_.reader(), {400, 300}, 1);
    canvas_.add({}, {});
    FrameResult joined;
    joined.verdict = Verdict::kJoined;
    joined.placement = {1200, 900};
    canvas_.add(joined, mosaic_.whole());
  }

  void waitUntilSharp() {
    QSignalSpy sharp(&canvas_, &MosaicCanvas::sharp);
    canvas_.update();
    ASSERT_TRUE(sharp.wait(60000));
  }

  TestMosaic mosaic_{{1600, 1200}, 80};
  MosaicCanvas canvas_;
};

TEST_F(MosaicCanvasTest, ShowsAllOfTheMosaicAtFirst) {
  EXPECT_EQ(canvas_.viewMode(), ViewMode::kFit);
  EXPECT_TRUE(canvas_.view().visible().contains(QRectF(0, 0, 1600, 1200)));
}

TEST_F(MosaicCanvasTest, LoadsWhatItShows) {
  canvas_.showActualSize();
  waitUntilSharp();
  EXPECT_GT(canvas_.tiles().loadedBytes(), 0U);
}

TEST_F(MosaicCanvasTest, TheWheelZoomsAtTheCursor) {
  const QPointF at(100, 80);
  const QPointF under = canvas_.view().toMosaic(at);
  const double before = canvas_.view().scale();
  QWheelEvent event(at, canvas_.mapToGlobal(at), {}, {0, 120}, Qt::NoButton, Qt::NoModifier,
                    Qt::NoScrollPhase, false);
  QApplication::sendEvent(&canvas_, &event);
  EXPECT_GT(canvas_.view().scale(), before);
  EXPECT_NEAR(canvas_.view().toScreen(under).x(), at.x(), 0.5);
  EXPECT_EQ(canvas_.viewMode(), ViewMode::kFree);
}

TEST_F(MosaicCanvasTest, TheMouseDragsTheMosaic) {
  canvas_.showActualSize();
  const QPointF before = canvas_.view().offset();
  QTest::mousePress(&canvas_, Qt::LeftButton, {}, {100, 100});
  QMouseEvent move(QEvent::MouseMove, QPointF(150, 130), canvas_.mapToGlobal(QPointF(150, 130)),
                   Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&canvas_, &move);
  QSignalSpy picked(&canvas_, &MosaicCanvas::framePicked);
  QTest::mouseRelease(&canvas_, Qt::LeftButton, {}, {150, 130});
  EXPECT_EQ(canvas_.view().offset() - before, QPointF(50, 30));
  EXPECT_EQ(picked.count(), 0);
}

TEST_F(MosaicCanvasTest, AClickChoosesTheFrameThere) {
  QSignalSpy picked(&canvas_, &MosaicCanvas::framePicked);
  QTest::mouseClick(&canvas_, Qt::LeftButton, {},
                    canvas_.view().toScreen(QPointF(1300, 1000)).toPoint());
  ASSERT_EQ(picked.count(), 1);
  EXPECT_EQ(picked[0][0].toInt(), 1);
  QTest::mouseClick(&canvas_, Qt::LeftButton, {},
                    canvas_.view().toScreen(QPointF(800, 600)).toPoint());
  EXPECT_EQ(picked.count(), 1);
}

TEST_F(MosaicCanvasTest, ArrowsMoveTheView) {
  canvas_.showActualSize();
  const QPointF before = canvas_.view().offset();
  QTest::keyClick(&canvas_, Qt::Key_Right);
  EXPECT_LT(canvas_.view().offset().x(), before.x());
  QTest::keyClick(&canvas_, Qt::Key_Up, Qt::ShiftModifier);
  EXPECT_EQ(canvas_.view().offset().y(), before.y() + 240);
}

TEST_F(MosaicCanvasTest, FollowsTheNewestFrame) {
  canvas_.setViewMode(ViewMode::kFollow);
  canvas_.showActualSize();
  FrameResult joined;
  joined.verdict = Verdict::kJoined;
  joined.placement = {300, 200};
  canvas_.add(joined, {});
  EXPECT_EQ(canvas_.view().toScreen(QPointF(500, 350)), QPointF(200, 150));
}

TEST_F(MosaicCanvasTest, TheNewestFrameIsGreenAndARefusedOneRed) {
  const auto outline = [this] {
    const QRectF place = canvas_.view().toScreen(canvas_.track().marks().back().place);
    const QImage picture = canvas_.grab().toImage();
    return QColor(picture.pixel(qRound(place.left()), qRound(place.top())));
  };
  EXPECT_GT(outline().green(), outline().red());
  FrameResult refused;
  refused.verdict = Verdict::kRefused;
  refused.reason = Refusal::kMovedTooFar;
  refused.measures.offset = cv::Point(-800, -500);
  canvas_.add(refused, {});
  EXPECT_GT(outline().red(), outline().green());
}

TEST_F(MosaicCanvasTest, ADragRedrawsOnlyWhatComesIn) {
  canvas_.showActualSize();
  waitUntilSharp();
  QTest::keyClick(&canvas_, Qt::Key_Left);
  canvas_.repaint();
  EXPECT_EQ(canvas_.pixelsDrawn(), 64 * 300);
}

}  // namespace
}  // namespace framequilt::viewer
