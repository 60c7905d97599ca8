// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/stitch_outputs.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "scenes.h"
#include "temporary_folder.h"
#include "tool_error_text.h"

using framequilt::tool::StitchOptions;
using framequilt::tool::StitchOutputs;

namespace {

class Outputs : public testing::Test {
 protected:
  void SetUp() override { options_.output = folder_.file("mosaic.png"); }

  std::string errorOf() {
    return toolErrorOf([&] { const StitchOutputs outputs(options_, standardOutput_); });
  }

  TemporaryFolder folder_;
  StitchOptions options_;
  std::ostringstream standardOutput_;
};

}  // namespace

TEST_F(Outputs, AppearWhenTheyArePublished) {
  options_.outlines = true;
  options_.placements = folder_.file("p.csv");
  options_.report = folder_.file("r.json");
  const cv::Mat picture = texture(8, 10);
  {
    StitchOutputs outputs(options_, standardOutput_);
    EXPECT_TRUE(outputs.wantsOutlines());
    outputs.publishMosaic(picture);
    outputs.publishOutlines(coloured(picture));
    outputs.publishPlacements("places");
    outputs.publishReport("report");
  }
  EXPECT_EQ(folder_.names(),
            (std::vector<std::string>{"mosaic-outlines.png", "mosaic.png", "p.csv", "r.json"}));
  EXPECT_EQ(readText(options_.placements), "places");
  EXPECT_EQ(readText(options_.report), "report");
  EXPECT_EQ(standardOutput_.str(), "");
}

TEST_F(Outputs, LeaveNothingWhenTheyAreNotPublished) {
  options_.placements = folder_.file("p.csv");
  { const StitchOutputs outputs(options_, standardOutput_); }
  EXPECT_EQ(folder_.names(), std::vector<std::string>{});
}

TEST_F(Outputs, GoToStandardOutputForAHyphen) {
  options_.placements = "-";
  options_.report = "-";
  StitchOutputs outputs(options_, standardOutput_);
  outputs.publishPlacements("places\n");
  outputs.publishReport("report\n");
  EXPECT_EQ(standardOutput_.str(), "places\nreport\n");
}

TEST_F(Outputs, AreDifferentFiles) {
  options_.placements = options_.output;
  EXPECT_EQ(errorOf(), "'" + options_.output + "' is asked to be two outputs: name two files");
  options_.placements = folder_.file("./x.csv");
  options_.report = folder_.file("x.csv");
  EXPECT_EQ(errorOf(), "'" + options_.report + "' is asked to be two outputs: name two files");
  options_.placements = "";
  options_.report = folder_.file("mosaic-outlines.png");
  options_.outlines = true;
  EXPECT_EQ(errorOf(), "'" + options_.report + "' is asked to be two outputs: name two files");
}

TEST_F(Outputs, AreNoInputs) {
  save(options_.output, texture(8, 10));
  options_.inputs = {folder_.path(), folder_.file("./mosaic.png")};
  EXPECT_EQ(errorOf(), "'" + options_.output + "' is an input: write to another file");
  options_.inputs = {folder_.path()};
  EXPECT_EQ(errorOf(), "no error");
}
