// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/capture_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "temporary_folder.h"
#include "tool_error_text.h"

using framequilt::tool::CaptureFolder;

namespace {

namespace fs = std::filesystem;

using Names = std::vector<std::string>;

std::string errorOf(const fs::path& folder, const fs::path& scene = {}) {
  return toolErrorOf([&] { CaptureFolder(folder, scene).prepare(); });
}

void writeCapture(const TemporaryFolder& folder) {
  for (const char* name : {"frame_0001.png", "frame_0002.png", "frame_10000.png", "truth.csv"}) {
    writeText(folder.file(name), "older");
  }
}

}  // namespace

TEST(CaptureFolder, NamesFramesWithFourDigitsOrMore) {
  const CaptureFolder folder("dir", {});
  EXPECT_EQ(folder.frame(7), "dir/frame_0007.png");
  EXPECT_EQ(folder.frame(12345), "dir/frame_12345.png");
  EXPECT_EQ(folder.truth(), "dir/truth.csv");
}

TEST(CaptureFolder, IsCreatedWithItsParents) {
  const TemporaryFolder parent;
  CaptureFolder folder(parent.file("a/b"), {});
  EXPECT_FALSE(fs::exists(parent.file("a")));
  folder.prepare();
  EXPECT_TRUE(fs::is_directory(parent.file("a/b")));
}

TEST(CaptureFolder, AnEmptyOneIsTaken) {
  const TemporaryFolder folder;
  EXPECT_EQ(errorOf(folder.path()), "no error");
}

TEST(CaptureFolder, AnEarlierCaptureIsRemovedWhole) {
  const TemporaryFolder folder;
  writeCapture(folder);
  CaptureFolder capture(folder.path(), {});
  EXPECT_EQ(folder.names().size(), 4U);
  capture.prepare();
  EXPECT_EQ(folder.names(), Names{});
}

TEST(CaptureFolder, AnythingElseIsLeftAloneWithAllBesideIt) {
  for (const char* stranger : {"notes.txt", "frame_1.png", "frame_00a1.png", "frame_0001.jpg",
                               "a_frame_0001.png", "frame_.png", ".hidden", "truth.csv.bak"}) {
    const TemporaryFolder folder;
    writeCapture(folder);
    writeText(folder.file(stranger), "precious");
    EXPECT_EQ(errorOf(folder.path()), "folder '" + folder.path() + "' holds '" + stranger +
                                          "', which is no part of a simulated capture: choose a "
                                          "new or empty folder");
    EXPECT_EQ(folder.names().size(), 5U);
  }
}

TEST(CaptureFolder, FoldersAndLinksAreNoFrames) {
  const TemporaryFolder elsewhere;
  writeText(elsewhere.file("precious.png"), "precious");
  for (const bool link : {true, false}) {
    const TemporaryFolder folder;
    writeText(folder.file("truth.csv"), "older");
    if (link) {
      fs::create_symlink(elsewhere.file("precious.png"), folder.file("frame_0001.png"));
    } else {
      fs::create_directory(folder.file("frame_0001.png"));
    }
    EXPECT_NE(errorOf(folder.path()), "no error");
    EXPECT_EQ(folder.names(), (Names{"frame_0001.png", "truth.csv"}));
  }
}

TEST(CaptureFolder, FramesWithoutATruthMayComeFromElsewhere) {
  const TemporaryFolder folder;
  writeText(folder.file("frame_0001.png"), "precious");
  EXPECT_EQ(errorOf(folder.path()),
            "folder '" + folder.path() +
                "' holds frames without a truth.csv, perhaps no simulated ones: choose a new or "
                "empty folder");
  EXPECT_EQ(folder.names(), Names{"frame_0001.png"});
}

TEST(CaptureFolder, TheSceneIsNotReplaced) {
  const TemporaryFolder folder;
  writeCapture(folder);
  const std::string scene = folder.path() + "/./frame_0002.png";
  EXPECT_EQ(errorOf(folder.path(), scene),
            "scene '" + scene + "' lies in the folder for the frames: choose another folder");
  EXPECT_EQ(folder.names().size(), 4U);
}

TEST(CaptureFolder, AFileIsNoFolder) {
  const TemporaryFolder folder;
  writeText(folder.file("a"), "");
  EXPECT_EQ(errorOf(folder.file("a")),
            "'" + folder.file("a") + "' is a file: name a folder for the frames");
  EXPECT_EQ(errorOf(folder.file("a/b")),
            "folder '" + folder.file("a/b") +
                "' cannot be created (Not a directory): choose another place");
}
