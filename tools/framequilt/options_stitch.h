// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <framequilt/session.h>

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

namespace framequilt::tool {

/// What the user asked of `framequilt stitch`.
struct StitchOptions {
  std::vector<std::string> inputs;
  std::string output;
  std::string placements;  ///< Empty: none wanted; "-": standard output. So with `report`.
  std::string report;
  std::string hints;  ///< Empty: none known.
  bool outlines = false;
  std::string omeTiff;  ///< Empty: not wanted. So with the two below.
  std::string pyramid;  ///< Folder.
  std::string reportHtml;
  std::optional<double> pixelSize;  ///< Of a frame, in micrometres.
  std::string mode = "motion";
  bool dynamicScene = false;
  std::string backend = "auto";
  int scale = kAutoScale;
  int cornerBudget = SessionOptions().cornerBudget;
  int maxRows = SessionOptions().maxRows;
  int maxCols = SessionOptions().maxCols;
  int every = 1;
  std::string crop = "box";
  std::string journal;        ///< Folder; empty: none is kept.
  int checkpointEvery = 100;  ///< Frames; 0: none.
  bool quiet = false;
  bool verbose = false;

  /// A result other than the summary goes to standard output.
  bool writesToStandardOutput() const { return placements == "-" || report == "-"; }
};

/// Adds the command to `app`; parsing then fills `options`, which has to outlive it.
CLI::App& addStitchCommand(CLI::App& app, StitchOptions& options);

}  // namespace framequilt::tool
