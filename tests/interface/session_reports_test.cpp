// SPDX-License-Identifier: Apache-2.0
// Where the engine's lines go while a session is open.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "framequilt/session.h"
#include "tests/support/captured_output.h"
#include "tests/support/recorded_reports.h"
#include "tests/support/scene.h"
#include "tests/support/session_frames.h"

using framequilt::Session;
using framequilt::SessionOptions;

namespace {

void append(const char* line, std::size_t length, void* context) {
  static_cast<Lines*>(context)->emplace_back(line, length);
}

SessionOptions optionsWith(Lines& lines) {
  SessionOptions options = grayOptions(240, 320);
  options.reportSink = append;
  options.reportContext = &lines;
  return options;
}

/// Makes the engine say that it looks for an offset.
void addTwo(Session& session) {
  const Scene scene(300, 500, 1, 12);
  session.add(viewOf(scene.cut(0, 0, 240, 320)));
  session.add(viewOf(scene.cut(100, 20, 240, 320)));
}

long searches(const Lines& lines) {
  return std::count(lines.begin(), lines.end(), "imageMosaicFun in");
}

}  // namespace

TEST(SessionReports, GoToTheSessionAlone) {
  const RecordedReports process;
  Lines lines;
  std::string printed = standardOutputOf([&] {
    Session session(optionsWith(lines));
    addTwo(session);
  });
  EXPECT_EQ(searches(lines), 1);
  EXPECT_EQ(printed, "");
  EXPECT_TRUE(process.ofCaller().empty());
  EXPECT_TRUE(process.ofWorkers().empty());
}

TEST(SessionReports, GoToTheProcessAgainOnceItIsStopped) {
  const RecordedReports process;
  Lines lines;
  Session stopped(optionsWith(lines));
  stopped.stop();
  const std::size_t before = lines.size();
  Session session(grayOptions(240, 320));
  addTwo(session);
  EXPECT_EQ(searches(process.ofCaller()), 1);
  EXPECT_EQ(lines.size(), before);
}

TEST(SessionReports, StayWithTheOpenSessionWhenAnotherCannotBeOpened) {
  Lines lines, others;
  Session session(optionsWith(lines));
  EXPECT_THROW(Session{optionsWith(others)}, framequilt::Error);
  addTwo(session);
  EXPECT_EQ(searches(lines), 1);
  EXPECT_TRUE(others.empty());
}

TEST(SessionReports, OfTheProcessMayBeChangedMeanwhile) {
  Lines lines;
  const RecordedReports process;
  Session session(optionsWith(lines));
  framequilt::setReportSink(nullptr, nullptr);
  EXPECT_EQ(standardOutputOf([&] { addTwo(session); }), "");
  EXPECT_EQ(searches(lines), 1);
}
