// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/stitch_log.h"

#include <gtest/gtest.h>

using framequilt::tool::Outcome;
using framequilt::tool::Refusal;
using framequilt::tool::StitchLog;
using Verdict = framequilt::tool::Outcome::Verdict;

namespace {

Outcome joinedAt(int x, int y) { return {Verdict::kJoined, Refusal::kNone, {x, y}}; }
Outcome refused(Refusal reason) { return {Verdict::kRefused, reason}; }

}  // namespace

TEST(StitchLog, TheFirstFrameJoinsWithTheSecond) {
  StitchLog log;
  log.add("a.png", {Verdict::kWaiting}, 1);
  EXPECT_EQ(log.joined(), 0);
  log.add("b.png", joinedAt(30, -4), 1);
  EXPECT_EQ(log.joined(), 2);
  EXPECT_EQ(log.placementsCsv(), "frame,file,x,y,joined\n1,a.png,0,0,1\n2,b.png,30,-4,1\n");
}

TEST(StitchLog, EachRefusedFrameIsNamedWithItsReason) {
  StitchLog log;
  log.add("dir/a.png", {Verdict::kWaiting}, 1);
  log.add("dir/b.png", joinedAt(30, -4), 1);
  log.add("dir/c.png", refused(Refusal::kMovedTooFar), 1);
  EXPECT_EQ(log.countsText(),
            "frames read: 3\njoined: 2\nrefused: 1\n  'dir/c.png': moved too far\n");
  EXPECT_EQ(log.placementsCsv(),
            "frame,file,x,y,joined\n1,a.png,0,0,1\n2,b.png,30,-4,1\n3,c.png,,,0\n");
}

TEST(StitchLog, AFirstFrameThatWasGivenUpIsRefused) {
  StitchLog log;
  log.add("a.png", {Verdict::kWaiting}, 1);
  log.add("b.png", refused(Refusal::kNoOverlap), 1);
  log.add("c.png", refused(Refusal::kTooFewMatches), 1);
  log.add("d.png", {Verdict::kBecameFirst, Refusal::kNoOverlap}, 1);
  log.add("e.png", joinedAt(8, 9), 1);
  EXPECT_EQ(log.countsText(),
            "frames read: 5\njoined: 2\nrefused: 3\n  'a.png': no later frame joined it\n"
            "  'b.png': no overlap found\n  'c.png': too few matches\n");
  EXPECT_EQ(log.placementsCsv(),
            "frame,file,x,y,joined\n1,a.png,,,0\n2,b.png,,,0\n3,c.png,,,0\n4,d.png,0,0,1\n"
            "5,e.png,8,9,1\n");
}

TEST(StitchLog, EveryReasonHasItsWords) {
  using framequilt::tool::text;
  EXPECT_EQ(text(Refusal::kMovedTooLittle), "moved too little");
  EXPECT_EQ(text(Refusal::kMovingScene), "moving scene");
  EXPECT_EQ(text(Refusal::kBrightness), "brightness differs");
  EXPECT_EQ(text(Refusal::kSharpness), "sharpness differs");
}

TEST(StitchLog, OddFileNamesAreQuotedInTheTable) {
  StitchLog log;
  log.add("a,\"b\".png", {Verdict::kWaiting}, 1);
  EXPECT_EQ(log.placementsCsv(), "frame,file,x,y,joined\n1,\"a,\"\"b\"\".png\",,,0\n");
}

TEST(StitchLog, TimesAreTakenByNearestRankWithoutTheWaitingFrame) {
  StitchLog log;
  log.add("0.png", {Verdict::kWaiting}, 9999);
  for (int i = 20; i >= 1; --i) log.add("f.png", joinedAt(0, i), i);
  EXPECT_EQ(log.timesText(), "ms per frame: median 10.0, p95 19.0\n");
}

TEST(StitchLog, OneTimeIsMedianAndP95) {
  StitchLog log;
  log.add("0.png", {Verdict::kWaiting}, 9999);
  EXPECT_EQ(log.timesText(), "ms per frame: -\n");
  log.add("1.png", joinedAt(1, 1), 2.5);
  EXPECT_EQ(log.timesText(), "ms per frame: median 2.5, p95 2.5\n");
}
