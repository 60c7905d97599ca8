// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/output_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "temporary_folder.h"
#include "tool_error_text.h"

using framequilt::tool::OutputFile;

namespace {

std::string errorOf(const std::string& target) {
  return toolErrorOf([&] { OutputFile file(target); });
}

using Names = std::vector<std::string>;

}  // namespace

TEST(OutputFile, AppearsWithItsContentWhenPublished) {
  const TemporaryFolder folder;
  {
    OutputFile file(folder.file("out.bin"));
    EXPECT_FALSE(std::filesystem::exists(folder.file("out.bin")));
    file.publish("abc", 3);
    EXPECT_EQ(readText(folder.file("out.bin")), "abc");
  }
  EXPECT_EQ(folder.names(), Names{"out.bin"});
}

TEST(OutputFile, IsWrittenInTheFolderOfItsTarget) {
  const TemporaryFolder folder;
  const OutputFile file(folder.file("out.bin"));
  ASSERT_EQ(folder.names().size(), 1U);
  EXPECT_NE(folder.names().front(), "out.bin");
}

TEST(OutputFile, LeavesNothingUnpublished) {
  const TemporaryFolder folder;
  { const OutputFile file(folder.file("out.bin")); }
  EXPECT_EQ(folder.names(), Names{});
}

TEST(OutputFile, KeepsAnOlderFileUntilPublished) {
  const TemporaryFolder folder;
  writeText(folder.file("out.bin"), "older");
  { const OutputFile file(folder.file("out.bin")); }
  EXPECT_EQ(readText(folder.file("out.bin")), "older");
  OutputFile file(folder.file("out.bin"));
  EXPECT_EQ(readText(folder.file("out.bin")), "older");
  file.publish("new", 3);
  EXPECT_EQ(readText(folder.file("out.bin")), "new");
}

TEST(OutputFile, WritesMoreThanOneBlock) {
  const TemporaryFolder folder;
  const std::string content(3'000'001, 'x');
  OutputFile(folder.file("out.bin")).publish(content.data(), content.size());
  EXPECT_TRUE(readText(folder.file("out.bin")) == content);
}

TEST(OutputFile, TakesItsContentInPartsToo) {
  const TemporaryFolder folder;
  OutputFile file(folder.file("out.bin"));
  file.write("abc", 3);
  file.write("de", 2);
  EXPECT_FALSE(std::filesystem::exists(folder.file("out.bin")));
  file.publish();
  EXPECT_EQ(readText(folder.file("out.bin")), "abcde");
}

TEST(OutputFile, AWriterMayGoBackInItAndReadIt) {
  const TemporaryFolder folder;
  OutputFile file(folder.file("out.bin"));
  file.write("abc", 3);
  char read = 0;
  EXPECT_EQ(::pread(file.descriptor(), &read, 1, 1), 1);
  EXPECT_EQ(read, 'b');
  EXPECT_EQ(::pwrite(file.descriptor(), "X", 1, 0), 1);
  file.publish();
  EXPECT_EQ(readText(folder.file("out.bin")), "Xbc");
}

TEST(OutputFile, AMissingFolderIsNamed) {
  EXPECT_EQ(errorOf("/nowhere/out.png"),
            "folder '/nowhere' for '/nowhere/out.png' does not exist: create it or choose another");
}

TEST(OutputFile, AFolderThatTakesNoFilesIsNamed) {
  const std::string error = errorOf("/proc/out.png");  // Not even root creates files there.
  EXPECT_EQ(error.rfind("no file can be created in '/proc' (", 0), 0U) << error;
  EXPECT_NE(error.find("): choose a folder that you may write to"), std::string::npos) << error;
}

TEST(OutputFile, AFolderIsNoTarget) {
  const TemporaryFolder folder;
  EXPECT_EQ(errorOf(folder.path()), "'" + folder.path() + "' is a folder: name a file in it");
}

TEST(OutputFile, AFolderThatWasRemovedMeanwhileIsMadeAgain) {
  const TemporaryFolder folder;
  const std::string content(3'000'001, 'x');
  std::filesystem::create_directories(folder.file("a/b"));
  OutputFile file(folder.file("a/b/out.bin"), OutputFile::FolderRemoved::kMakeAgain);
  file.write(content.data(), content.size());
  std::filesystem::remove_all(folder.file("a"));
  file.publish("y", 1);
  EXPECT_TRUE(readText(folder.file("a/b/out.bin")) == content + "y");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.file("a/b")), {}), 1);
}

TEST(OutputFile, OneOfManyFailsWithItsFolder) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.file("a"));
  OutputFile file(folder.file("a/out.bin"));
  std::filesystem::remove_all(folder.file("a"));
  EXPECT_EQ(toolErrorOf([&] { file.publish("y", 1); }),
            "'" + folder.file("a/out.bin") +
                "' could not be written (No such file or directory): free some space or choose "
                "another folder");
  EXPECT_EQ(folder.names(), Names{});
}

TEST(OutputFile, AFolderThatCannotBeMadeAgainIsNamed) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.file("a"));
  OutputFile file(folder.file("a/out.bin"), OutputFile::FolderRemoved::kMakeAgain);
  std::filesystem::remove_all(folder.file("a"));
  writeText(folder.file("a"), "a file now");
  EXPECT_EQ(toolErrorOf([&] { file.publish("y", 1); }),
            "'" + folder.file("a/out.bin") +
                "' could not be written (Not a directory): free some space or choose another "
                "folder");
  EXPECT_EQ(readText(folder.file("a")), "a file now");
}

TEST(OutputFile, IsWrittenByOneAtATime) {
  const TemporaryFolder folder;
  const OutputFile first(folder.file("out.bin"));
  EXPECT_EQ(errorOf(folder.file("out.bin")),
            "'" + folder.file("out.bin") +
                "' is being written by another framequilt: wait until that ends");
}
