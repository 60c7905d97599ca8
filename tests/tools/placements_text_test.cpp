// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/placements_text.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "tool_error_text.h"

using framequilt::FrameResult;
using framequilt::Refusal;
using framequilt::Verdict;
using framequilt::tool::placementsText;
using framequilt::tool::StitchLog;

namespace {

/// A first frame, one that joined it and one that was refused.
StitchLog threeFrames(const std::string& second = "b c.png") {
  StitchLog log;
  log.add(1, "a.png", {}, 0);
  FrameResult joined;
  joined.verdict = Verdict::kJoined;
  joined.placement = {-30, 4};
  log.add(2, second, joined, 1);
  FrameResult refused;
  refused.verdict = Verdict::kRefused;
  refused.reason = Refusal::kNoOverlap;
  log.add(4, "d;e.png", refused, 1);
  return log;
}

}  // namespace

TEST(PlacementsText, TxtIsATileConfigurationOfTheJoinedFrames) {
  EXPECT_EQ(placementsText(threeFrames(), "out/TileConfiguration.registered.TXT"),
            "# Define the number of dimensions we are working on\n"
            "dim = 2\n"
            "\n"
            "# Define the image coordinates\n"
            "a.png; ; (0.0, 0.0)\n"
            "b c.png; ; (-30.0, 4.0)\n");
}

TEST(PlacementsText, JsonHasEveryFrame) {
  const auto frames = nlohmann::json::parse(placementsText(threeFrames(), "p.json"));
  EXPECT_EQ(frames, nlohmann::json::parse(R"([
    {"frame": 1, "file": "a.png", "x": 0, "y": 0, "joined": true},
    {"frame": 2, "file": "b c.png", "x": -30, "y": 4, "joined": true},
    {"frame": 4, "file": "d;e.png", "joined": false}])"));
}

TEST(PlacementsText, EverythingElseIsCommaSeparated) {
  const StitchLog log = threeFrames();
  for (const char* name : {"p.csv", "-", "places", "p.txt.csv"}) {
    EXPECT_EQ(placementsText(log, name), log.placementsCsv()) << name;
  }
}

TEST(PlacementsText, ATileConfigurationHoldsPlainNamesOnly) {
  for (const char* name : {"b;c.png", "#b.png", "b\nc.png"}) {
    const std::string shown = name == std::string("b\nc.png") ? "b?c.png" : name;
    EXPECT_EQ(toolErrorOf([&] { placementsText(threeFrames(name), "p.txt"); }),
              "'" + shown +
                  "' cannot be named in 'p.txt': rename the picture (no ';', no '#' in front), or "
                  "end the file's name with .csv");
  }
}
