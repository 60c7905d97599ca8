// SPDX-License-Identifier: Apache-2.0
#include <signal.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <new>
#include <opencv2/core.hpp>
#include <opencv2/core/utils/logger.hpp>

#include "tools/framequilt/evaluate_command.h"
#include "tools/framequilt/info_command.h"
#include "tools/framequilt/options_evaluate.h"
#include "tools/framequilt/options_journal.h"
#include "tools/framequilt/options_simulate.h"
#include "tools/framequilt/options_stitch.h"
#include "tools/framequilt/replay_command.h"
#include "tools/framequilt/resume_command.h"
#include "tools/framequilt/simulate_command.h"
#include "tools/framequilt/stitch_command.h"
#include "tools/framequilt/tool_error.h"

namespace {

using namespace framequilt::tool;

/// Reports on standard error in one line.
ExitStatus complain(const char* what) {
  std::cerr << "framequilt: " << what << "\n";
  return kBadInput;
}

/// What a command reported has to reach its reader, too.
ExitStatus delivered(ExitStatus status) {
  std::cout.flush();
  return std::cout ? status : complain("standard output cannot be written");
}

ExitStatus printInfo() {
  std::cout << infoText();
  return delivered(kDone);
}

ExitStatus runProgram(int argc, char** argv) {
  CLI::App app("Stitches the frames of a moving camera into one mosaic.", "framequilt");
  app.set_version_flag("--version", "framequilt " FRAMEQUILT_VERSION);
  app.require_subcommand(1);
  StitchOptions stitchOptions;
  ResumeOptions resumeOptions;
  ReplayOptions replayOptions;
  SimulateOptions simulateOptions;
  EvaluateOptions evaluateOptions;
  addStitchCommand(app, stitchOptions);
  const CLI::App& resumeCommand = addResumeCommand(app, resumeOptions);
  const CLI::App& replayCommand = addReplayCommand(app, replayOptions);
  const CLI::App& simulateCommand = addSimulateCommand(app, simulateOptions);
  const CLI::App& evaluateCommand = addEvaluateCommand(app, evaluateOptions);
  const CLI::App& infoCommand =
      *app.add_subcommand("info", "Tell version, build and backends, and why one is not used");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& outcome) {
    return app.exit(outcome) == 0 ? kDone : kBadInput;  // 0: --help or --version.
  }
  if (simulateCommand.parsed()) return delivered(simulate(simulateOptions, std::cout));
  if (evaluateCommand.parsed()) return delivered(evaluate(evaluateOptions, std::cout));
  if (infoCommand.parsed()) return printInfo();
  const Streams streams{std::cout, std::cerr, ::isatty(STDERR_FILENO) == 1};
  if (resumeCommand.parsed()) return delivered(resume(resumeOptions, streams));
  if (replayCommand.parsed()) return delivered(replay(replayOptions, streams));
  return delivered(stitch(stitchOptions, streams));
}

}  // namespace

int main(int argc, char** argv) {
  // A reader that went away and a limit of sizes (ulimit -f) are errors of writing, which have
  // their own words; a signal would end a run in the middle of its outputs.
  ::signal(SIGPIPE, SIG_IGN);
  ::signal(SIGXFSZ, SIG_IGN);
  try {
    // Pictures that cannot be read are reported here, in one line and with the remedy.
    cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
    return runProgram(argc, argv);
  } catch (const std::bad_alloc&) {
    return complain("out of memory: use --scale 2 or smaller pictures");
  } catch (const cv::Exception& failure) {
    return complain(failure.err.c_str());
  } catch (const std::exception& failure) {
    return complain(failure.what());
  }
}
