// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "tools/framequilt/simulation.h"

namespace framequilt::tool {

/// What the user asked of `framequilt simulate`.
struct SimulateOptions {
  std::string scene;  ///< Empty: a generated one.
  std::string folder;
  SimulationOptions capture;
};

/// Adds the command to `app`; parsing then fills `options`, which has to outlive it.
CLI::App& addSimulateCommand(CLI::App& app, SimulateOptions& options);

}  // namespace framequilt::tool
