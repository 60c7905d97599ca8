// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/stitch_log.h"

#include <gtest/gtest.h>

using framequilt::FrameResult;
using framequilt::Refusal;
using framequilt::Verdict;
using framequilt::tool::outcomeText;
using framequilt::tool::StitchLog;

namespace {

FrameResult waiting() { return {}; }

FrameResult joinedAt(int x, int y) {
  FrameResult result;
  result.verdict = Verdict::kJoined;
  result.placement = {x, y};
  result.measures.matches = {50, 11};
  return result;
}

FrameResult refused(Refusal reason, double value = 6, double limit = 10) {
  FrameResult result;
  result.verdict = Verdict::kRefused;
  result.reason = reason;
  result.judged = {value, limit};
  return result;
}

FrameResult becameFirst() {
  FrameResult result = refused(Refusal::kNoOverlap);
  result.becameFirst = true;
  return result;
}

}  // namespace

TEST(StitchLog, TheFirstFrameJoinsWithTheSecond) {
  StitchLog log;
  log.add(1, "a.png", waiting(), 1);
  EXPECT_EQ(log.joined(), 0U);
  EXPECT_EQ(log.refused(), 1U);
  EXPECT_TRUE(log.firstWaits());
  log.add(2, "b.png", joinedAt(30, -4), 1);
  EXPECT_FALSE(log.firstWaits());
  EXPECT_EQ(log.joined(), 2U);
  EXPECT_EQ(log.placementsCsv(), "frame,file,x,y,joined\n1,a.png,0,0,1\n2,b.png,30,-4,1\n");
}

TEST(StitchLog, FramesKeepTheirNumbersInTheCapture) {
  StitchLog log;
  log.add(2, "b.png", waiting(), 1);
  log.add(5, "e.png", joinedAt(3, 4), 1);
  EXPECT_EQ(log.placementsCsv(), "frame,file,x,y,joined\n2,b.png,0,0,1\n5,e.png,3,4,1\n");
}

TEST(StitchLog, RefusedFramesAreCountedByReasonWithAdvice) {
  StitchLog log;
  log.add(1, "a.png", waiting(), 1);
  log.add(2, "b.png", joinedAt(30, -4), 1);
  for (const char* name : {"c.png", "d.png", "e.png", "f.png", "g.png"}) {
    log.add(3, name, refused(Refusal::kMovedTooFar), 1);
  }
  log.add(8, "h.png", refused(Refusal::kTooFewMatches), 1);
  EXPECT_EQ(log.countsText(),
            "frames read: 8\njoined: 2\nrefused: 6\n"
            "  too few matches: 1 ('h.png'): let frames overlap more, or raise the corner budget\n"
            "  moved too far: 5 ('c.png', 'd.png', 'e.png' and 2 more): slow down or take frames "
            "more often\n");
}

TEST(StitchLog, AFirstFrameThatWasGivenUpIsRefused) {
  StitchLog log;
  log.add(1, "a.png", waiting(), 1);
  log.add(2, "b.png", refused(Refusal::kNoOverlap), 1);
  log.add(3, "c.png", refused(Refusal::kNoOverlap), 1);
  log.add(4, "d.png", becameFirst(), 1);
  log.add(5, "e.png", joinedAt(8, 9), 1);
  EXPECT_EQ(log.countsText(),
            "frames read: 5\njoined: 2\nrefused: 3\n  no later frame joined it: 1 ('a.png')\n"
            "  no overlap found: 2 ('b.png', 'c.png'): let neighbouring frames share about half, "
            "in focus and with texture\n");
  EXPECT_EQ(log.placementsCsv(),
            "frame,file,x,y,joined\n1,a.png,,,0\n2,b.png,,,0\n3,c.png,,,0\n4,d.png,0,0,1\n"
            "5,e.png,8,9,1\n");
}

TEST(StitchLog, NamesWithCommasAreQuoted) {
  StitchLog log;
  log.add(1, "a,\"b\".png", waiting(), 1);
  EXPECT_EQ(log.placementsCsv(), "frame,file,x,y,joined\n1,\"a,\"\"b\"\".png\",,,0\n");
}

TEST(StitchLog, TimesAreThoseOfFramesThatTheEngineWasGiven) {
  StitchLog log;
  log.add(1, "a.png", waiting(), 1000);
  EXPECT_EQ(log.timesText(), "ms per frame: -\n");
  for (const double time : {5.0, 3.0, 4.0, 100.0}) log.add(2, "b.png", joinedAt(1, 1), time);
  EXPECT_EQ(log.timesText(), "ms per frame: median 4.0, p95 100.0\n");
}

TEST(StitchLog, AnOutcomeIsALine) {
  EXPECT_EQ(outcomeText(waiting()), "first frame");
  EXPECT_EQ(outcomeText(joinedAt(30, -4)), "joined at (30, -4), 50 matches");
  EXPECT_EQ(outcomeText(refused(Refusal::kMovedTooFar)),
            "refused, moved too far: overlap 6 %, needs more than 10 %");
  FrameResult cancelled;
  cancelled.verdict = Verdict::kCancelled;
  EXPECT_EQ(outcomeText(cancelled), "cancelled");
}
