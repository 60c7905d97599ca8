// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/options_journal.h"

namespace framequilt::tool {
namespace {

void addFolders(CLI::App& command, std::string& journal, std::string& inputs) {
  command.add_option("journal", journal, "The folder that 'framequilt stitch --journal' made")
      ->required()
      ->type_name("DIR");
  command
      .add_option("--inputs", inputs,
                  "The folder that holds the run's pictures or its video now, if they were moved")
      ->type_name("DIR");
}

}  // namespace

CLI::App& addResumeCommand(CLI::App& app, ResumeOptions& options) {
  CLI::App& command = *app.add_subcommand("resume", "Go on with a run that broke off");
  addFolders(command, options.journal, options.inputs);
  CLI::Option* quiet = command.add_flag("--quiet", options.quiet,
                                        "Neither progress nor summary; only what is amiss");
  command
      .add_flag("--verbose", options.verbose,
                "Tell about each frame, and show the engine's own lines, on standard error")
      ->excludes(quiet);
  command.footer(
      "The recorded frames are stitched again and have to come out as before; then the run goes "
      "on\nand writes its results as if it had never stopped. Exit status: as of 'stitch'.");
  return command;
}

CLI::App& addReplayCommand(CLI::App& app, ReplayOptions& options) {
  CLI::App& command =
      *app.add_subcommand("replay", "Stitch a journal's frames again and compare the results");
  addFolders(command, options.journal, options.inputs);
  command
      .add_option("--backend", options.backend,
                  "Work on a GPU (opencl), the processor (host), or what the run worked on")
      ->check(CLI::IsMember({"recorded", "opencl", "host"}))
      ->capture_default_str();
  command.add_flag("--verbose", options.verbose,
                   "Tell about each frame, and show the engine's own lines, on standard error");
  command.footer(
      "Exit status: 0 when every record and the mosaic are the same, 1 when something differs, 2 "
      "for\na journal or frames that cannot be used.");
  return command;
}

}  // namespace framequilt::tool
