// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "program_run.h"
#include "temporary_folder.h"

namespace {

const std::string kHeading = "frame,file,x,y,joined\n";

/// Tables of placements and truth, and what the program makes of them.
class ProgramEvaluate : public testing::Test {
 protected:
  void SetUp() override {
    writeText(truth(), "frame,x,y\n1,100,50\n2,110.5,50\n3,120,50\n4,130,50\n");
  }

  std::string placements() const { return folder_.file("placements.csv"); }
  std::string truth() const { return folder_.file("truth.csv"); }

  ProgramRun evaluate(const std::string& table, const std::vector<std::string>& more = {}) const {
    writeText(placements(), table);
    std::vector<std::string> arguments = {"evaluate", placements(), truth()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return framequiltRun(arguments);
  }

  /// Exit status 2, nothing on standard output, this one line on standard error.
  void expectRefusal(const std::string& table, const std::string& line) const {
    const ProgramRun result = evaluate(table);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "framequilt: " + line + "\n");
  }

  TemporaryFolder folder_;
};

}  // namespace

TEST_F(ProgramEvaluate, PrintsWhatItFound) {
  const ProgramRun result =
      evaluate(kHeading + "1,a.png,,,0\n2,\"b,1.png\",0,0,1\n3,c.png,9,0,1\n4,d.png,25,8,1\n");
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out,
            "frames: 4\n"
            "joined: 3 (75.0 %)\n"
            "step error (px): median 0.50, p95 10.00, max 10.00\n"
            "misplaced steps (> 4 px): 1 (frames 4)\n"
            "drift (px): 9.71\n"
            "placement error (px): median 0.50, max 9.71\n");
}

TEST_F(ProgramEvaluate, JsonIsOneObject) {
  const ProgramRun result = evaluate(kHeading + "1,a.png,0,0,1\n3,b.png,20,0,1\n", {"--json"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out.rfind("{\n  \"frames\": 2,\n  \"joined\": 2,\n", 0), 0U) << result.out;
  EXPECT_EQ(result.out.substr(result.out.size() - 2), "}\n");
}

TEST_F(ProgramEvaluate, NothingJoinedLeavesErrorsOpen) {
  const ProgramRun result = evaluate(kHeading + "1,a.png,0,0,1\n2,b.png,,,0\n");
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out,
            "frames: 2\njoined: 1 (50.0 %)\nstep error (px): -\nmisplaced steps (> 4 px): 0\n"
            "drift (px): -\nplacement error (px): -\n");
}

TEST_F(ProgramEvaluate, ColumnsAreKnownByName) {
  writeText(truth(), "\xEF\xBB\xBFy,angle,frame,x\r\n50,1.5,1,100\r\n50,2,2,110\r\n\r\n");
  const ProgramRun result = evaluate("joined,note,y,x,frame\n1,,3,0,1\n1,,3,12,2\n\n");
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_NE(result.out.find("step error (px): median 2.00,"), std::string::npos) << result.out;
}

TEST_F(ProgramEvaluate, MissingFilesAreNamed) {
  const std::string reason =
      "' cannot be opened (No such file or directory): check the path and its permissions\n";
  EXPECT_EQ(framequiltRun({"evaluate", placements(), folder_.file("t.csv")}).err,
            "framequilt: '" + placements() + reason);
  writeText(placements(), kHeading);
  const ProgramRun result = framequiltRun({"evaluate", placements(), folder_.file("t.csv")});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err, "framequilt: '" + folder_.file("t.csv") + reason);
}

TEST_F(ProgramEvaluate, MissingColumnsAreNamed) {
  const std::vector<std::pair<std::string, std::string>> headings = {
      {"file,x,y,joined\n", "frame"},
      {"frame,file,y,joined\n", "x"},
      {"frame,file,x,joined\n", "y"},
      {"frame,file,x,y\n", "joined"}};
  for (const auto& [heading, column] : headings) {
    expectRefusal(heading, "'" + placements() + "' line 1 names no column '" + column +
                               "': add it to the heading");
  }
  writeText(truth(), "frame,x\n");
  expectRefusal(kHeading, "'" + truth() + "' line 1 names no column 'y': add it to the heading");
}

TEST_F(ProgramEvaluate, BadLinesAreNamed) {
  const std::string second = "'" + placements() + "' line 2";
  expectRefusal(kHeading + "1,a.png,0,0\n",
                second +
                    " does not have as many fields as the heading (4, not 5): complete or "
                    "remove it");
  expectRefusal(kHeading + "one,a.png,0,0,1\n",
                second + ": 'one' in column 'frame' is no whole number from 1: write one");
  expectRefusal(kHeading + "1,a.png,,,1\n",
                second + ": '' in column 'x' is no finite number: write one such as 12 or 12.5");
  expectRefusal(kHeading + "1,a.png,0,nan,1\n",
                second + ": 'nan' in column 'y' is no finite number: write one such as 12 or 12.5");
  expectRefusal(kHeading + "1,a.png,0,0,yes\n",
                second + ": 'yes' in column 'joined' is neither 0 nor 1: write one of them");
  writeText(truth(), "frame,x,y\n1,0,inf\n");
  expectRefusal(kHeading, "'" + truth() +
                              "' line 2: 'inf' in column 'y' is no finite number: write one such "
                              "as 12 or 12.5");
}

TEST_F(ProgramEvaluate, FramesAppearOnce) {
  expectRefusal(kHeading + "1,a.png,0,0,1\n1,b.png,0,0,1\n",
                "'" + placements() + "' line 3 is another one for frame 1: keep one of them");
  writeText(truth(), "frame,x,y\n1,0,0\n2,0,0\n1,0,0\n");
  expectRefusal(kHeading, "'" + truth() + "' line 4 is another one for frame 1: keep one of them");
}

TEST_F(ProgramEvaluate, EveryFrameNeedsATruth) {
  expectRefusal(kHeading + "1,a.png,0,0,1\n5,b.png,,,0\n",
                "'" + placements() + "' line 3: frame 5 is not in '" + truth() +
                    "': give the truth of this capture");
}

TEST_F(ProgramEvaluate, WrongUsageGivesStatusTwo) {
  EXPECT_EQ(framequiltRun({"evaluate"}).status, 2);
  EXPECT_EQ(framequiltRun({"evaluate", placements()}).status, 2);
  EXPECT_EQ(framequiltRun({"evaluate", "--help"}).status, 0);
}

TEST_F(ProgramEvaluate, AStitchedSimulationLiesWhereItWasCut) {
  const std::string capture = folder_.file("capture");
  ASSERT_EQ(framequiltRun({"simulate", "--generated", "-o", capture, "--cols", "320", "--rows",
                           "240", "--frames", "6", "--noise", "3"})
                .status,
            0);
  ASSERT_EQ(framequiltRun(
                {"stitch", capture, "-o", folder_.file("mosaic.png"), "--placements", placements()})
                .status,
            0);
  const ProgramRun result = framequiltRun({"evaluate", placements(), capture + "/truth.csv"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out.rfind("frames: 6\njoined: 6 (100.0 %)\n", 0), 0U) << result.out;
  EXPECT_NE(result.out.find("misplaced steps (> 4 px): 0\n"), std::string::npos) << result.out;
}
