// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/input_listing.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "temporary_folder.h"
#include "tool_error_text.h"
#include "tools/framequilt/tool_error.h"

using framequilt::tool::listFiles;
using framequilt::tool::ToolError;

namespace {

std::vector<std::string> fileNames(const std::vector<std::filesystem::path>& paths) {
  std::vector<std::string> names;
  for (const auto& path : paths) names.push_back(path.filename().string());
  return names;
}

std::string errorOf(const std::vector<std::string>& inputs) {
  return toolErrorOf([&] { listFiles(inputs, {"none.png"}); });
}

}  // namespace

TEST(InputListing, AFolderGivesItsPicturesInNaturalOrder) {
  const TemporaryFolder folder;
  for (const char* name : {"f10.png", "f2.JPG", "f1.tiff", "f3.bmp"}) {
    writeText(folder.file(name), "x");
  }
  EXPECT_EQ(fileNames(listFiles({folder.path()}, {"none.png"})),
            (std::vector<std::string>{"f1.tiff", "f2.JPG", "f3.bmp", "f10.png"}));
}

TEST(InputListing, OtherFilesHiddenFilesAndSubfoldersAreLeftOut) {
  const TemporaryFolder folder;
  for (const char* name : {"a.png", "truth.csv", "README", ".hidden.png"}) {
    writeText(folder.file(name), "x");
  }
  std::filesystem::create_directory(folder.file("inner.png"));
  EXPECT_EQ(fileNames(listFiles({folder.path()}, {"none.png"})),
            (std::vector<std::string>{"a.png"}));
}

TEST(InputListing, FilesStayInTheOrderGiven) {
  const TemporaryFolder folder;
  for (const char* name : {"f10.png", "f2.png", "noextension"}) writeText(folder.file(name), "x");
  EXPECT_EQ(fileNames(listFiles(
                {folder.file("f10.png"), folder.file("noextension"), folder.file("f2.png")}, {})),
            (std::vector<std::string>{"f10.png", "noextension", "f2.png"}));
}

TEST(InputListing, FilesAndFoldersMix) {
  const TemporaryFolder one;
  const TemporaryFolder two;
  writeText(one.file("z.png"), "x");
  writeText(two.file("b.png"), "x");
  writeText(two.file("a.png"), "x");
  EXPECT_EQ(fileNames(listFiles({one.file("z.png"), two.path(), one.path()}, {})),
            (std::vector<std::string>{"z.png", "a.png", "b.png", "z.png"}));
}

TEST(InputListing, TheMosaicOfAnEarlierRunIsNoFrameOfItsFolder) {
  const TemporaryFolder folder;
  writeText(folder.file("a.png"), "x");
  writeText(folder.file("mosaic.png"), "x");
  const std::string otherSpelling = folder.path() + "/./mosaic.png";
  EXPECT_EQ(fileNames(listFiles({folder.path()}, {otherSpelling})),
            (std::vector<std::string>{"a.png"}));
}

TEST(InputListing, SoIsEveryOtherPictureThatARunWrites) {
  const TemporaryFolder folder;
  for (const char* name : {"a.png", "m.png", "m.ome.tif"}) writeText(folder.file(name), "x");
  EXPECT_EQ(fileNames(listFiles({folder.path()}, {folder.file("m.png"), folder.file("m.ome.tif")})),
            (std::vector<std::string>{"a.png"}));
}

TEST(InputListing, SoIsItsOutlinedCopy) {
  const TemporaryFolder folder;
  for (const char* name : {"a.png", "a-outlines.png", "m.png", "m-outlines.png"}) {
    writeText(folder.file(name), "x");
  }
  const std::vector<std::string> expected = {"a-outlines.png", "a.png"};
  EXPECT_EQ(fileNames(listFiles({folder.path()}, {folder.file("m.png")})), expected);
  EXPECT_EQ(fileNames(listFiles({folder.file("*.png")}, {folder.file("m.png")})), expected);
}

TEST(InputListing, APatternGivesTheFilesThatMatchInNaturalOrder) {
  const TemporaryFolder folder;
  for (const char* name : {"f10.png", "f2.png", "f1.png", "g1.png", "f3.txt"}) {
    writeText(folder.file(name), "x");
  }
  std::filesystem::create_directory(folder.file("f4.png"));
  EXPECT_EQ(fileNames(listFiles({folder.file("f*.png")}, {})),
            (std::vector<std::string>{"f1.png", "f2.png", "f10.png"}));
  EXPECT_EQ(fileNames(listFiles({folder.file("[fg]?.*")}, {})),
            (std::vector<std::string>{"f1.png", "f2.png", "f3.txt", "g1.png"}));
}

TEST(InputListing, APatternMayNameFoldersOnItsWay) {
  const TemporaryFolder folder;
  for (const char* name : {"run10", "run2"}) {
    std::filesystem::create_directory(folder.file(name));
    writeText(folder.file(name) + "/a.png", "x");
  }
  EXPECT_EQ(
      listFiles({folder.file("run*/a.png")}, {}),
      (std::vector<std::filesystem::path>{folder.file("run2/a.png"), folder.file("run10/a.png")}));
}

TEST(InputListing, AFileOfThatVeryNameIsNoPattern) {
  const TemporaryFolder folder;
  for (const char* name : {"f[1].png", "f1.png"}) writeText(folder.file(name), "x");
  EXPECT_EQ(fileNames(listFiles({folder.file("f[1].png")}, {})),
            (std::vector<std::string>{"f[1].png"}));
}

TEST(InputListing, APatternWithoutMatchesIsNamed) {
  const TemporaryFolder folder;
  writeText(folder.file("m.png"), "x");
  for (const char* name : {"f*.png", "m.pn?"}) {
    try {
      listFiles({folder.file(name)}, {folder.file("m.png")});
      ADD_FAILURE() << name;
    } catch (const ToolError& failure) {
      EXPECT_EQ(failure.what(), "pattern '" + folder.file(name) + "' matches no file: check it");
    }
  }
}

TEST(InputListing, AMissingPathIsNamed) {
  EXPECT_EQ(errorOf({"/nowhere/f1.png"}),
            "'/nowhere/f1.png' cannot be found (No such file or directory): check the path");
}

TEST(InputListing, AFolderWithoutPicturesIsNamed) {
  const TemporaryFolder folder;
  writeText(folder.file("notes.txt"), "x");
  EXPECT_EQ(errorOf({folder.path()}),
            "folder '" + folder.path() +
                "' holds no pictures: give a folder with .png, .jpg, .tif or .bmp files");
}

TEST(InputListing, AnOddNameStaysOneLine) {
  EXPECT_EQ(errorOf({"/nowhere/a\nb\x1B"}),
            "'/nowhere/a?b?' cannot be found (No such file or directory): check the path");
}
