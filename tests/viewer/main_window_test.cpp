// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/window/main_window.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include "tests/viewer/viewer_test_captures.h"

namespace framequilt::viewer {
namespace {

constexpr int kLongWait = 60000;

class MainWindowTest : public testing::Test {
 protected:
  MainWindowTest() {
    window_.setAsksBeforeDiscarding(false);
    window_.show();
    // Keys reach the active window alone, and nobody else makes one active where no window manager
    // is.
    window_.activateWindow();
  }
  void SetUp() override { ASSERT_TRUE(QTest::qWaitForWindowActive(&window_, kLongWait)); }
  QAction& action(const char* name) { return *window_.findChild<QAction*>(name); }
  void runToEnd(CaptureRequest request) {
    QSignalSpy ended(&window_.run(), &RunController::ended);
    window_.begin(std::move(request));
    ASSERT_TRUE(ended.wait(kLongWait));
  }

  QTemporaryDir folder_;
  QSettings store_{folder_.filePath("viewer.ini"), QSettings::IniFormat};
  MainWindow window_{store_};
};

TEST_F(MainWindowTest, BeginsWithTheStartPage) {
  EXPECT_TRUE(window_.showsStartPage());
  EXPECT_FALSE(action("pause").isEnabled());
  EXPECT_FALSE(action("save").isEnabled());
  EXPECT_FALSE(action("start").isEnabled());
}

TEST_F(MainWindowTest, ASimulatedCaptureIsOneClickAway) {
  window_.startPage().findChild<QSpinBox*>("simulatedFrames")->setValue(3);
  QSignalSpy ended(&window_.run(), &RunController::ended);
  QTest::mouseClick(window_.startPage().findChild<QAbstractButton*>("openSimulation"),
                    Qt::LeftButton);
  ASSERT_TRUE(ended.wait(kLongWait));
  EXPECT_FALSE(window_.showsStartPage());
  EXPECT_EQ(window_.panel().frames().rowCount(), 3);
  EXPECT_EQ(window_.banner().title(), "Finished, 3 of 3 frames joined");
  EXPECT_TRUE(action("save").isEnabled());
  EXPECT_EQ(window_.canvas().track().path().size(), 3U);
}

TEST_F(MainWindowTest, ARefusedFrameIsExplained) {
  QStringList texts;
  QObject::connect(&window_.run(), &RunController::frameDone, &window_,
                   [&](const FrameDone& frame) {
                     if (frame.result.verdict != Verdict::kRefused) return;
                     texts << window_.banner().title() << window_.banner().text();
                   });
  runToEnd(requestOf(pathWithAGap()));
  ASSERT_EQ(texts.size(), 2);
  EXPECT_EQ(texts[0], "Frame 4 refused, no overlap found");
  EXPECT_TRUE(texts[1].contains("needs at least"));
  EXPECT_TRUE(texts[1].contains("Let neighbouring frames share about half"));
  EXPECT_TRUE(window_.banner().text().contains("no overlap found", Qt::CaseInsensitive));
  EXPECT_TRUE(window_.statusText().contains("4 joined, 1 refused"));
}

TEST_F(MainWindowTest, RefusedFramesAreFoundByKey) {
  runToEnd(requestOf(pathWithAGap()));
  QTest::keyClick(&window_, Qt::Key_R);
  EXPECT_EQ(window_.panel().selected(), 3);
  EXPECT_EQ(window_.canvas().selected(), 3);
  EXPECT_TRUE(
      window_.panel().findChild<QLabel*>("description")->text().contains("no overlap found"));
  QTest::keyClick(&window_, Qt::Key_Escape);
  EXPECT_EQ(window_.panel().selected(), -1);
}

TEST_F(MainWindowTest, KeysPauseGoOnAndStop) {
  const auto gate = std::make_shared<Gate>(2);
  QSignalSpy done(&window_.run(), &RunController::frameDone);
  window_.begin(requestOf({{0, 0}, {90, 0}, {180, 0}, {270, 0}}, gate));
  while (done.count() < 2) ASSERT_TRUE(done.wait(kLongWait));
  QTest::keyClick(&window_, Qt::Key_Space);
  EXPECT_EQ(window_.run().state(), RunState::kPaused);
  EXPECT_EQ(action("pause").text(), "Go on");
  EXPECT_TRUE(window_.statusText().startsWith("Paused"));
  QTest::keyClick(&window_, Qt::Key_Space);
  EXPECT_EQ(window_.run().state(), RunState::kRunning);
  QSignalSpy ended(&window_.run(), &RunController::ended);
  QTest::keyClick(&window_, Qt::Key_E, Qt::ControlModifier);
  ASSERT_TRUE(ended.wait(kLongWait));
  EXPECT_EQ(window_.banner().title(), "Stopped, 2 of 2 frames joined");
}

TEST_F(MainWindowTest, KeysChooseTheView) {
  runToEnd(requestOf({{0, 0}, {90, 0}, {180, 0}}));
  MosaicCanvas& canvas = window_.canvas();
  QTest::keyClick(&window_, Qt::Key_1);
  EXPECT_EQ(canvas.view().scale(), 1);
  EXPECT_EQ(canvas.viewMode(), ViewMode::kFree);
  QTest::keyClick(&window_, Qt::Key_C);
  EXPECT_EQ(canvas.viewMode(), ViewMode::kFollow);
  EXPECT_TRUE(action("follow").isChecked());
  QTest::keyClick(&window_, Qt::Key_F);
  EXPECT_EQ(canvas.viewMode(), ViewMode::kFit);
  EXPECT_FALSE(action("follow").isChecked());
  QTest::keyClick(&window_, Qt::Key_P);
  EXPECT_FALSE(canvas.showsPath());
}

TEST_F(MainWindowTest, TheOverviewIsThereWhilePartOfTheMosaicIsOutOfView) {
  runToEnd(requestOf({{0, 0}, {90, 0}, {180, 0}}));
  auto* overview = window_.canvas().findChild<QWidget*>("overview");
  EXPECT_FALSE(overview->isVisible());
  window_.canvas().zoomBy(8);
  EXPECT_TRUE(overview->isVisible());
  const QPointF before = window_.canvas().view().offset();
  QTest::mouseClick(overview, Qt::LeftButton, {}, {8, 8});
  EXPECT_GT(window_.canvas().view().offset().x(), before.x());
  QTest::keyClick(&window_, Qt::Key_M);
  EXPECT_FALSE(overview->isVisible());
}

TEST_F(MainWindowTest, SavesAndSaysWhere) {
  runToEnd(requestOf({{0, 0}, {90, 0}}));
  tool::StitchOptions outputs;
  outputs.output = folder_.filePath("mosaic.png").toStdString();
  QSignalSpy saved(&window_.run(), &RunController::saved);
  window_.save(outputs);
  ASSERT_TRUE(saved.wait(kLongWait));
  EXPECT_TRUE(QFile::exists(folder_.filePath("mosaic.png")));
  EXPECT_EQ(window_.banner().title(), "Saved");
  EXPECT_EQ(window_.banner().text(), folder_.filePath("mosaic.png"));
}

TEST_F(MainWindowTest, AFailedSaveIsTold) {
  runToEnd(requestOf({{0, 0}, {90, 0}}));
  tool::StitchOptions outputs;
  outputs.output = "/no/such/folder/mosaic.png";
  QSignalSpy failed(&window_.run(), &RunController::saveFailed);
  window_.save(outputs);
  ASSERT_TRUE(failed.wait(kLongWait));
  EXPECT_EQ(window_.banner().kind(), MessageBanner::Kind::kError);
  EXPECT_TRUE(window_.banner().text().contains("/no/such/folder"));
}

TEST_F(MainWindowTest, AnInputThatCannotBeOpenedIsToldOnTheStartPage) {
  QSignalSpy failed(&window_.run(), &RunController::openFailed);
  window_.openInput(folder_.filePath("missing"));
  ASSERT_TRUE(failed.wait(kLongWait));
  EXPECT_TRUE(window_.showsStartPage());
  EXPECT_TRUE(window_.startPage().banner().isVisible());
  EXPECT_EQ(window_.startPage().banner().title(), "Cannot open missing");
  EXPECT_TRUE(window_.startPage().banner().text().contains("missing"));
}

TEST_F(MainWindowTest, NothingJoinedIsTold) {
  runToEnd(requestOf({{0, 0}, {900, 600}}));
  EXPECT_EQ(window_.banner().title(), "Nothing could be joined");
  EXPECT_FALSE(action("save").isEnabled());
}

TEST_F(MainWindowTest, ParametersAreRemembered) {
  window_.startPage().findChild<QSpinBox*>("cornerBudget")->setValue(33);
  window_.close();
  MainWindow again(store_);
  EXPECT_EQ(again.startPage().findChild<QSpinBox*>("cornerBudget")->value(), 33);
  again.startPage().findChild<QAbstractButton*>("defaults")->click();
  EXPECT_EQ(again.startPage().findChild<QSpinBox*>("cornerBudget")->value(),
            SessionOptions().cornerBudget);
}

TEST_F(MainWindowTest, TheStartPageAndBack) {
  runToEnd(requestOf({{0, 0}, {90, 0}}));
  QTest::keyClick(&window_, Qt::Key_N, Qt::ControlModifier);
  EXPECT_TRUE(window_.showsStartPage());
  QTest::keyClick(&window_, Qt::Key_N, Qt::ControlModifier);
  EXPECT_FALSE(window_.showsStartPage());
}

}  // namespace
}  // namespace framequilt::viewer
