// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/journal_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "file_size_limit.h"
#include "temporary_folder.h"
#include "tool_error_text.h"

using framequilt::tool::JournalError;
using framequilt::tool::JournalFile;

namespace {

using Lines = std::vector<std::string>;
using Access = JournalFile::Access;

class JournalFileTest : public testing::Test {
 protected:
  std::string folder() const { return folder_.file("j"); }
  std::string file() const { return folder_.file("j/journal.jsonl"); }

  void write(const Lines& objects) const {
    JournalFile journal = JournalFile::created(folder());
    for (const std::string& object : objects) journal.append(object);
  }
  Lines read(Access access = Access::kRead) const {
    return JournalFile::opened(folder(), access).objects();
  }
  std::string createError() const {
    return toolErrorOf([&] { JournalFile::created(folder()); });
  }
  std::string openError(Access access) const {
    return toolErrorOf([&] { JournalFile::opened(folder(), access); });
  }

  TemporaryFolder folder_;
};

}  // namespace

TEST_F(JournalFileTest, LinesAreThereAgain) {
  write({R"({"a":1})", R"({"b":2})"});
  EXPECT_EQ(read(), (Lines{R"({"a":1})", R"({"b":2})"}));
  {
    JournalFile journal = JournalFile::opened(folder(), Access::kAppend);
    journal.append(R"({"c":3})");
  }
  EXPECT_EQ(read(), (Lines{R"({"a":1})", R"({"b":2})", R"({"c":3})"}));
}

TEST_F(JournalFileTest, AnIncompleteLastLineIsCutOffForAppendingOnly) {
  write({R"({"a":1})", R"({"b":2})"});
  const std::string text = readText(file());
  const std::string torn = text.substr(0, text.size() - 5);
  writeText(file(), torn);
  EXPECT_EQ(read(), Lines{R"({"a":1})"});
  EXPECT_EQ(readText(file()), torn);
  {
    JournalFile journal = JournalFile::opened(folder(), Access::kAppend);
    journal.append(R"({"b":2})");
  }
  EXPECT_EQ(readText(file()), text);
}

TEST_F(JournalFileTest, FilesThatAKilledProcessWasWritingAreRemoved) {
  write({R"({"a":1})"});
  std::filesystem::create_directory(folder_.file("j/frames"));
  for (const char* name : {"j/.checkpoint.tif.77.part", "j/frames/.000001.png.77.part",
                           "j/frames/000001.png", "j/checkpoint.tif"}) {
    writeText(folder_.file(name), "x");
  }
  read(Access::kRead);
  EXPECT_TRUE(std::filesystem::exists(folder_.file("j/.checkpoint.tif.77.part")));
  read(Access::kAppend);
  EXPECT_FALSE(std::filesystem::exists(folder_.file("j/.checkpoint.tif.77.part")));
  EXPECT_FALSE(std::filesystem::exists(folder_.file("j/frames/.000001.png.77.part")));
  EXPECT_TRUE(std::filesystem::exists(folder_.file("j/frames/000001.png")));
  EXPECT_TRUE(std::filesystem::exists(folder_.file("j/checkpoint.tif")));
}

TEST_F(JournalFileTest, ANewJournalWantsANewOrEmptyFolder) {
  std::filesystem::create_directory(folder());
  write({R"({"a":1})"});
  EXPECT_EQ(createError(), "folder '" + folder() +
                               "' holds a journal: go on with it by 'framequilt resume', or choose "
                               "a new folder");
  EXPECT_EQ(read(), Lines{R"({"a":1})"});
  std::filesystem::remove(file());
  writeText(folder_.file("j/notes.txt"), "mine");
  EXPECT_EQ(createError(), "folder '" + folder() +
                               "' holds 'notes.txt': choose a new or empty folder for the journal");
}

TEST_F(JournalFileTest, AJournalWithoutALineIsBegunAgain) {
  std::filesystem::create_directory(folder());
  writeText(file(), "{\"a\":1,\"su");
  writeText(folder_.file("j/hints.csv"), "frame,dx,dy\n");
  EXPECT_EQ(openError(Access::kRead), "the journal of '" + folder() +
                                          "' is empty (its run ended before the first frame): "
                                          "stitch anew");
  write({R"({"b":2})"});
  EXPECT_EQ(read(), Lines{R"({"b":2})"});
}

TEST_F(JournalFileTest, ASlashAtTheEndMeansTheFolder) {
  JournalFile::created(folder() + "/").append(R"({"a":1})");
  EXPECT_EQ(JournalFile::opened(folder() + "/", Access::kRead).objects(), Lines{R"({"a":1})"});
}

TEST_F(JournalFileTest, AFolderThatCannotBeMadeIsNamed) {
  EXPECT_EQ(toolErrorOf([] { JournalFile::created("/nowhere/j"); }),
            "folder '/nowhere' for '/nowhere/j' does not exist: create it or choose another");
  writeText(folder(), "");
  EXPECT_EQ(createError(), "'" + folder() + "' is a file: name a new folder");
  EXPECT_EQ(toolErrorOf([] {
              JournalFile::created("/proc/j");
            }).rfind("folder '/proc/j' cannot be created (", 0),
            0U);
}

TEST_F(JournalFileTest, AFolderWithoutAJournalIsNamed) {
  const std::string none = "folder '" + folder() +
                           "' holds no journal: give the one that 'framequilt stitch --journal' "
                           "made";
  EXPECT_EQ(openError(Access::kRead), none);
  std::filesystem::create_directory(folder());
  EXPECT_EQ(openError(Access::kAppend), none);
  std::filesystem::remove(folder());
  writeText(folder(), "");
  EXPECT_EQ(openError(Access::kRead), none);
}

TEST_F(JournalFileTest, OneWriterOrSeveralReaders) {
  const std::string inUse =
      "the journal of '" + folder() + "' is in use by another framequilt: wait until that ends";
  {
    JournalFile writer = JournalFile::created(folder());
    writer.append(R"({"a":1})");
    EXPECT_EQ(openError(Access::kRead), inUse);
    EXPECT_EQ(openError(Access::kAppend), inUse);
    EXPECT_EQ(createError(), inUse);
  }
  const JournalFile reader = JournalFile::opened(folder(), Access::kRead);
  EXPECT_EQ(read(), Lines{R"({"a":1})"});
  EXPECT_EQ(openError(Access::kAppend), inUse);
}

TEST_F(JournalFileTest, ALineThatDoesNotFitOnTheDiskLeavesTheOthers) {
  JournalFile journal = JournalFile::created(folder());
  journal.append(R"({"a":1})");
  const std::string before = readText(file());
  {
    const FileSizeLimit limit(before.size() + 10);
    try {
      journal.append(R"({"b":2})");
      ADD_FAILURE() << "no error";
    } catch (const JournalError& failure) {
      EXPECT_EQ(std::string(failure.what()), "the journal of '" + folder() +
                                                 "' could not be written (File too large): free "
                                                 "some space");
    }
  }
  EXPECT_EQ(readText(file()), before);
  journal.append(R"({"c":3})");
  const JournalFile moved = std::move(journal);
  EXPECT_EQ(readText(file()).rfind(before + "{\"c\":3,", 0), 0U);
}
