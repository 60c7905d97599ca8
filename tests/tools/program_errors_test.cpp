// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "program_run.h"
#include "scenes.h"
#include "temporary_folder.h"

namespace {

/// Two frames that fit each other.
class ProgramErrors : public testing::Test {
 protected:
  void SetUp() override {
    const cv::Mat scene = texture(300, 560);
    save(one(), scene(cv::Rect(0, 0, 400, 300)));
    save(two(), scene(cv::Rect(160, 0, 400, 300)));
  }

  std::string one() const { return pictures_.file("f1.png"); }
  std::string two() const { return pictures_.file("f2.png"); }
  std::string mosaic() const { return outputs_.file("mosaic.png"); }

  /// Exit status 2, nothing on standard output, this one line on standard error, no new file.
  void expectRefusal(const std::vector<std::string>& arguments, const std::string& line) const {
    const ProgramRun result = framequiltRun(arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "framequilt: " + line + "\n");
    EXPECT_EQ(outputs_.names(), std::vector<std::string>{});
  }

  TemporaryFolder pictures_, outputs_;
};

}  // namespace

TEST_F(ProgramErrors, MissingFile) {
  expectRefusal({"stitch", one(), "/nowhere/f2.png", "-o", mosaic()},
                "'/nowhere/f2.png' cannot be found (No such file or directory): check the path");
}

TEST_F(ProgramErrors, FolderWithoutPictures) {
  const TemporaryFolder empty;
  expectRefusal({"stitch", empty.path(), "-o", mosaic()},
                "folder '" + empty.path() +
                    "' holds no pictures: give a folder with .png, .jpg, .tif or .bmp files");
}

TEST_F(ProgramErrors, APictureThatCannotBeUsedIsLeftOut) {
  writeText(pictures_.file("f0.png"), "no picture");
  save(pictures_.file("f3.png"), texture(200, 400));
  save(pictures_.file("f4.jpg"), texture(300, 400));
  const std::string bytes = readText(pictures_.file("f4.jpg"));
  writeText(pictures_.file("f4.jpg"), bytes.substr(0, bytes.size() / 2));
  const ProgramRun result = framequiltRun({"stitch", pictures_.path(), "-o", mosaic()});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(
      result.err,
      "framequilt: '" + pictures_.file("f0.png") +
          "' cannot be read as a picture: left out\nframequilt: '" + pictures_.file("f3.png") +
          "' has 400 x 200 pixels, the capture has 400 x 300 pixels: left out\nframequilt: '" +
          pictures_.file("f4.jpg") +
          "' is damaged (its pixels end early or are wrong): left out\n");
  EXPECT_EQ(outputs_.names(), std::vector<std::string>{"mosaic.png"});
}

TEST_F(ProgramErrors, NoPictureThatCanBeRead) {
  const TemporaryFolder texts;
  writeText(texts.file("a.png"), "no picture");
  const ProgramRun result = framequiltRun({"stitch", texts.path(), "-o", mosaic()});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err, "framequilt: '" + texts.file("a.png") +
                            "' cannot be read as a picture: left out\nframequilt: '" +
                            texts.file("a.png") +
                            "', the only picture, cannot be read: save it again as .png or .jpg\n");
}

TEST_F(ProgramErrors, NoVideoThatCanBeRead) {
  writeText(pictures_.file("clip.mp4"), "no video");
  expectRefusal({"stitch", pictures_.file("clip.mp4"), "-o", mosaic()},
                "'" + pictures_.file("clip.mp4") +
                    "' cannot be read as a video: convert it to .mp4, or give its frames as "
                    "pictures");
}

TEST_F(ProgramErrors, CameraMissing) {
  expectRefusal({"stitch", "camera:97", "-o", mosaic()},
                "camera 97 cannot be opened: check that it is connected and that no other program "
                "uses it");
}

TEST_F(ProgramErrors, OnePictureOnly) {
  expectRefusal({"stitch", one(), "-o", mosaic()},
                "'" + one() + "' gives only one frame: give two or more");
}

TEST_F(ProgramErrors, OutputThatIsAnInput) {
  expectRefusal({"stitch", one(), two(), "-o", two()},
                "'" + two() + "' is an input: write to another file");
}

TEST_F(ProgramErrors, HintsThatCannotBeRead) {
  const std::string hints = pictures_.file("hints.csv");
  writeText(hints, "frame,dx,dy\n2,left,0\n");
  const ProgramRun result =
      framequiltRun({"stitch", one(), two(), "-o", mosaic(), "--hints", hints});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err, "framequilt: '" + hints +
                            "' line 2: 'left' in column 'dx' is no finite number: write one such "
                            "as 12 or 12.5\n");
  EXPECT_EQ(outputs_.names(), std::vector<std::string>{});
}

TEST_F(ProgramErrors, OutputFolderMissing) {
  expectRefusal({"stitch", one(), two(), "-o", "/nowhere/mosaic.png"},
                "folder '/nowhere' for '/nowhere/mosaic.png' does not exist: create it or choose "
                "another");
}

TEST_F(ProgramErrors, PlacementsFolderMissing) {
  expectRefusal(
      {"stitch", one(), two(), "-o", mosaic(), "--placements", "/nowhere/p.csv"},
      "folder '/nowhere' for '/nowhere/p.csv' does not exist: create it or choose another");
}

TEST_F(ProgramErrors, OutputFolderUnwritable) {
  const ProgramRun result = framequiltRun({"stitch", one(), two(), "-o", "/proc/mosaic.png"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err.rfind("framequilt: no file can be created in '/proc' (", 0), 0U)
      << result.err;
}

TEST_F(ProgramErrors, OutputFormatUnknown) {
  expectRefusal({"stitch", one(), two(), "-o", outputs_.file("mosaic.gif")},
                "'" + outputs_.file("mosaic.gif") +
                    "' names no known picture format: end it with .png, .jpg, .tif or .bmp");
}

TEST_F(ProgramErrors, PictureTooLargeForScaleOne) {
  const TemporaryFolder large;
  save(large.file("a.png"), texture(20, 6001));
  save(large.file("b.png"), texture(20, 6001));
  expectRefusal({"stitch", large.path(), "-o", mosaic(), "--scale", "1"},
                "frames of 6001 x 20 pixels are more than 6000 a side: use scale 2");
  EXPECT_EQ(framequiltRun({"stitch", large.path(), "-o", mosaic()}).status, 1);
}

TEST_F(ProgramErrors, AFileThatDoesNotFitKeepsTheOlderMosaic) {
  for (const char* name : {"mosaic.png", "mosaic.tif"}) {
    const TemporaryFolder outputs;
    const std::string mosaic = outputs.file(name);
    writeText(mosaic, "older");
    // The shell limits every file of the program to a few kilobytes, as a full disk would.
    const ProgramRun result = run({"/bin/sh", "-c", "trap '' XFSZ; ulimit -f 8; exec \"$0\" \"$@\"",
                                   FRAMEQUILT_PROGRAM, "stitch", one(), two(), "-o", mosaic});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "framequilt: '" + mosaic +
                              "' could not be written (File too large): free some space or choose "
                              "another folder\n");
    EXPECT_EQ(readText(mosaic), "older");
    EXPECT_EQ(outputs.names(), std::vector<std::string>{name});
  }
}

TEST_F(ProgramErrors, PicturesThatDoNotFitGiveStatusOne) {
  save(two(), texture(300, 400, 99));
  const ProgramRun result = framequiltRun({"stitch", one(), two(), "-o", mosaic()});
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.out.find("joined: 0\nrefused: 2\n"), std::string::npos) << result.out;
  EXPECT_EQ(outputs_.names(), std::vector<std::string>{});
}

TEST_F(ProgramErrors, CountsBeginWithOne) {
  for (const std::string option : {"--every", "--max-rows", "--max-cols"}) {
    for (const std::string value : {"0", "-3", "many", "1.5", "3000000000"}) {
      const ProgramRun result =
          framequiltRun({"stitch", one(), two(), "-o", mosaic(), option, value});
      EXPECT_EQ(result.status, 2);
      std::string line = option;
      line += ": '";
      line += value;
      line += "' is no whole number from 1 to 2147483647\n";
      EXPECT_EQ(result.err.rfind(line, 0), 0U) << result.err;
    }
  }
}

TEST_F(ProgramErrors, WrongUsageGivesStatusTwo) {
  const std::vector<std::vector<std::string>> wrong = {
      {},
      {"stich"},
      {"stitch"},
      {"stitch", one(), two()},
      {"stitch", "-o", mosaic()},
      {"stitch", one(), two(), "-o", mosaic(), "--mode", "other"},
      {"stitch", one(), two(), "-o", mosaic(), "--scale", "3"},
      {"stitch", one(), two(), "-o", mosaic(), "--backend", "gpu"},
      {"stitch", one(), two(), "-o", mosaic(), "--backend", "opencl", "--scale", "2"},
      {"stitch", one(), two(), "-o", mosaic(), "--every", "0"},
      {"stitch", one(), two(), "-o", mosaic(), "--corner-budget", "-1"},
      {"stitch", one(), two(), "-o", mosaic(), "--max-rows", "0"},
      {"stitch", one(), two(), "-o", mosaic(), "--max-cols", "many"},
      {"stitch", one(), two(), "-o", mosaic(), "--crop", "some"},
      {"stitch", one(), two(), "-o", mosaic(), "--static", "--dynamic"},
      {"stitch", one(), two(), "-o", mosaic(), "--quiet", "--verbose"},
      {"info", "more"},
      {"stitch", one(), two(), "-o", mosaic(), "--unknown"}};
  for (const auto& arguments : wrong) {
    const ProgramRun result = framequiltRun(arguments);
    EXPECT_EQ(result.status, 2) << testing::PrintToString(arguments);
    EXPECT_EQ(result.out, "") << testing::PrintToString(arguments);
    EXPECT_NE(result.err, "") << testing::PrintToString(arguments);
  }
  EXPECT_EQ(outputs_.names(), std::vector<std::string>{});
}

TEST_F(ProgramErrors, TheSmallestFramesAreRefusedNotStitched) {
  for (const cv::Size size :
       {cv::Size(1, 1), cv::Size(2, 1), cv::Size(1, 500), cv::Size(12000, 1)}) {
    save(one(), texture(size.height, size.width));
    save(two(), texture(size.height, size.width, 8));
    const ProgramRun result = framequiltRun({"stitch", one(), two(), "-o", mosaic()});
    EXPECT_EQ(result.status, 1) << size << result.err;
    EXPECT_NE(result.out.find("joined: 0\nrefused: 2\n"), std::string::npos) << result.out;
  }
}

TEST_F(ProgramErrors, AScenesLimitIsLargerThanAFrames) {
  save(one(), texture(40, 13000));
  const TemporaryFolder captures;
  EXPECT_EQ(framequiltRun({"simulate", one(), "-o", captures.file("c"), "--cols", "32", "--rows",
                           "32", "--frames", "2"})
                .status,
            0);
}
