// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/output_folder.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "temporary_folder.h"
#include "tool_error_text.h"

using framequilt::tool::OutputFolder;

namespace {

namespace fs = std::filesystem;

class OutputFolders : public testing::Test {
 protected:
  std::string errorOf(const std::string& target) const {
    return toolErrorOf([&] { const OutputFolder output(target, {"part"}); });
  }
  std::string target() const { return parent_.file("out"); }

  TemporaryFolder parent_;
};

}  // namespace

TEST_F(OutputFolders, AppearWhenTheyArePublished) {
  for (const char* text : {"first", "second"}) {
    OutputFolder output(target(), {"part"});
    writeText(output.place() / "part", text);
    EXPECT_NE(readText(target() + "/part"), text);
    output.publish();
    EXPECT_EQ(readText(target() + "/part"), text);
    EXPECT_EQ(parent_.names(), std::vector<std::string>{"out"});
  }
}

TEST_F(OutputFolders, ReplaceAnOlderOneAsAWhole) {
  fs::create_directory(target());
  writeText(target() + "/part", "older");
  OutputFolder output(target(), {"part", "other"});
  writeText(output.place() / "other", "x");
  output.publish();
  EXPECT_FALSE(fs::exists(target() + "/part"));
}

TEST_F(OutputFolders, LeaveNothingWhenTheyAreNotPublished) {
  fs::create_directory(target());
  writeText(target() + "/part", "older");
  {
    OutputFolder output(target(), {"part"});
    writeText(output.place() / "part", "newer");
  }
  EXPECT_EQ(readText(target() + "/part"), "older");
  EXPECT_EQ(parent_.names(), std::vector<std::string>{"out"});
}

TEST_F(OutputFolders, MayBeNamedWithASlashAtTheEnd) {
  OutputFolder output(target() + "/", {});
  output.publish();
  EXPECT_EQ(parent_.names(), std::vector<std::string>{"out"});
}

TEST_F(OutputFolders, KeepFilesOfOthers) {
  fs::create_directory(target());
  writeText(target() + "/part", "older");
  writeText(target() + "/notes.txt", "mine");
  EXPECT_EQ(errorOf(target()),
            "folder '" + target() +
                "' holds 'notes.txt', which is no part of this output: choose a new or empty "
                "folder");
  EXPECT_EQ(readText(target() + "/notes.txt"), "mine");
}

TEST_F(OutputFolders, NeedAPlace) {
  writeText(parent_.file("file"), "x");
  EXPECT_EQ(errorOf(parent_.file("file")),
            "'" + parent_.file("file") + "' is a file: name a new folder");
  EXPECT_EQ(errorOf(parent_.file("no/out")), "folder '" + parent_.file("no") + "' for '" +
                                                 parent_.file("no/out") +
                                                 "' does not exist: create it or choose another");
  EXPECT_EQ(errorOf("."), "'.' cannot be replaced: name a new folder");
}

TEST_F(OutputFolders, RemovedMeanwhileAreMadeAgain) {
  const std::string inside = parent_.file("a/out");
  fs::create_directory(parent_.file("a"));
  OutputFolder output(inside, {"part"});
  fs::remove_all(parent_.file("a"));
  writeText(output.place() / "part", "text");
  output.publish();
  EXPECT_EQ(readText(inside + "/part"), "text");
}

TEST_F(OutputFolders, RemovedAtTheEndAreNotPublished) {
  fs::create_directory(target());
  writeText(target() + "/part", "older");
  OutputFolder output(target(), {"part"});
  const fs::path place = output.place();
  fs::remove_all(place);
  fs::create_directory(place);
  EXPECT_EQ(toolErrorOf([&] { output.publish(); }),
            "'" + target() +
                "' could not be written (No such file or directory): free some space or choose "
                "another folder");
  EXPECT_EQ(readText(target() + "/part"), "older");
}

TEST_F(OutputFolders, FindAnOlderOneThatAKilledRunHadMovedAway) {
  const pid_t ended = ::fork();
  if (ended == 0) ::_exit(0);
  int status = 0;
  ::waitpid(ended, &status, 0);
  const std::string older = parent_.file(".out." + std::to_string(ended) + ".old");
  fs::create_directory(older);
  writeText(older + "/part", "older");
  { const OutputFolder output(target(), {"part"}); }
  EXPECT_EQ(readText(target() + "/part"), "older");
  EXPECT_EQ(parent_.names(), std::vector<std::string>{"out"});
}
