// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/model/frame_list_model.h"

#include <gtest/gtest.h>

#include <QSignalSpy>

namespace framequilt::viewer {
namespace {

FrameDone frameOf(std::size_t number, Verdict verdict, Refusal reason = Refusal::kNone) {
  FrameDone frame;
  frame.number = number;
  frame.name = "f" + std::to_string(number) + ".png";
  frame.result.verdict = verdict;
  frame.result.reason = reason;
  frame.result.judged = {6, 10};
  frame.result.placement = {30, 4};
  frame.milliseconds = 12;
  return frame;
}

QString text(const FrameListModel& model, int row, int column) {
  return model.data(model.index(row, column), Qt::DisplayRole).toString();
}

TEST(FrameListModel, TheFirstFrameJoinsWithTheNextOne) {
  FrameListModel model;
  QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
  model.add(frameOf(1, Verdict::kWaiting));
  EXPECT_EQ(model.stateOf(0), FrameState::kWaiting);
  EXPECT_EQ(text(model, 0, FrameListModel::kMatches), "");
  model.add(frameOf(2, Verdict::kJoined));
  EXPECT_EQ(model.stateOf(0), FrameState::kJoined);
  ASSERT_EQ(changed.count(), 1);
  EXPECT_EQ(changed[0][0].toModelIndex().row(), 0);
  EXPECT_EQ(text(model, 1, FrameListModel::kOutcome), "joined at (30, 4)");
  EXPECT_EQ(text(model, 1, FrameListModel::kName), "f2.png");
  EXPECT_EQ(text(model, 1, FrameListModel::kNumber), "2");
}

TEST(FrameListModel, ARefusalHasTheWordsOfTheLibrary) {
  FrameListModel model;
  model.add(frameOf(1, Verdict::kWaiting));
  const FrameDone refused = frameOf(2, Verdict::kRefused, Refusal::kMovedTooFar);
  model.add(refused);
  EXPECT_EQ(text(model, 1, FrameListModel::kOutcome).toStdString(), explain(refused.result));
  EXPECT_EQ(model.advice(1), "slow down or take frames more often");
  EXPECT_EQ(model.advice(0), "");
}

TEST(FrameListModel, AFirstFrameThatStillWaitsAtTheEndIsRefused) {
  FrameListModel model;
  model.add(frameOf(1, Verdict::kWaiting));
  QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
  model.end();
  EXPECT_EQ(model.stateOf(0), FrameState::kRefused);
  EXPECT_EQ(model.outcome(0), "no later frame joined it");
  ASSERT_EQ(changed.count(), 1);
  EXPECT_EQ(changed[0][0].toModelIndex().row(), 0);
  model.end();
  EXPECT_EQ(changed.count(), 1);
}

TEST(FrameListModel, AFirstFrameThatWasGivenUpIsRefused) {
  FrameListModel model;
  model.add(frameOf(1, Verdict::kWaiting));
  FrameDone replaced = frameOf(2, Verdict::kRefused, Refusal::kNoOverlap);
  replaced.result.becameFirst = true;
  model.add(replaced);
  EXPECT_EQ(model.stateOf(0), FrameState::kRefused);
  EXPECT_EQ(model.outcome(0), "no later frame joined it");
  EXPECT_EQ(model.stateOf(1), FrameState::kWaiting);
}

TEST(FrameListModel, FindsRowsByNumber) {
  FrameListModel model;
  model.add(frameOf(1, Verdict::kWaiting));
  model.add(frameOf(4, Verdict::kJoined));
  EXPECT_EQ(model.rowOf(4), 1);
  EXPECT_EQ(model.rowOf(2), -1);
  EXPECT_EQ(model.rowOf(5), -1);
}

TEST(FrameListModel, RefusedFramesAreVisitedInACircle) {
  FrameListModel model;
  EXPECT_EQ(model.nextRefused(-1, 1), -1);
  model.add(frameOf(1, Verdict::kWaiting));
  model.add(frameOf(2, Verdict::kRefused, Refusal::kNoOverlap));
  model.add(frameOf(3, Verdict::kJoined));
  EXPECT_EQ(model.nextRefused(-1, 1), 1);
  EXPECT_EQ(model.nextRefused(1, 1), 1);
  model.add(frameOf(4, Verdict::kRefused, Refusal::kNoOverlap));
  EXPECT_EQ(model.nextRefused(1, 1), 3);
  EXPECT_EQ(model.nextRefused(3, 1), 1);
  EXPECT_EQ(model.nextRefused(1, -1), 3);
}

TEST(FrameListModel, ClearEmptiesIt) {
  FrameListModel model;
  model.add(frameOf(1, Verdict::kWaiting));
  model.clear();
  EXPECT_EQ(model.rowCount(), 0);
  model.add(frameOf(1, Verdict::kWaiting));
  EXPECT_EQ(model.stateOf(0), FrameState::kWaiting);
}

}  // namespace
}  // namespace framequilt::viewer
