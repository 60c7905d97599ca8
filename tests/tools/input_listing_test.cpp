// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/input_listing.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "temporary_folder.h"
#include "tools/framequilt/tool_error.h"

using framequilt::tool::listPictures;
using framequilt::tool::ToolError;

namespace {

std::vector<std::string> fileNames(const std::vector<std::filesystem::path>& paths) {
  std::vector<std::string> names;
  for (const auto& path : paths) names.push_back(path.filename().string());
  return names;
}

std::string errorOf(const std::vector<std::string>& inputs) {
  try {
    listPictures(inputs, "none.png");
  } catch (const ToolError& failure) {
    return failure.what();
  }
  return "no error";
}

}  // namespace

TEST(InputListing, AFolderGivesItsPicturesInNaturalOrder) {
  const TemporaryFolder folder;
  for (const char* name : {"f10.png", "f2.JPG", "f1.tiff", "f3.bmp"}) {
    writeText(folder.file(name), "x");
  }
  EXPECT_EQ(fileNames(listPictures({folder.path()}, "none.png")),
            (std::vector<std::string>{"f1.tiff", "f2.JPG", "f3.bmp", "f10.png"}));
}

TEST(InputListing, OtherFilesHiddenFilesAndSubfoldersAreLeftOut) {
  const TemporaryFolder folder;
  for (const char* name : {"a.png", "truth.csv", "README", ".hidden.png"}) {
    writeText(folder.file(name), "x");
  }
  std::filesystem::create_directory(folder.file("inner.png"));
  EXPECT_EQ(fileNames(listPictures({folder.path()}, "none.png")),
            (std::vector<std::string>{"a.png"}));
}

TEST(InputListing, FilesStayInTheOrderGiven) {
  const TemporaryFolder folder;
  for (const char* name : {"f10.png", "f2.png", "noextension"}) writeText(folder.file(name), "x");
  EXPECT_EQ(fileNames(listPictures(
                {folder.file("f10.png"), folder.file("noextension"), folder.file("f2.png")}, "")),
            (std::vector<std::string>{"f10.png", "noextension", "f2.png"}));
}

TEST(InputListing, FilesAndFoldersMix) {
  const TemporaryFolder one;
  const TemporaryFolder two;
  writeText(one.file("z.png"), "x");
  writeText(two.file("b.png"), "x");
  writeText(two.file("a.png"), "x");
  EXPECT_EQ(fileNames(listPictures({one.file("z.png"), two.path(), one.path()}, "")),
            (std::vector<std::string>{"z.png", "a.png", "b.png", "z.png"}));
}

TEST(InputListing, TheMosaicOfAnEarlierRunIsNoFrameOfItsFolder) {
  const TemporaryFolder folder;
  writeText(folder.file("a.png"), "x");
  writeText(folder.file("mosaic.png"), "x");
  const std::string otherSpelling = folder.path() + "/./mosaic.png";
  EXPECT_EQ(fileNames(listPictures({folder.path()}, otherSpelling)),
            (std::vector<std::string>{"a.png"}));
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
