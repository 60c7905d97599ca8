// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/report_json.h"

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

using framequilt::FrameResult;
using framequilt::Refusal;
using framequilt::Verdict;
using framequilt::tool::reportJson;
using framequilt::tool::RunFacts;
using framequilt::tool::StitchLog;
using framequilt::tool::StitchOptions;
using nlohmann::json;

namespace {

/// A first frame, one joined to it, and one refused because its sharpness cannot be measured.
StitchLog threeFrames() {
  StitchLog log;
  log.add(1, "a.png", {}, 0.5);
  FrameResult joined;
  joined.verdict = Verdict::kJoined;
  joined.placement = {-30, 4};
  joined.measures.matches = {50, 11};
  joined.measures.offset = cv::Point(-30, 4);
  joined.measures.moved = {30, 10};
  joined.measures.overlap = {70, 10};
  joined.measures.change = {3, 255};
  log.add(2, "b.png", joined, 12.5);
  FrameResult refused = joined;
  refused.verdict = Verdict::kRefused;
  refused.reason = Refusal::kSharpness;
  refused.judged = {std::nan(""), 128};
  refused.becameFirst = true;
  refused.measures.change.reset();
  refused.measures.brightness = {7, 128};
  refused.measures.sharpness = refused.judged;
  log.add(4, "d.png", refused, 14);
  return log;
}

json report(const StitchOptions& options = {}, const RunFacts& facts = {}) {
  return json::parse(reportJson(options, facts, threeFrames()));
}

}  // namespace

TEST(ReportJson, CountsTheFrames) {
  const json counts = report();
  EXPECT_EQ(counts["frames_read"], 3);
  EXPECT_EQ(counts["joined"], 2);
  EXPECT_EQ(counts["refused"], 1);
  EXPECT_EQ(counts["frames"].size(), 3U);
}

TEST(ReportJson, TellsWhatMadeTheMosaic) {
  StitchOptions options;
  options.mode = "overlap";
  options.dynamicScene = true;
  options.cornerBudget = 3;
  options.maxRows = 7;
  options.maxCols = 9;
  options.every = 2;
  options.crop = "none";
  options.pixelSize = 0.65;
  const json facts =
      report(options, {"host", 2, {640, 480}, {5, -6}, 1, 2, true, false, {320, 240}});
  EXPECT_EQ(facts["backend"], "host");
  EXPECT_EQ(facts["scale"], 2);
  EXPECT_EQ(facts["options"], json({{"mode", "overlap"},
                                    {"scene", "dynamic"},
                                    {"corner_budget", 3},
                                    {"max_rows", 7},
                                    {"max_cols", 9},
                                    {"every", 2},
                                    {"crop", "none"},
                                    {"pixel_size", 0.65}}));
  EXPECT_EQ(facts["frame_size"], json({{"cols", 320}, {"rows", 240}}));
  EXPECT_EQ(facts["mosaic"],
            json({{"cols", 640}, {"rows", 480}, {"first_frame", {{"x", 5}, {"y", -6}}}}));
  EXPECT_EQ(facts["left_out"], 1);
  EXPECT_EQ(facts["dropped"], 2);
  EXPECT_EQ(facts["full"], true);
  EXPECT_EQ(facts["interrupted"], false);
  EXPECT_EQ(report()["mosaic"], nullptr);
  EXPECT_EQ(report()["options"]["pixel_size"], nullptr);
}

TEST(ReportJson, AJoinedFrameHasItsPlaceAndMeasures) {
  const json frame = report()["frames"][1];
  EXPECT_EQ(frame, json({{"frame", 2},
                         {"file", "b.png"},
                         {"joined", true},
                         {"placement", {{"x", -30}, {"y", 4}}},
                         {"measures",
                          {{"matches", {{"value", 50.0}, {"limit", 11.0}}},
                           {"offset", {{"x", -30}, {"y", 4}}},
                           {"moved_percent", {{"value", 30.0}, {"limit", 10.0}}},
                           {"overlap_percent", {{"value", 70.0}, {"limit", 10.0}}},
                           {"change", {{"value", 3.0}, {"limit", 255.0}}}}},
                         {"milliseconds", 12.5}}));
}

TEST(ReportJson, ARefusedFrameHasItsReason) {
  const json frame = report()["frames"][2];
  EXPECT_EQ(frame["reason"],
            json({{"text", "sharpness differs"},
                  {"quantity", "difference"},
                  {"unit", "levels"},
                  {"value", nullptr},
                  {"limit", 128.0},
                  {"explanation",
                   "sharpness differs: difference not measurable, needs less than 128 levels"},
                  {"advice", "keep the focus, and hold still while a frame is taken"}}));
  EXPECT_EQ(frame["became_first"], true);
  EXPECT_FALSE(frame.contains("placement"));
  EXPECT_EQ(frame["measures"]["brightness_difference"]["value"], 7.0);
  EXPECT_EQ(frame["measures"]["sharpness_difference"]["value"], nullptr);
}

TEST(ReportJson, AFirstFrameThatNothingJoinedHasNoMeasures) {
  StitchLog log;
  log.add(1, "a.png", {}, 0.5);
  EXPECT_EQ(json::parse(reportJson({}, {}, log))["frames"][0],
            json({{"frame", 1},
                  {"file", "a.png"},
                  {"joined", false},
                  {"reason", {{"text", "no later frame joined it"}}}}));
}

TEST(ReportJson, NamesThatAreNotUtf8DoNotSpoilIt) {
  StitchLog log;
  log.add(1, "\xff.png", {}, 0);
  EXPECT_EQ(json::parse(reportJson({}, {}, log))["frames"][0]["file"], "\xEF\xBF\xBD.png");
}
