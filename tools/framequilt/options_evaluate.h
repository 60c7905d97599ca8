// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace framequilt::tool {

/// What the user asked of `framequilt evaluate`.
struct EvaluateOptions {
  std::string placements;
  std::string truth;
  bool json = false;
};

/// Adds the command to `app`; parsing then fills `options`, which has to outlive it.
CLI::App& addEvaluateCommand(CLI::App& app, EvaluateOptions& options);

}  // namespace framequilt::tool
