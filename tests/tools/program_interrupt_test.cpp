// SPDX-License-Identifier: Apache-2.0
// What Ctrl-C does to a run: signals are sent once the program says that it has joined a frame.
#include <gtest/gtest.h>
#include <signal.h>

#include <cstdio>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "program_run.h"
#include "scenes.h"
#include "temporary_folder.h"

namespace {

/// A verbose run over 2000 frames, far more than it gets to see; its standard error is read while
/// it works.
class LongRun {
 public:
  LongRun(const TemporaryFolder& pictures, const std::string& mosaic) {
    const cv::Mat scene = texture(300, 560);
    save(pictures.file("a.png"), scene(cv::Rect(0, 0, 400, 300)));
    save(pictures.file("b.png"), scene(cv::Rect(160, 0, 400, 300)));
    std::vector<std::string> command = {FRAMEQUILT_PROGRAM, "stitch", "-o", mosaic, "--verbose"};
    for (int i = 0; i < 1000; ++i) {
      command.push_back(pictures.file("a.png"));
      command.push_back(pictures.file("b.png"));
    }
    start(std::move(command));
  }
  ~LongRun() {
    if (process_ != 0) kill(process_, SIGKILL);
    if (notes_ != nullptr) std::fclose(notes_);
  }
  LongRun(const LongRun&) = delete;
  LongRun& operator=(const LongRun&) = delete;

  void awaitJoined() { readUntil(": joined at "); }

  void send(int signal) const { kill(process_, signal); }

  /// Reads the notes to their end; how `waitpid` tells the end.
  int finish() {
    readUntil(nullptr);
    int status = 0;
    waitpid(process_, &status, 0);
    process_ = 0;
    return status;
  }

  const std::string& notes() const { return read_; }

 private:
  void start(std::vector<std::string> command) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    notes_ = fdopen(ends[0], "r");
    std::vector<char*> arguments;
    for (std::string& argument : command) arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t streams;
    posix_spawn_file_actions_init(&streams);
    posix_spawn_file_actions_addopen(&streams, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&streams, ends[1], 2);
    const int failed =
        posix_spawn(&process_, arguments[0], &streams, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&streams);
    close(ends[1]);
    if (failed != 0) throw std::runtime_error("cannot run " + command.front());
  }

  void readUntil(const char* text) {
    char line[4096];
    while (std::fgets(line, sizeof line, notes_) != nullptr) {
      read_ += line;
      if (text != nullptr && std::string(line).find(text) != std::string::npos) return;
    }
  }

  pid_t process_ = 0;
  FILE* notes_ = nullptr;
  std::string read_;
};

class ProgramSignal : public testing::Test {
 protected:
  std::string mosaic() const { return outputs_.file("mosaic.png"); }

  TemporaryFolder pictures_, outputs_;
};

class ProgramInterrupt : public ProgramSignal, public testing::WithParamInterface<int> {};

}  // namespace

TEST_P(ProgramInterrupt, TheMosaicSoFarIsWritten) {
  LongRun run(pictures_, mosaic());
  run.awaitJoined();
  run.send(GetParam());
  const int status = run.finish();
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  EXPECT_NE(run.notes().find("\nframequilt: interrupted after "), std::string::npos);
  EXPECT_NE(run.notes().find(" frames: the mosaic so far is kept\n"), std::string::npos);
  EXPECT_EQ(cv::imread(mosaic(), cv::IMREAD_UNCHANGED).size(), cv::Size(560, 300));
  EXPECT_EQ(outputs_.names(), std::vector<std::string>{"mosaic.png"});
}

INSTANTIATE_TEST_SUITE_P(Signals, ProgramInterrupt, testing::Values(SIGINT, SIGTERM, SIGHUP));

TEST_F(ProgramSignal, KillLeavesAnOlderMosaic) {
  writeText(mosaic(), "older");
  LongRun run(pictures_, mosaic());
  run.awaitJoined();
  run.send(SIGKILL);
  EXPECT_TRUE(WIFSIGNALED(run.finish()));
  EXPECT_EQ(readText(mosaic()), "older");
}
