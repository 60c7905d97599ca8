// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "tools/framequilt/journal_file.h"
#include "tools/framequilt/run_header.h"

namespace framequilt::tool {

/// What a journal holds of a run.
class RecordedRun {
 public:
  /// \throws ToolError for lines of another form.
  explicit RecordedRun(const JournalFile& journal);

  const RunHeader& header() const { return header_; }

  /// Frames on which a decision was recorded.
  std::size_t frames() const { return frames_.size(); }
  /// The record of one, counted from 0.
  nlohmann::ordered_json frame(std::size_t index) const;

  /// The mosaic after so many frames, as `mosaicRecord` tells it, where it was recorded.
  const nlohmann::ordered_json* mosaicAfter(std::size_t frames) const;
  std::size_t checkpoints() const { return mosaics_.size(); }

  /// Whether its results were written, and nothing was left to stitch.
  bool isFinished() const { return finished_; }

 private:
  void add(const std::string& line);

  RunHeader header_;
  std::vector<std::string> frames_;  // As text, which takes less memory.
  std::map<std::size_t, nlohmann::ordered_json> mosaics_;
  bool finished_ = false;
};

/// How a run ended: what `stitch` writes as the last line.
enum class RunEnd { kComplete, kFull, kInterrupted, kBrokenOff };

/// A line for the mosaic after so many frames; with `end` the last of the run.
std::string checkpointText(std::size_t frames, const nlohmann::ordered_json& mosaic,
                           std::optional<RunEnd> end);

}  // namespace framequilt::tool
