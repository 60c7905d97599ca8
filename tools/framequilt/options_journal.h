// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace framequilt::tool {

/// What the user asked of `framequilt resume`.
struct ResumeOptions {
  std::string journal;  ///< Folder.
  std::string inputs;   ///< Folder; empty: they lie where they lay. So with `replay`.
  bool quiet = false;
  bool verbose = false;
};

/// What the user asked of `framequilt replay`.
struct ReplayOptions {
  std::string journal;
  std::string inputs;
  std::string backend = "recorded";
  bool verbose = false;
};

/// Adds the commands to `app`; parsing then fills `options`, which have to outlive it.
CLI::App& addResumeCommand(CLI::App& app, ResumeOptions& options);
CLI::App& addReplayCommand(CLI::App& app, ReplayOptions& options);

}  // namespace framequilt::tool
