// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/options_evaluate.h"

namespace framequilt::tool {

CLI::App& addEvaluateCommand(CLI::App& app, EvaluateOptions& options) {
  CLI::App& command =
      *app.add_subcommand("evaluate", "Compare placements with where the frames were taken");
  command
      .add_option("placements", options.placements,
                  "What stitch --placements wrote: frame,file,x,y,joined")
      ->required()
      ->type_name("PLACEMENTS.csv");
  command
      .add_option("truth", options.truth,
                  "Where each frame's top-left corner was, in pixels from any origin: frame,x,y")
      ->required()
      ->type_name("TRUTH.csv");
  command.add_flag("--json", options.json, "Print one JSON object");
  return command;
}

}  // namespace framequilt::tool
