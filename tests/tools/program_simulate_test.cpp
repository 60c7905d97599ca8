// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdio>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "program_run.h"
#include "scenes.h"
#include "temporary_folder.h"
#include "tools/framequilt/generated_scene.h"
#include "tools/framequilt/simulation.h"

using framequilt::tool::generateScene;
using framequilt::tool::PathShape;
using framequilt::tool::roomyScene;
using framequilt::tool::SimulatedCapture;
using framequilt::tool::SimulationOptions;

namespace {

using Arguments = std::vector<std::string>;

bool same(const cv::Mat& a, const cv::Mat& b) {
  return a.type() == b.type() && a.size() == b.size() && cv::norm(a, b, cv::NORM_INF) == 0;
}

std::string frameName(int number) {
  char name[32];
  std::snprintf(name, sizeof name, "/frame_%04d.png", number);
  return name;
}

/// A coloured scene, and frames of 64 x 48 pixels to be cut from it.
class ProgramSimulate : public testing::Test {
 protected:
  void SetUp() override {
    save(scene(), generateScene({250, 200}, 3));
    expected_ = plain();
  }

  /// What --cols 64 --rows 48 --frames 5 stand for.
  static SimulationOptions plain() {
    SimulationOptions options;
    options.path.frame = {64, 48};
    options.path.frames = 5;
    return options;
  }
  std::string scene() const { return pictures_.file("scene.png"); }
  std::string capture() const { return outputs_.file("capture"); }
  std::string truth() const { return readText(capture() + "/truth.csv"); }
  cv::Mat frame(int number) const {
    return cv::imread(capture() + frameName(number), cv::IMREAD_UNCHANGED);
  }

  ProgramRun simulate(const Arguments& more) const {
    Arguments arguments = {"simulate", "-o", capture(), "--cols", "64", "--rows", "48"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return framequiltRun(arguments);
  }

  /// The folder holds this capture and nothing else.
  void expectCapture(const SimulatedCapture& expected, bool subpixel) const {
    std::string lines = "frame,x,y\n";
    for (int i = 0; i < expected.frames(); ++i) {
      const cv::Point2d place = expected.truth(i);
      char line[80];
      std::snprintf(line, sizeof line, subpixel ? "%d,%.2f,%.2f\n" : "%d,%.0f,%.0f\n", i + 1,
                    place.x, place.y);
      lines += line;
      EXPECT_TRUE(same(frame(i + 1), expected.frame(i))) << "frame " << i + 1;
    }
    EXPECT_EQ(truth(), lines);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(capture()), {}),
              expected.frames() + 1);
  }

  /// Options that have to change the capture, and what they stand for.
  void expectOption(const Arguments& more, const SimulationOptions& options) const {
    Arguments arguments = {scene(), "--frames", "5"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const ProgramRun result = simulate(arguments);
    ASSERT_EQ(result.status, 0) << result.err;
    expectCapture({cv::imread(scene()), options}, options.path.subpixel);
    const SimulatedCapture without(cv::imread(scene()), plain());
    bool changed = false;
    for (int i = 0; i < without.frames(); ++i) changed |= !same(frame(i + 1), without.frame(i));
    EXPECT_TRUE(changed) << testing::PrintToString(more);
  }

  /// Exit status 2, nothing on standard output, this one line on standard error.
  static void expectRefusal(const Arguments& arguments, const std::string& line) {
    const ProgramRun result = framequiltRun(arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "framequilt: " + line + "\n");
  }

  TemporaryFolder pictures_, outputs_;
  SimulationOptions expected_;  // What a test expects.
};

}  // namespace

TEST_F(ProgramSimulate, WritesFramesAndTruthAndSaysSo) {
  const ProgramRun result = simulate({scene(), "--frames", "5"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out, "5 frames of 64 x 48 written to '" + capture() + "', truth in '" +
                            capture() + "/truth.csv'\n");
  expectCapture({cv::imread(scene()), expected_}, false);
}

TEST_F(ProgramSimulate, DefaultsAreTwentyFramesOfVgaSize) {
  const ProgramRun result = framequiltRun({"simulate", "--generated", "-o", capture()});
  EXPECT_EQ(result.out, "20 frames of 640 x 480 written to '" + capture() + "', truth in '" +
                            capture() + "/truth.csv'\n");
  const SimulationOptions defaults;
  expectCapture({generateScene(roomyScene(defaults.path), 1), defaults}, false);
}

TEST_F(ProgramSimulate, AGeneratedSceneFollowsTheSeed) {
  expected_.seed = 8;
  ASSERT_EQ(simulate({"--generated", "--frames", "5", "--seed", "8"}).status, 0);
  expectCapture({generateScene(roomyScene(expected_.path), 8), expected_}, false);
}

TEST_F(ProgramSimulate, OutputHasALongName) {
  EXPECT_EQ(framequiltRun({"simulate", "--generated", "--output", capture(), "--cols", "64",
                           "--rows", "48", "--frames", "2"})
                .status,
            0);
  EXPECT_EQ(frame(2).size(), cv::Size(64, 48));
}

TEST_F(ProgramSimulate, PathChoosesTheShape) {
  expected_.path.shape = PathShape::kDrift;
  expectOption({"--path", "drift"}, expected_);
  expected_.path.shape = PathShape::kSerpentine;
  ASSERT_EQ(simulate({scene(), "--frames", "5", "--path", "serpentine"}).status, 0);
  expectCapture({cv::imread(scene()), expected_}, false);
}

TEST_F(ProgramSimulate, OverlapIsOneNumberOrARange) {
  expected_.path.lowestOverlap = expected_.path.highestOverlap = 0.75;
  expectOption({"--overlap", "0.75"}, expected_);
  expected_.path.lowestOverlap = 0.4;
  expected_.path.highestOverlap = 0.8;
  expectOption({"--overlap", "0.4:0.8"}, expected_);
}

TEST_F(ProgramSimulate, EachEffectHasItsOption) {
  const auto with = [this](double SimulationOptions::*member, double value) {
    SimulationOptions options = expected_;
    options.*member = value;
    return options;
  };
  expectOption({"--noise", "6"}, with(&SimulationOptions::noise, 6));
  expectOption({"--gain", "0.2"}, with(&SimulationOptions::gain, 0.2));
  expectOption({"--vignette", "0.4"}, with(&SimulationOptions::vignette, 0.4));
  expectOption({"--blur", "1.5"}, with(&SimulationOptions::blur, 1.5));
  expectOption({"--rotation", "2.5"}, with(&SimulationOptions::rotation, 2.5));
}

TEST_F(ProgramSimulate, SubpixelPlacesAreDecimals) {
  expected_.path.subpixel = true;
  expectOption({"--subpixel"}, expected_);
}

TEST_F(ProgramSimulate, GrayFramesHaveOneChannel) {
  expected_.gray = true;
  expectOption({"--gray"}, expected_);
  EXPECT_EQ(frame(1).channels(), 1);
}

TEST_F(ProgramSimulate, AnotherSeedIsAnotherCapture) {
  expected_.seed = 4000000000;
  expectOption({"--seed", "4000000000"}, expected_);
}

TEST_F(ProgramSimulate, AGraySceneGivesGrayFrames) {
  save(scene(), texture(200, 250));
  ASSERT_EQ(simulate({scene()}).status, 0);
  EXPECT_EQ(frame(1).channels(), 1);
}

TEST_F(ProgramSimulate, TheEndOfTheSceneIsReported) {
  const ProgramRun result = simulate({scene(), "--frames", "1000"});
  EXPECT_EQ(result.status, 0);
  expected_.path.frames = 1000;
  const SimulatedCapture shorter(cv::imread(scene()), expected_);
  EXPECT_EQ(result.out,
            std::to_string(shorter.frames()) + " frames of 64 x 48 written to '" + capture() +
                "', truth in '" + capture() +
                "/truth.csv'\nthe scene ends there, 1000 frames were asked for: use a larger "
                "scene or --path drift\n");
  expectCapture(shorter, false);
}

TEST_F(ProgramSimulate, AnEarlierCaptureIsReplacedWhole) {
  ASSERT_EQ(simulate({scene(), "--frames", "8"}).status, 0);
  ASSERT_EQ(simulate({scene(), "--frames", "5"}).status, 0);
  expectCapture({cv::imread(scene()), expected_}, false);
}

TEST_F(ProgramSimulate, AFolderWithOtherFilesIsRefused) {
  writeText(outputs_.file("notes.txt"), "precious");
  expectRefusal({"simulate", scene(), "-o", outputs_.path()},
                "folder '" + outputs_.path() +
                    "' holds 'notes.txt', which is no part of a simulated capture: choose a new or "
                    "empty folder");
  EXPECT_EQ(outputs_.names(), std::vector<std::string>{"notes.txt"});
}

TEST_F(ProgramSimulate, ASceneThatIsTooSmallKeepsTheEarlierCapture) {
  ASSERT_EQ(simulate({scene(), "--frames", "5"}).status, 0);
  expectRefusal({"simulate", scene(), "-o", capture()},
                "scene '" + scene() +
                    "' has 250 x 200 pixels but a frame and a step need 896 x 480 or 640 x 672: "
                    "give a larger scene or lower --cols and --rows");
  expectCapture({cv::imread(scene()), expected_}, false);
}

TEST_F(ProgramSimulate, ASceneThatCannotBeReadIsNamed) {
  writeText(pictures_.file("b.png"), "no picture");
  for (const char* name : {"a.png", "b.png"}) {
    expectRefusal({"simulate", pictures_.file(name), "-o", capture()},
                  "scene '" + pictures_.file(name) +
                      "' cannot be read as a picture: check the path, or save it as .png or .jpg");
  }
  EXPECT_EQ(outputs_.names(), std::vector<std::string>{});
}

TEST_F(ProgramSimulate, WrongUsageGivesStatusTwo) {
  const std::vector<Arguments> wrong = {{},
                                        {scene(), "--generated"},
                                        {scene(), "--frames", "1"},
                                        {scene(), "--cols", "8"},
                                        {scene(), "--rows", "20001"},
                                        {scene(), "--path", "circle"},
                                        {scene(), "--overlap", "0.7:0.6"},
                                        {scene(), "--overlap", "1"},
                                        {scene(), "--overlap", "-0.1"},
                                        {scene(), "--overlap", "0.5:"},
                                        {scene(), "--overlap", "nan"},
                                        {scene(), "--noise", "-1"},
                                        {scene(), "--noise", "nan"},
                                        {scene(), "--gain", "1"},
                                        {scene(), "--vignette", "1.1"},
                                        {scene(), "--blur", "21"},
                                        {scene(), "--rotation", "46"},
                                        {scene(), "--seed", "-1"},
                                        {scene(), "--seed", "4294967296"}};
  for (const auto& arguments : wrong) {
    const ProgramRun result = simulate(arguments);
    EXPECT_EQ(result.status, 2) << testing::PrintToString(arguments);
    EXPECT_EQ(result.out, "") << testing::PrintToString(arguments);
    EXPECT_NE(result.err, "") << testing::PrintToString(arguments);
  }
  EXPECT_EQ(framequiltRun({"simulate", scene()}).status, 2);
  EXPECT_EQ(outputs_.names(), std::vector<std::string>{});
}

TEST_F(ProgramSimulate, WrongNumbersAreExplained) {
  EXPECT_EQ(simulate({scene(), "--noise", "many"}).err,
            "--noise: many is no number from 0 to 255\nRun with --help for more information.\n");
  EXPECT_EQ(simulate({scene(), "--overlap", "0.7:0.6"}).err,
            "--overlap: 0.7:0.6 is no LO or LO:HI with 0 <= LO <= HI <= 0.99: give 0.6 or 0.5:0.7\n"
            "Run with --help for more information.\n");
  EXPECT_EQ(simulate({}).err,
            "SCENE or --generated is required\nRun with --help for more information.\n");
}

TEST_F(ProgramSimulate, HelpTellsOptionsAndDefaults) {
  const ProgramRun result = framequiltRun({"simulate", "--help"});
  EXPECT_EQ(result.status, 0);
  for (const char* text :
       {"--generated", "--output", "--frames INT:INT in [2 - 100000]=20", "]=640", "]=480",
        "--path TEXT:{serpentine,drift}=serpentine", "--overlap LO[:HI]=0.6", "--subpixel",
        "--noise FLOAT:in [0 to 255]=0", "--gain FLOAT:in [0 to 0.95]=0",
        "--vignette FLOAT:in [0 to 1]=0", "--blur FLOAT:in [0 to 20]=0",
        "--rotation FLOAT:in [0 to 45]=0", "--gray", "--seed UINT=1"}) {
    EXPECT_NE(result.out.find(text), std::string::npos) << text << " in\n" << result.out;
  }
}

TEST_F(ProgramSimulate, AFullDiskIsReported) {
  const ProgramRun result =
      run({"/bin/sh", "-c", "trap '' XFSZ; ulimit -f 1; exec \"$0\" \"$@\"", FRAMEQUILT_PROGRAM,
           "simulate", scene(), "-o", capture(), "--cols", "64", "--rows", "48"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err, "framequilt: '" + capture() +
                            "/frame_0001.png' could not be written (File too large): free some "
                            "space or choose another folder\n");
}
