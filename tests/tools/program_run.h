// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "temporary_folder.h"

/// What a program that ran to its end left behind.
struct ProgramRun {
  int status;  ///< -1 when a signal ended it.
  std::string out;
  std::string err;
};

/// Runs `command`, a program by its path and its arguments, without a shell.
inline ProgramRun run(std::vector<std::string> command) {
  const TemporaryFolder folder;
  const std::string out = folder.file("out");
  const std::string err = folder.file("err");
  std::vector<char*> arguments;
  for (std::string& argument : command) arguments.push_back(argument.data());
  arguments.push_back(nullptr);

  posix_spawn_file_actions_t streams;
  posix_spawn_file_actions_init(&streams);
  posix_spawn_file_actions_addopen(&streams, 1, out.c_str(), O_WRONLY | O_CREAT, 0600);
  posix_spawn_file_actions_addopen(&streams, 2, err.c_str(), O_WRONLY | O_CREAT, 0600);
  pid_t process = 0;
  const int failed =
      posix_spawn(&process, arguments[0], &streams, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&streams);
  if (failed != 0) throw std::runtime_error("cannot run " + command.front());
  int status = 0;
  if (waitpid(process, &status, 0) != process) throw std::runtime_error("cannot wait");
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readText(out), readText(err)};
}

/// Runs framequilt with these arguments.
inline ProgramRun framequiltRun(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), FRAMEQUILT_PROGRAM);
  return run(std::move(arguments));
}
