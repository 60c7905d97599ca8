// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/model/run_controller.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

#include "tests/viewer/viewer_test_captures.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::viewer {
namespace {

constexpr int kLongWait = 60000;

class RunControllerTest : public testing::Test {
 protected:
  RunControllerTest() {
    QObject::connect(&run_, &RunController::frameDone,
                     [this](const FrameDone& frame) { frames_.push_back(frame); });
  }
  bool waitForFrames(std::size_t count) {
    QSignalSpy done(&run_, &RunController::frameDone);
    while (frames_.size() < count) {
      if (!done.wait(kLongWait)) return false;
    }
    return true;
  }

  RunController run_;
  std::vector<FrameDone> frames_;
  QSignalSpy opened_{&run_, &RunController::captureOpened};
  QSignalSpy ended_{&run_, &RunController::ended};
  QSignalSpy failed_{&run_, &RunController::openFailed};
  QSignalSpy saved_{&run_, &RunController::saved};
  QSignalSpy saveFailed_{&run_, &RunController::saveFailed};
};

TEST_F(RunControllerTest, RunsACaptureToItsEnd) {
  EXPECT_EQ(run_.state(), RunState::kIdle);
  run_.open(requestOf(pathWithAGap()));
  EXPECT_EQ(run_.state(), RunState::kOpening);
  ASSERT_TRUE(ended_.wait(kLongWait));
  EXPECT_EQ(run_.state(), RunState::kEnded);
  ASSERT_EQ(frames_.size(), 5U);
  EXPECT_EQ(run_.opened().backend, "host");
  EXPECT_EQ(frames_[0].result.verdict, Verdict::kWaiting);
  EXPECT_TRUE(frames_[0].patch.area.empty());
  EXPECT_EQ(frames_[2].result.placement, cv::Point(200, 20));
  EXPECT_EQ(frames_[3].result.reason, Refusal::kNoOverlap);
  EXPECT_EQ(frames_[4].result.verdict, Verdict::kJoined);
  EXPECT_TRUE(run_.canSave());
  EXPECT_EQ(ended_[0][0].toString(), "");
}

TEST_F(RunControllerTest, PatchesLieInSteadyPixels) {
  run_.open(requestOf({{500, 300}, {400, 280}, {300, 260}}));
  ASSERT_TRUE(ended_.wait(kLongWait));
  const cv::Point place = frames_[2].result.placement;
  ASSERT_LT(place.x, -150);
  const cv::Rect area = frames_[2].patch.area;
  const cv::Rect frame(place, cv::Size(PlacedCapture::kCols, PlacedCapture::kRows));
  EXPECT_EQ(area & frame, frame);
  const cv::Mat pixels = run_.opened().reader(area);
  EXPECT_EQ(frames_[2].patch.levels[0], pictureOf(pixels));
}

TEST_F(RunControllerTest, APausedRunGoesOnWhereItStopped) {
  const auto gate = std::make_shared<Gate>(2);
  run_.open(requestOf({{0, 0}, {90, 0}, {180, 0}, {270, 0}}, gate));
  ASSERT_TRUE(waitForFrames(2));
  run_.pause();
  EXPECT_EQ(run_.state(), RunState::kPaused);
  EXPECT_FALSE(run_.canPause());
  // The worker may be waiting for the frame that comes now; no further one is taken.
  gate->let(1000);
  QTemporaryDir folder;
  tool::StitchOptions outputs;
  outputs.output = folder.filePath("m.png").toStdString();
  run_.save(outputs);
  ASSERT_TRUE(saved_.wait(kLongWait));
  EXPECT_LE(frames_.size(), 3U);
  EXPECT_EQ(ended_.count(), 0);
  run_.resume();
  ASSERT_TRUE(ended_.wait(kLongWait));
  EXPECT_EQ(frames_.size(), 4U);
  EXPECT_EQ(frames_[3].result.placement, cv::Point(270, 0));
}

TEST_F(RunControllerTest, AStoppedRunKeepsItsMosaic) {
  const auto gate = std::make_shared<Gate>(2);
  run_.open(requestOf({{0, 0}, {90, 0}, {180, 0}}, gate));
  ASSERT_TRUE(waitForFrames(2));
  run_.stop();
  EXPECT_EQ(run_.state(), RunState::kStopping);
  ASSERT_TRUE(ended_.wait(kLongWait));
  EXPECT_TRUE(ended_[0][2].toBool());
  EXPECT_EQ(frames_.size(), 2U);
  EXPECT_TRUE(run_.canSave());
  EXPECT_EQ(cv::countNonZero(run_.opened().reader({0, 0, 410, 240}).reshape(1) == 0), 0);
}

TEST_F(RunControllerTest, APausedRunCanBeStopped) {
  const auto gate = std::make_shared<Gate>(2);
  run_.open(requestOf({{0, 0}, {90, 0}, {180, 0}}, gate));
  ASSERT_TRUE(waitForFrames(2));
  run_.pause();
  run_.stop();
  ASSERT_TRUE(ended_.wait(kLongWait));
  EXPECT_EQ(run_.state(), RunState::kEnded);
}

TEST_F(RunControllerTest, WhatCannotBeOpenedIsTold) {
  CaptureRequest request = requestOf({});
  request.open = [](const tool::InputSettings&) -> std::unique_ptr<tool::FrameSource> {
    throw tool::ToolError("\"x\" does not exist: check the path");
  };
  run_.open(request);
  ASSERT_TRUE(failed_.wait(kLongWait));
  EXPECT_EQ(failed_[0][0].toString(), "\"x\" does not exist: check the path");
  EXPECT_EQ(run_.state(), RunState::kIdle);
  EXPECT_FALSE(run_.canSave());
  // The next attempt is not disturbed by it.
  run_.open(requestOf({{0, 0}, {90, 0}}));
  ASSERT_TRUE(ended_.wait(kLongWait));
  EXPECT_EQ(frames_.size(), 2U);
}

TEST_F(RunControllerTest, OneFrameIsTooFew) {
  run_.open(requestOf({{0, 0}}));
  ASSERT_TRUE(failed_.wait(kLongWait));
  EXPECT_TRUE(failed_[0][0].toString().contains("only one frame"));
}

TEST_F(RunControllerTest, ASourceThatBreaksOffKeepsWhatWasJoined) {
  run_.open(requestOf({{0, 0}, {90, 0}, {-1, 0}}));
  ASSERT_TRUE(ended_.wait(kLongWait));
  EXPECT_EQ(ended_[0][0].toString(), "the disk was pulled out");
  EXPECT_TRUE(run_.canSave());
}

TEST_F(RunControllerTest, AnotherCaptureTakesThePlaceOfARunningOne) {
  const auto gate = std::make_shared<Gate>(2);
  run_.open(requestOf({{0, 0}, {90, 0}, {180, 0}}, gate));
  ASSERT_TRUE(waitForFrames(2));
  frames_.clear();
  run_.open(requestOf({{0, 0}, {50, 60}}));
  ASSERT_TRUE(ended_.wait(kLongWait));
  EXPECT_EQ(ended_.count(), 1);
  EXPECT_EQ(opened_.count(), 2);
  ASSERT_EQ(frames_.size(), 2U);
  EXPECT_EQ(frames_[1].result.placement, cv::Point(50, 60));
}

TEST_F(RunControllerTest, OpeningCanBeStopped) {
  CaptureRequest request = requestOf({});
  request.open = [](const tool::InputSettings& settings) -> std::unique_ptr<tool::FrameSource> {
    while (!settings.stopAsked()) std::this_thread::yield();
    throw tool::ToolError("no frame came");
  };
  run_.open(request);
  EXPECT_TRUE(run_.canStop());
  run_.stop();
  ASSERT_TRUE(failed_.wait(kLongWait));
  EXPECT_EQ(run_.state(), RunState::kIdle);
}

TEST_F(RunControllerTest, SavesAllThatIsAskedFor) {
  QTemporaryDir folder;
  run_.open(requestOf(pathWithAGap()));
  ASSERT_TRUE(ended_.wait(kLongWait));
  tool::StitchOptions outputs;
  outputs.output = folder.filePath("m.png").toStdString();
  outputs.placements = folder.filePath("p.csv").toStdString();
  outputs.report = folder.filePath("r.json").toStdString();
  outputs.outlines = true;
  run_.save(outputs);
  EXPECT_FALSE(run_.canSave());
  ASSERT_TRUE(saved_.wait(kLongWait));
  EXPECT_TRUE(run_.canSave());
  EXPECT_EQ(saved_[0][0].toStringList().size(), 4);
  for (const char* name : {"m.png", "m-outlines.png", "p.csv", "r.json"}) {
    EXPECT_TRUE(QFile::exists(folder.filePath(name))) << name;
  }
  QFile csv(folder.filePath("p.csv"));
  ASSERT_TRUE(csv.open(QIODevice::ReadOnly));
  EXPECT_TRUE(csv.readAll().contains("3,f3,200,20,1"));
}

TEST_F(RunControllerTest, AFolderThatTakesNoFileIsTold) {
  run_.open(requestOf({{0, 0}, {90, 0}}));
  ASSERT_TRUE(ended_.wait(kLongWait));
  tool::StitchOptions outputs;
  outputs.output = "/no/such/folder/m.png";
  run_.save(outputs);
  ASSERT_TRUE(saveFailed_.wait(kLongWait));
  EXPECT_TRUE(saveFailed_[0][0].toString().contains("/no/such/folder"));
  EXPECT_TRUE(run_.canSave());
}

TEST_F(RunControllerTest, WhatMayNotBeDoneIsNotDone) {
  run_.pause();
  run_.resume();
  run_.stop();
  run_.save({});
  EXPECT_EQ(run_.state(), RunState::kIdle);
  EXPECT_FALSE(run_.saving());
}

TEST(RunController, CanGoWhileARunGoesOn) {
  auto run = std::make_unique<RunController>();
  QSignalSpy done(run.get(), &RunController::frameDone);
  run->open(requestOf({{0, 0}, {90, 0}, {180, 0}}, std::make_shared<Gate>(1)));
  ASSERT_TRUE(done.wait(kLongWait));
  run.reset();
}

}  // namespace
}  // namespace framequilt::viewer
