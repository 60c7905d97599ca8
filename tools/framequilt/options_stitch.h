// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace framequilt::tool {

/// What the user asked of `framequilt stitch`.
struct StitchOptions {
  std::vector<std::string> inputs;
  std::string output;
  int every = 1;           ///< Takes each Nth frame.
  std::string placements;  ///< Empty: none wanted.
  std::string mode = "motion";
  bool dynamicScene = false;
  int scale = 1;
  int cornerBudget = 1;
  int maxRows = 20000;
  int maxCols = 20000;
  bool verbose = false;
};

/// Adds the command to `app`; parsing then fills `options`, which has to outlive it.
CLI::App& addStitchCommand(CLI::App& app, StitchOptions& options);

}  // namespace framequilt::tool
