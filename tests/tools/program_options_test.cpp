// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/videoio.hpp>
#include <string>
#include <vector>

#include "program_run.h"
#include "scenes.h"
#include "temporary_folder.h"

namespace {

constexpr int kRows = 300;
constexpr int kCols = 400;

/// Three gray frames that move right by 160 pixels each.
class ProgramOptions : public testing::Test {
 protected:
  void SetUp() override {
    const cv::Mat scene = texture(kRows, kCols + 320);
    for (int i = 0; i < 3; ++i) {
      frames_.push_back(scene(cv::Rect(160 * i, 0, kCols, kRows)).clone());
      save(pictures_.file("f" + std::to_string(i) + ".png"), frames_.back());
    }
  }

  /// Stitches the frames with these arguments more.
  ProgramRun stitch(const std::vector<std::string>& more) const {
    std::vector<std::string> arguments = {"stitch", pictures_.path(), "-o", mosaic()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return framequiltRun(arguments);
  }
  std::string mosaic() const { return outputs_.file("mosaic.png"); }

  /// Makes the second frame half as bright as the others.
  void darken() const {
    cv::Mat dark;
    frames_[1].convertTo(dark, CV_8U, 0.5);
    save(pictures_.file("f1.png"), dark);
  }

  TemporaryFolder pictures_, outputs_;
  std::vector<cv::Mat> frames_;
};

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

int matchesOf(const std::string& notes) {
  const std::size_t end = notes.find(" matches");
  if (end == std::string::npos) return -1;
  const std::size_t begin = notes.rfind(' ', end - 1) + 1;
  return std::stoi(notes.substr(begin, end - begin));
}

}  // namespace

TEST_F(ProgramOptions, DefaultsJoinOverlappingPictures) {
  const ProgramRun result = stitch({});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.err, "");
  EXPECT_TRUE(contains(result.out, "joined: 3\n")) << result.out;
  const cv::Mat mosaic_ = cv::imread(mosaic(), cv::IMREAD_UNCHANGED);
  EXPECT_EQ(mosaic_.channels(), 1);
  EXPECT_EQ(mosaic_.size(), cv::Size(kCols + 320, kRows));
}

TEST_F(ProgramOptions, OutputHasALongName) {
  const ProgramRun result = framequiltRun({"stitch", "--output", mosaic(), pictures_.path()});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(outputs_.names(), std::vector<std::string>{"mosaic.png"});
}

TEST_F(ProgramOptions, FilesAreStitchedInTheOrderGiven) {
  const ProgramRun result = framequiltRun({"stitch", pictures_.file("f2.png"),
                                           pictures_.file("f1.png"), pictures_.file("f0.png"), "-o",
                                           mosaic(), "--placements", outputs_.file("places.csv")});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(readText(outputs_.file("places.csv")),
            "frame,file,x,y,joined\n1,f2.png,0,0,1\n2,f1.png,-160,0,1\n3,f0.png,-320,0,1\n");
}

TEST_F(ProgramOptions, OneColourPictureMakesAColourMosaic) {
  save(pictures_.file("f2.png"), coloured(frames_[2]));
  EXPECT_EQ(stitch({}).status, 0);
  EXPECT_EQ(cv::imread(mosaic(), cv::IMREAD_UNCHANGED).channels(), 3);
}

TEST_F(ProgramOptions, ModeAndSceneChooseTheCriterion) {
  darken();
  EXPECT_TRUE(contains(stitch({}).out, "joined: 3\n"));
  EXPECT_TRUE(contains(stitch({"--static"}).out, "joined: 3\n"));
  EXPECT_TRUE(contains(stitch({"--mode", "motion", "--dynamic"}).out, "  moving scene: "));
  EXPECT_TRUE(contains(stitch({"--mode", "overlap", "--dynamic"}).out,
                       "  brightness differs: 1 ('f1.png'): "));
  EXPECT_TRUE(contains(stitch({"--mode", "overlap"}).out, "joined: 3\n"));
}

TEST_F(ProgramOptions, ASceneIsStaticOrDynamic) {
  EXPECT_EQ(stitch({"--static", "--dynamic"}).status, 2);
}

TEST_F(ProgramOptions, ScaleHalvesTheMosaic) {
  ASSERT_EQ(stitch({"--scale", "2"}).status, 0);
  const cv::Size size = cv::imread(mosaic(), cv::IMREAD_UNCHANGED).size();
  EXPECT_NEAR(2 * size.width, kCols + 320, 4);
  EXPECT_NEAR(2 * size.height, kRows, 4);
}

TEST_F(ProgramOptions, AutomaticScaleHalvesOnlyWhatIsTooLarge) {
  ASSERT_EQ(stitch({"--scale", "auto"}).status, 0);
  EXPECT_EQ(cv::imread(mosaic(), cv::IMREAD_UNCHANGED).size(), cv::Size(kCols + 320, kRows));
}

TEST_F(ProgramOptions, BackendIsChosen) {
  EXPECT_EQ(stitch({"--backend", "host"}).status, 0);
  EXPECT_EQ(stitch({"--backend", "auto"}).status, 0);
  // The tests of the program see no platform.
  const ProgramRun result = stitch({"--backend", "opencl"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err,
            "framequilt: no OpenCL platform is installed: install the driver of an AMD or NVIDIA "
            "GPU, or choose the host backend\n");
}

TEST_F(ProgramOptions, ACornerBudgetFindsMoreMatches) {
  const int few = matchesOf(stitch({"--verbose", "--corner-budget", "1"}).err);
  const int more = matchesOf(stitch({"--verbose"}).err);
  EXPECT_GT(few, 0);
  EXPECT_GT(more, few);
}

TEST_F(ProgramOptions, LimitsEndTheRunOnceTheMosaicReachesThem) {
  // The first mosaic has 6000 x 6000 pixels, which is 1800 x 20000.
  for (const char* limit : {"--max-rows", "--max-cols"}) {
    EXPECT_TRUE(contains(stitch({limit, "1801"}).out, "frames read: 3\n")) << limit;
    const ProgramRun full = stitch({limit, "1800"});
    EXPECT_EQ(full.status, 0) << limit;
    EXPECT_TRUE(contains(full.out, "frames read: 2\njoined: 2\n")) << full.out;
    EXPECT_EQ(full.err,
              "framequilt: the mosaic is full (frames not read: 1): raise --max-rows or "
              "--max-cols\n");
    EXPECT_EQ(cv::imread(mosaic(), cv::IMREAD_UNCHANGED).size(), cv::Size(kCols + 160, kRows));
  }
}

TEST_F(ProgramOptions, LimitsFitThirtyOneBits) {
  const ProgramRun result = stitch({"--max-rows", "107375"});
  EXPECT_EQ(result.status, 2);
  EXPECT_TRUE(contains(result.err, "--max-rows x --max-cols")) << result.err;
  EXPECT_EQ(stitch({"--max-rows", "107374"}).status, 0);
}

TEST_F(ProgramOptions, EveryNthPictureIsTaken) {
  // The first and the third share too little to join.
  const ProgramRun result = stitch({"--every", "2"});
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(contains(result.out, "frames read: 2\n")) << result.out;
  EXPECT_FALSE(contains(result.out, "f1.png")) << result.out;
  EXPECT_TRUE(contains(result.out, "f2.png")) << result.out;
}

TEST_F(ProgramOptions, AVideoIsStitchedLikePictures) {
  const std::string clip = outputs_.file("clip.avi");
  cv::VideoWriter writer(clip, cv::CAP_OPENCV_MJPEG, cv::VideoWriter::fourcc('M', 'J', 'P', 'G'),
                         10, {kCols, kRows});
  for (const cv::Mat& frame : frames_) writer.write(coloured(frame));
  writer.release();
  const ProgramRun result =
      framequiltRun({"stitch", clip, "-o", mosaic(), "--placements", outputs_.file("places.csv")});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(readText(outputs_.file("places.csv")),
            "frame,file,x,y,joined\n1,clip.avi#1,0,0,1\n2,clip.avi#2,160,0,1\n"
            "3,clip.avi#3,320,0,1\n");
}

TEST_F(ProgramOptions, PlacementsAreWrittenOnRequest) {
  ASSERT_EQ(stitch({}).status, 0);
  EXPECT_EQ(outputs_.names(), std::vector<std::string>{"mosaic.png"});
  ASSERT_EQ(stitch({"--placements", outputs_.file("places.csv")}).status, 0);
  EXPECT_EQ(readText(outputs_.file("places.csv")),
            "frame,file,x,y,joined\n1,f0.png,0,0,1\n2,f1.png,160,0,1\n3,f2.png,320,0,1\n");
}

TEST_F(ProgramOptions, VerboseShowsEachFrameAndTheEnginesLinesOnStandardError) {
  const ProgramRun result = stitch({"--verbose"});
  EXPECT_TRUE(contains(result.err, "imageMosaicFun in\n")) << result.err;
  EXPECT_TRUE(contains(result.err, "pthread_join model_pid success\n")) << result.err;
  EXPECT_TRUE(contains(result.err, "framequilt: 'f0.png': first frame\n")) << result.err;
  EXPECT_TRUE(contains(result.err, "framequilt: 'f1.png': joined at (160, 0), ")) << result.err;
  EXPECT_FALSE(contains(result.out, "imageMosaicFun in")) << result.out;
}

TEST_F(ProgramOptions, StandardOutputHoldsNothingButTheSummary) {
  const ProgramRun result = stitch({});
  EXPECT_EQ(result.out.rfind("frames read: 3\njoined: 3\nrefused: 0\nmosaic: 720 x 300 pixels, "
                             "gray\nms per frame: median ",
                             0),
            0U)
      << result.out;
  const std::string place = "written to: " + mosaic() + "\n";
  ASSERT_GE(result.out.size(), place.size());
  EXPECT_EQ(result.out.substr(result.out.size() - place.size()), place);
}

TEST(Program, TellsItsVersion) {
  const ProgramRun result = framequiltRun({"--version"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, "framequilt " FRAMEQUILT_VERSION "\n");
}

TEST(Program, HelpNamesEveryOption) {
  const ProgramRun result = framequiltRun({"stitch", "--help"});
  EXPECT_EQ(result.status, 0);
  for (const char* option :
       {"--output",     "--every",   "--hints",         "--mode",     "--static",   "--dynamic",
        "--scale",      "--backend", "--corner-budget", "--max-rows", "--max-cols", "--crop",
        "--placements", "--report",  "--outlines",      "--ome-tiff", "--pyramid",  "--report-html",
        "--pixel-size", "--quiet",   "--verbose"}) {
    EXPECT_TRUE(contains(result.out, option)) << option;
  }
}
