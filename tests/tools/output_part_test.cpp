// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/output_part.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "temporary_folder.h"

namespace {

namespace fs = std::filesystem;
using framequilt::tool::removeLeftover;
using framequilt::tool::removeLeftovers;
using framequilt::tool::targetNameOf;
using Names = std::vector<std::string>;

/// The number of a process that runs no more.
pid_t endedProcess() {
  const pid_t process = ::fork();
  if (process == 0) ::_exit(0);
  int status = 0;
  ::waitpid(process, &status, 0);
  return process;
}

class Leftovers : public testing::Test {
 protected:
  std::string target() const { return folder_.file("out.bin"); }
  std::string part(const std::string& process) const {
    return folder_.file(".out.bin." + process + ".part");
  }
  std::string ended() const { return std::to_string(ended_); }

  pid_t ended_ = endedProcess();
  TemporaryFolder folder_;
};

}  // namespace

TEST_F(Leftovers, OfProcessesThatRunNoMoreGo) {
  writeText(target(), "older");
  writeText(part(ended()), "half");
  removeLeftovers(target());
  EXPECT_EQ(folder_.names(), Names{"out.bin"});
  EXPECT_EQ(readText(target()), "older");
}

TEST_F(Leftovers, OfProcessesThatRunStay) {
  writeText(part(std::to_string(::getpid())), "mine");
  writeText(part(std::to_string(::getppid())), "another's");
  const Names before = folder_.names();
  removeLeftovers(target());
  EXPECT_EQ(folder_.names(), before);
}

/// Processes of other machines and containers are not seen here, but their locks are.
TEST_F(Leftovers, ThatSomebodyHoldsStay) {
  writeText(part(ended()), "half");
  const int holder = ::open(part(ended()).c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(::flock(holder, LOCK_EX), 0);
  removeLeftovers(target());
  EXPECT_TRUE(fs::exists(part(ended())));
  ::close(holder);
  removeLeftovers(target());
  EXPECT_FALSE(fs::exists(part(ended())));
}

TEST_F(Leftovers, OtherNamesStay) {
  const Names others = {".other.bin." + ended() + ".part",
                        ".out.bin.0" + ended() + ".part",
                        ".out.bin." + ended() + "x.part",
                        ".out.bin." + ended() + ".parts",
                        ".out.bin..part",
                        ".out.bin.-" + ended() + ".part",
                        ".out.bin.part",
                        "out.bin." + ended() + ".part",
                        ".out.bin.99999999999999999999.part",
                        ".out.bin.x." + ended() + ".part"};
  for (const std::string& name : others) {
    writeText(folder_.file(name), "x");
  }
  const Names before = folder_.names();
  removeLeftovers(target());
  EXPECT_EQ(folder_.names(), before);
}

TEST_F(Leftovers, LinksStayAndSoDoesWhatTheyPointTo) {
  writeText(folder_.file("elsewhere"), "x");
  fs::create_symlink(folder_.file("elsewhere"), part(ended()));
  removeLeftovers(target());
  EXPECT_TRUE(fs::is_symlink(part(ended())));
  EXPECT_EQ(readText(folder_.file("elsewhere")), "x");
}

TEST_F(Leftovers, FoldersGoWithAllTheyHold) {
  fs::create_directories(part(ended()) + "/tiles");
  writeText(part(ended()) + "/tiles/0.jpg", "x");
  removeLeftovers(target());
  EXPECT_EQ(folder_.names(), Names{});
}

TEST_F(Leftovers, AnOlderFolderComesBackWhereTheNewOneNeverCame) {
  const std::string older = folder_.file(".out.bin." + ended() + ".old");
  fs::create_directory(older);
  writeText(older + "/content", "older");
  removeLeftovers(target());
  EXPECT_EQ(readText(target() + "/content"), "older");
  EXPECT_EQ(folder_.names(), Names{"out.bin"});
}

TEST_F(Leftovers, AnOlderFolderGoesWhereTheNewOneCame) {
  const std::string older = folder_.file(".out.bin." + ended() + ".old");
  fs::create_directory(older);
  fs::create_directory(target());
  writeText(target() + "/content", "newer");
  removeLeftovers(target());
  EXPECT_EQ(readText(target() + "/content"), "newer");
  EXPECT_EQ(folder_.names(), Names{"out.bin"});
}

TEST_F(Leftovers, OfOneNameAlone) {
  writeText(part(ended()), "half");
  writeText(target(), "whole");
  EXPECT_TRUE(removeLeftover(part(ended())));
  EXPECT_FALSE(removeLeftover(part(ended())));
  EXPECT_FALSE(removeLeftover(target()));
  EXPECT_EQ(folder_.names(), Names{"out.bin"});
}

TEST_F(Leftovers, AreNamedAfterTheirTarget) {
  EXPECT_EQ(targetNameOf(".out.bin.17.part"), "out.bin");
  EXPECT_EQ(targetNameOf(".17.part"), "");
  EXPECT_EQ(targetNameOf("out.bin"), "");
  EXPECT_EQ(targetNameOf(""), "");
}

TEST_F(Leftovers, AMissingFolderHasNone) {
  removeLeftovers(folder_.file("no/out.bin"));
  EXPECT_EQ(folder_.names(), Names{});
}

TEST_F(Leftovers, APartOfTheSameNumberIsReplaced) {
  const std::string own = framequilt::tool::partOf(target());
  writeText(own, "of a process of this number that was killed");
  const int descriptor = framequilt::tool::createPartFile(own);
  ASSERT_GE(descriptor, 0);
  EXPECT_EQ(readText(own), "");
  // Held from now on, as by a process of this number in another container.
  EXPECT_EQ(framequilt::tool::createPartFile(own), -1);
  EXPECT_EQ(errno, EEXIST);
  ::close(descriptor);
}
