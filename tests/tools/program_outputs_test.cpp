// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "program_run.h"
#include "scenes.h"
#include "temporary_folder.h"

namespace {

constexpr int kRows = 300;
constexpr int kCols = 400;

/// Two gray frames, the second 160 pixels to the left and 20 up, and one that fits neither.
class ProgramOutputs : public testing::Test {
 protected:
  void SetUp() override {
    const cv::Mat scene = texture(kRows + 20, kCols + 160);
    save(pictures_.file("f1.png"), scene(cv::Rect(160, 20, kCols, kRows)));
    save(pictures_.file("f2.png"), scene(cv::Rect(0, 0, kCols, kRows)));
    save(pictures_.file("f3.png"), texture(kRows, kCols, 99));
  }

  ProgramRun stitch(const std::vector<std::string>& more) const {
    std::vector<std::string> arguments = {"stitch", pictures_.path(), "-o", mosaic()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return framequiltRun(arguments);
  }
  std::string mosaic() const { return outputs_.file("mosaic.png"); }

  TemporaryFolder pictures_, outputs_;
};

}  // namespace

TEST_F(ProgramOutputs, CropNoneKeepsTheMargins) {
  ASSERT_EQ(stitch({"--crop", "box"}).status, 0);
  const cv::Mat box = cv::imread(mosaic(), cv::IMREAD_UNCHANGED);
  EXPECT_EQ(box.size(), cv::Size(kCols + 160, kRows + 20));
  ASSERT_EQ(stitch({"--crop", "none"}).status, 0);
  const cv::Mat whole = cv::imread(mosaic(), cv::IMREAD_UNCHANGED);
  ASSERT_EQ(whole.size(), cv::Size(6000, 6000));
  const cv::Rect place(3000 - kCols / 2 - 160, 3000 - kRows / 2 - 20, box.cols, box.rows);
  EXPECT_EQ(cv::norm(whole(place), box, cv::NORM_INF), 0);
  EXPECT_EQ(cv::countNonZero(whole), cv::countNonZero(box));
}

TEST_F(ProgramOutputs, OutlinesAreDrawnOnACopy) {
  ASSERT_EQ(stitch({}).status, 0);
  const cv::Mat plain = cv::imread(mosaic(), cv::IMREAD_UNCHANGED);
  for (const char* crop : {"box", "none"}) {
    ASSERT_EQ(stitch({"--outlines", "--crop", crop}).status, 0);
    const cv::Mat outlined = cv::imread(outputs_.file("mosaic-outlines.png"));
    EXPECT_EQ(outlined.size(), cv::imread(mosaic(), cv::IMREAD_UNCHANGED).size());
    // The last column of the second frame, which lies in the box's first columns.
    const cv::Point box = std::string(crop) == "box" ? cv::Point() : cv::Point(2640, 2830);
    EXPECT_EQ(outlined.at<cv::Vec3b>(box.y + 250, box.x + kCols - 1), cv::Vec3b(60, 220, 60));
    EXPECT_EQ(outlined.at<cv::Vec3b>(box.y + 250, box.x + 160), cv::Vec3b(60, 220, 60));
    EXPECT_NE(outlined.at<cv::Vec3b>(box.y + 250, box.x + 159), cv::Vec3b(60, 220, 60));
  }
  ASSERT_EQ(stitch({"--outlines"}).status, 0);
  EXPECT_EQ(cv::norm(cv::imread(mosaic(), cv::IMREAD_UNCHANGED), plain, cv::NORM_INF), 0);
}

TEST_F(ProgramOutputs, OutlinesAreScaledWithTheMosaic) {
  ASSERT_EQ(stitch({"--outlines", "--scale", "2"}).status, 0);
  const cv::Mat outlined = cv::imread(outputs_.file("mosaic-outlines.png"));
  EXPECT_EQ(outlined.at<cv::Vec3b>(125, kCols / 2 - 1), cv::Vec3b(60, 220, 60));
}

TEST_F(ProgramOutputs, AnOlderOutlinesFileIsNoFrame) {
  const std::string inside = pictures_.file("mosaic.png");
  for (int i = 0; i < 2; ++i) {
    const ProgramRun result =
        framequiltRun({"stitch", pictures_.path(), "-o", inside, "--outlines"});
    EXPECT_EQ(result.out.rfind("frames read: 3\n", 0), 0U) << result.out;
  }
}

TEST_F(ProgramOutputs, TheReportTellsOfEveryFrame) {
  ASSERT_EQ(stitch({"--report", outputs_.file("report.json")}).status, 0);
  const auto report = nlohmann::json::parse(readText(outputs_.file("report.json")));
  EXPECT_EQ(report["version"], FRAMEQUILT_VERSION);
  EXPECT_EQ(report["backend"], "host");
  EXPECT_EQ(report["joined"], 2);
  EXPECT_EQ(
      report["mosaic"],
      nlohmann::json({{"cols", 560}, {"rows", 320}, {"first_frame", {{"x", 160}, {"y", 20}}}}));
  ASSERT_EQ(report["frames"].size(), 3U);
  EXPECT_EQ(report["frames"][1]["placement"], nlohmann::json({{"x", -160}, {"y", -20}}));
  EXPECT_EQ(report["frames"][1]["measures"]["offset"], nlohmann::json({{"x", -160}, {"y", -20}}));
  EXPECT_EQ(report["frames"][1]["measures"]["moved_percent"]["value"], 40.0);
  EXPECT_GE(report["frames"][1]["measures"]["matches"]["value"], 11);
  EXPECT_EQ(report["frames"][2]["joined"], false);
  EXPECT_LT(report["frames"][2]["reason"]["value"], 11);
  EXPECT_EQ(report["frames"][2]["reason"]["limit"], 11);
}

TEST_F(ProgramOutputs, AReportIsWrittenWhenNothingJoined) {
  const ProgramRun result = framequiltRun(
      {"stitch", pictures_.file("f2.png"), pictures_.file("f3.png"), "-o", mosaic(), "--report",
       outputs_.file("report.json"), "--outlines", "--placements", outputs_.file("places.csv")});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(outputs_.names(), std::vector<std::string>{"report.json"});
  const auto report = nlohmann::json::parse(readText(outputs_.file("report.json")));
  EXPECT_EQ(report["mosaic"], nullptr);
  EXPECT_EQ(report["refused"], 2);
}

TEST_F(ProgramOutputs, AHyphenIsStandardOutput) {
  const ProgramRun places = stitch({"--placements", "-"});
  EXPECT_EQ(places.out,
            "frame,file,x,y,joined\n1,f1.png,0,0,1\n2,f2.png,-160,-20,1\n"
            "3,f3.png,,,0\n");
  EXPECT_EQ(places.err.rfind("frames read: 3\njoined: 2\n", 0), 0U) << places.err;
  const ProgramRun report = stitch({"--report", "-"});
  EXPECT_EQ(nlohmann::json::parse(report.out)["frames_read"], 3);
}

TEST_F(ProgramOutputs, QuietSaysNothing) {
  const ProgramRun result = stitch({"--quiet"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(outputs_.names(), std::vector<std::string>{"mosaic.png"});
}

TEST_F(ProgramOutputs, EachFormatHoldsTheMosaic) {
  ASSERT_EQ(stitch({}).status, 0);
  const cv::Mat exact = cv::imread(mosaic(), cv::IMREAD_UNCHANGED);
  for (const char* name : {"m.tif", "m.tiff", "m.bmp", "m.jpg"}) {
    const ProgramRun result =
        framequiltRun({"stitch", pictures_.path(), "-o", outputs_.file(name)});
    ASSERT_EQ(result.status, 0) << name << result.err;
    const cv::Mat read = cv::imread(outputs_.file(name), cv::IMREAD_UNCHANGED);
    ASSERT_EQ(read.size(), exact.size()) << name;
    const int tolerance = std::string(name) == "m.jpg" ? 40 : 0;
    EXPECT_LE(cv::norm(read, exact, cv::NORM_INF), tolerance) << name;
  }
}

TEST(ProgramInfo, TellsVersionBuildAndBackends) {
  const ProgramRun result = framequiltRun({"info"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out.rfind("framequilt " FRAMEQUILT_VERSION "\nbuild: ", 0), 0U) << result.out;
  EXPECT_NE(result.out.find("\nbackends:\n  host: used ("), std::string::npos) << result.out;
  EXPECT_NE(result.out.find("\n  opencl: "), std::string::npos) << result.out;
}
