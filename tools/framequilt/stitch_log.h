// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <opencv2/core/types.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/framequilt/run_driver.h"

namespace framequilt::tool {

/// In words for a summary; a first frame that was given up is refused without a reason of its own.
std::string_view text(Refusal reason);

/// What became of each frame of a capture.
class StitchLog {
 public:
  struct Entry {
    std::filesystem::path picture;
    bool joined = false;
    Refusal reason = Refusal::kNone;
    cv::Point placement{};
    std::optional<double> milliseconds;  ///< Of the engine; none for a frame it was not given yet.
  };

  /// Adds the next frame. The first frame counts as joined once another has joined it.
  void add(const std::filesystem::path& picture, const Outcome& outcome, double milliseconds);

  const std::vector<Entry>& entries() const { return entries_; }
  int joined() const;

  /// Lines "frame,file,x,y,joined" below a heading; frames are counted from 1, a refused frame has
  /// neither x nor y.
  std::string placementsCsv() const;

  /// Frames read, joined and refused, each refused one by name and reason.
  std::string countsText() const;

  /// Median and 95th percentile (nearest rank) of the engine's time; "-" without any.
  std::string timesText() const;

 private:
  std::vector<Entry> entries_;
  std::size_t first_ = 0;  // Of the frames that may be placed.
};

}  // namespace framequilt::tool
