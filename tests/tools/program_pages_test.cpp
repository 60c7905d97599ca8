// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "program_run.h"
#include "scenes.h"
#include "temporary_folder.h"

namespace {

constexpr int kRows = 300;
constexpr int kCols = 400;

/// Two gray frames, the second 160 pixels to the right, and one that fits neither.
class ProgramPages : public testing::Test {
 protected:
  void SetUp() override {
    const cv::Mat scene = texture(kRows, kCols + 160);
    save(pictures_.file("f1.png"), scene(cv::Rect(0, 0, kCols, kRows)));
    save(pictures_.file("f2.png"), scene(cv::Rect(160, 0, kCols, kRows)));
    save(pictures_.file("f3.png"), texture(kRows, kCols, 99));
  }

  ProgramRun stitch(const std::vector<std::string>& more) const {
    std::vector<std::string> arguments = {"stitch", pictures_.path(), "-o",
                                          outputs_.file("mosaic.png")};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return framequiltRun(arguments);
  }

  TemporaryFolder pictures_, outputs_;
};

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

}  // namespace

TEST_F(ProgramPages, APyramidIsAFolderWithAPage) {
  const std::string folder = outputs_.file("zoom");
  for (int i = 0; i < 2; ++i) {  // The second replaces the first.
    const ProgramRun result = stitch({"--pyramid", folder});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(contains(result.out, "page: " + folder + "/index.html\n")) << result.out;
    EXPECT_EQ(outputs_.names(), (std::vector<std::string>{"mosaic.png", "zoom"}));
  }
  EXPECT_TRUE(std::filesystem::exists(folder + "/mosaic.dzi"));
  EXPECT_TRUE(std::filesystem::exists(folder + "/mosaic_files/10/1_0.jpg"));
  const std::string page = readText(folder + "/index.html");
  EXPECT_TRUE(contains(page, "<title>mosaic.png</title>"));
  EXPECT_TRUE(contains(page, "\"Size\":{\"Width\":560,\"Height\":300}"));
  EXPECT_TRUE(contains(page, "no overlap found"));
}

TEST_F(ProgramPages, APageMayBeOneFile) {
  const std::string file = outputs_.file("report.html");
  const ProgramRun result = stitch({"--report-html", file});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_TRUE(contains(result.out, "page: " + file + "\n")) << result.out;
  EXPECT_EQ(outputs_.names(), (std::vector<std::string>{"mosaic.png", "report.html"}));
  EXPECT_TRUE(contains(readText(file), "data:image/jpeg;base64,"));
}

TEST_F(ProgramPages, APageIsWrittenWhenNothingJoinedAndAPyramidIsNot) {
  const ProgramRun result =
      framequiltRun({"stitch", pictures_.file("f1.png"), pictures_.file("f3.png"), "-o",
                     outputs_.file("mosaic.png"), "--report-html", outputs_.file("report.html"),
                     "--pyramid", outputs_.file("zoom"), "--ome-tiff", outputs_.file("m.ome.tif")});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(outputs_.names(), std::vector<std::string>{"report.html"});
  EXPECT_FALSE(contains(result.out, "index.html")) << result.out;
  EXPECT_TRUE(contains(readText(outputs_.file("report.html")), "\"tiles\":null"));
}

TEST_F(ProgramPages, TheFoldersAndFilesOfOthersStay) {
  const ProgramRun inInputs = stitch({"--pyramid", pictures_.path()});
  EXPECT_EQ(inInputs.status, 2);
  EXPECT_TRUE(contains(inInputs.err, "which is no part of this output: choose a new or empty"))
      << inInputs.err;
  const ProgramRun twice =
      stitch({"--pyramid", outputs_.file("x"), "--report-html", outputs_.file("x")});
  EXPECT_EQ(twice.err, "framequilt: '" + outputs_.file("x") +
                           "' is asked to be two outputs: name two files\n");
  EXPECT_EQ(outputs_.names(), std::vector<std::string>{});
}

TEST_F(ProgramPages, AnOmeTiffHasItsPixelSizeAndIsNoFrame) {
  const std::string file = pictures_.file("m.ome.tif");
  for (int i = 0; i < 2; ++i) {
    const ProgramRun result = stitch({"--ome-tiff", file, "--pixel-size", "0.5", "--scale", "2"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_TRUE(contains(result.out, "frames read: 3\n")) << result.out;
  }
  // A pixel of the mosaic is as wide as two of a frame.
  EXPECT_TRUE(contains(readText(file), "PhysicalSizeX=\"1\""));
}

TEST_F(ProgramPages, WrongNamesAndSizesAreRefusedAtOnce) {
  EXPECT_EQ(stitch({"--ome-tiff", outputs_.file("m.tif")}).err,
            "framequilt: '" + outputs_.file("m.tif") +
                "' is no name of an OME-TIFF: end it with .ome.tif\n");
  for (const char* size : {"0", "-1", "inf", "nan", "wide"}) {
    const ProgramRun result = stitch({"--pixel-size", size});
    EXPECT_EQ(result.status, 2) << size;
    EXPECT_TRUE(contains(result.err, std::string("'") + size +
                                         "' is no size of a pixel: give micrometres, such as 0.65"))
        << result.err;
  }
  EXPECT_EQ(outputs_.names(), std::vector<std::string>{});
}

TEST_F(ProgramPages, PlacementsFollowTheNameOfTheirFile) {
  const std::string tiles = outputs_.file("TileConfiguration.registered.txt");
  ASSERT_EQ(stitch({"--placements", tiles}).status, 0);
  EXPECT_TRUE(contains(readText(tiles), "\nf1.png; ; (0.0, 0.0)\nf2.png; ; (160.0, 0.0)\n"));
  EXPECT_FALSE(contains(readText(tiles), "f3.png"));
  ASSERT_EQ(stitch({"--placements", outputs_.file("p.json")}).status, 0);
  EXPECT_EQ(readText(outputs_.file("p.json")).front(), '[');
}
