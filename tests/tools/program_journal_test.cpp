// SPDX-License-Identifier: Apache-2.0
// Runs of the program that are killed, and go on.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/inotify.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "journal_capture.h"
#include "program_run.h"
#include "tests/support/random_images.h"

namespace {

/// A process of the program that is killed, at the latest, with the object.
class Process {
 public:
  explicit Process(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), FRAMEQUILT_PROGRAM);
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t streams;
    posix_spawn_file_actions_init(&streams);
    posix_spawn_file_actions_addopen(&streams, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&streams, 2, "/dev/null", O_WRONLY, 0);
    const int failed =
        posix_spawn(&process_, pointers[0], &streams, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&streams);
    if (failed != 0) throw std::runtime_error("cannot run the program");
  }
  ~Process() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

 private:
  pid_t process_ = 0;
};

/// Wakes up when a file of a folder is written or closed.
class FolderWatch {
 public:
  explicit FolderWatch(const std::string& folder) : descriptor_(inotify_init1(IN_CLOEXEC)) {
    if (inotify_add_watch(descriptor_, folder.c_str(), IN_MODIFY | IN_CLOSE_WRITE) < 0) {
      throw std::runtime_error("cannot watch " + folder);
    }
  }
  ~FolderWatch() { close(descriptor_); }
  FolderWatch(const FolderWatch&) = delete;
  FolderWatch& operator=(const FolderWatch&) = delete;

  /// False once `file` was closed by who wrote it.
  bool waitForChange(const std::string& file) const {
    alignas(inotify_event) std::array<char, 4096> events{};
    const ssize_t size = read(descriptor_, events.data(), events.size());
    for (ssize_t at = 0; at < size;) {
      const auto* event = reinterpret_cast<const inotify_event*>(events.data() + at);
      if ((event->mask & IN_CLOSE_WRITE) != 0U && file == event->name) return false;
      at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
    }
    return true;
  }

 private:
  int descriptor_;
};

class ProgramJournal : public JournalCapture {
 protected:
  std::vector<std::string> command() const {
    return {
        "stitch",   pictures_.path(), "-o",        mosaic(),  "--placements",       placements(),
        "--report", report(),         "--journal", journal(), "--checkpoint-every", "2"};
  }

  /// Kills a run as soon as its journal has `size` bytes; how many lines it has then.
  std::size_t killedAt(std::size_t size) const {
    std::filesystem::remove_all(journal());
    std::filesystem::create_directory(journal());
    removeResults();
    const FolderWatch watch(journal());
    {
      const Process process(command());
      while (readText(journalFile()).size() < size && watch.waitForChange("journal.jsonl")) {
      }
    }
    return lines().size();
  }
};

}  // namespace

TEST_F(ProgramJournal, KilledAtAnyMomentAndResumedTheResultsAreTheSame) {
  ASSERT_EQ(framequiltRun(command()).status, 0);
  const std::string whole = results();
  const std::string all = readText(journalFile());
  const std::size_t header = lines().front().size();
  std::vector<std::size_t> moments;
  std::size_t size = 0;
  for (const std::string& line : lines()) moments.push_back(size += line.size());
  Random random(11);
  for (int i = 0; i < 4; ++i) {
    moments.push_back(static_cast<std::size_t>(
        random.between(static_cast<int>(header), static_cast<int>(all.size()))));
  }
  std::size_t broken = 0;
  for (const std::size_t moment : moments) {
    if (killedAt(moment) == 0) continue;
    broken += results().empty() ? 1 : 0;
    const ProgramRun resumed = framequiltRun({"resume", journal()});
    ASSERT_EQ(resumed.status, 0) << moment << ": " << resumed.err;
    EXPECT_EQ(results(), whole) << moment;
    EXPECT_EQ(readText(journalFile()), all) << moment;
  }
  EXPECT_GE(broken, moments.size() / 2);  // The others had written their results already.
}

TEST_F(ProgramJournal, AResumedRunThatIsKilledAsWellGoesOn) {
  ASSERT_EQ(framequiltRun(command()).status, 0);
  const std::string whole = results();
  const std::string all = readText(journalFile());
  const std::vector<std::string> written = lines();
  putJournal(written[0] + written[1] + written[2]);
  removeResults();
  {
    const FolderWatch watch(journal());
    const Process process({"resume", journal()});
    while (lines().size() < 5 && watch.waitForChange("journal.jsonl")) {
    }
  }
  EXPECT_GE(lines().size(), 5U);
  ASSERT_EQ(framequiltRun({"resume", journal()}).status, 0);
  EXPECT_EQ(results(), whole);
  EXPECT_EQ(readText(journalFile()), all);
}

TEST_F(ProgramJournal, AnotherProcessIsKeptOut) {
  ASSERT_EQ(framequiltRun(command()).status, 0);
  const int descriptor = open(journalFile().c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(flock(descriptor, LOCK_EX), 0);
  for (const char* verb : {"resume", "replay"}) {
    const ProgramRun result = framequiltRun({verb, journal()});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "framequilt: the journal of '" + journal() +
                              "' is in use by another framequilt: wait until that ends\n");
  }
  const ProgramRun result = framequiltRun(command());
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.err.find("is in use by another framequilt"), std::string::npos) << result.err;
  close(descriptor);
  EXPECT_EQ(framequiltRun({"replay", journal()}).status, 0);
}

TEST_F(ProgramJournal, AFullOutputFolderIsNoEnd) {
  ASSERT_EQ(framequiltRun(command()).status, 0);
  const std::string whole = results();
  removeResults();
  std::filesystem::remove_all(journal());
  // The shell limits every file of the program, as a full disk would: the journal fits, the mosaic
  // does not.
  std::vector<std::string> limited = {
      "/bin/sh", "-c", "trap '' XFSZ; ulimit -f 32; exec \"$0\" \"$@\"", FRAMEQUILT_PROGRAM};
  for (const std::string& argument : command()) limited.push_back(argument);
  limited.back() = "0";
  const ProgramRun full = run(limited);
  EXPECT_EQ(full.status, 2);
  EXPECT_NE(full.err.find("framequilt: '" + mosaic() +
                          "' could not be written (File too large): free some space or choose "
                          "another folder\n"),
            std::string::npos)
      << full.err;
  EXPECT_NE(full.err.find("framequilt: the journal of '" + journal() +
                          "' is kept: go on with it by 'framequilt resume' to have what is "
                          "missing\n"),
            std::string::npos)
      << full.err;
  EXPECT_FALSE(std::filesystem::exists(mosaic()));
  for (const std::string& name : work_.names()) EXPECT_NE(name.front(), '.') << name;
  ASSERT_EQ(framequiltRun({"resume", journal(), "--quiet"}).status, 0);
  EXPECT_EQ(results(), whole);
}

TEST_F(ProgramJournal, StatusTellsWhetherAReplayIsTheSame) {
  ASSERT_EQ(framequiltRun(command()).status, 0);
  EXPECT_EQ(framequiltRun({"replay", journal()}).status, 0);
  save(picture("f9.png"), texture(kRows, kCols, 3));
  const ProgramRun differs = framequiltRun({"replay", journal()});
  EXPECT_EQ(differs.status, 1);
  EXPECT_NE(differs.out.find("first difference: frame 9 'f9.png': its file has changed since"),
            std::string::npos)
      << differs.out;
  const ProgramRun none = framequiltRun({"replay", pictures_.path()});
  EXPECT_EQ(none.status, 2);
  EXPECT_EQ(none.err, "framequilt: folder '" + pictures_.path() +
                          "' holds no journal: give the one that 'framequilt stitch --journal' "
                          "made\n");
}

TEST_F(ProgramJournal, ThePathsMeanTheSameInAnotherFolder) {
  const std::string relative =
      "cd \"$1\" && exec \"$0\" stitch ../\"$2\" -o mosaic.png --placements placements.csv "
      "--report "
      "report.json --journal j";
  const std::string inputs = std::filesystem::path(pictures_.path()).filename().string();
  ASSERT_EQ(run({"/bin/sh", "-c", relative, FRAMEQUILT_PROGRAM, work_.path(), inputs}).status, 0);
  const std::string whole = results();
  ASSERT_NE(whole, "");
  removeResults();
  const std::vector<std::string> written = lines();
  writeText(journalFile(), written[0] + written[1]);
  ASSERT_EQ(framequiltRun({"resume", journal()}).status, 0);
  EXPECT_EQ(results(), whole);
}
