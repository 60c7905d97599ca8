// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <framequilt/session.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace framequilt::tool {

/// What became of each frame of a capture.
class StitchLog {
 public:
  struct Entry {
    std::size_t number;  ///< In the capture, from 1; counts pictures that were left out too.
    std::string name;
    FrameResult result;
    bool joined = false;    ///< In the mosaic; a first frame is, once another has joined it.
    cv::Point placement{};  ///< In frame pixels, of a joined frame.
    std::optional<double> milliseconds;  ///< Of a frame that the engine was given.
  };

  /// Adds the next frame.
  void add(std::size_t number, const std::string& name, const FrameResult& result,
           double milliseconds);

  const std::vector<Entry>& entries() const { return entries_; }
  std::size_t joined() const { return joined_; }
  std::size_t refused() const { return entries_.size() - joined(); }
  /// Whether a first frame still waits for one that joins it; it counts as refused so far.
  bool firstWaits() const { return !entries_.empty() && !entries_[first_].joined; }

  /// Lines "frame,file,x,y,joined" below a heading; a refused frame has neither x nor y.
  std::string placementsCsv() const;

  /// Frames read, joined and refused, the refused ones by reason with the first of their names.
  std::string countsText() const;

  /// Median and 95th percentile (nearest rank) of the engine's time; "-" without any.
  std::string timesText() const;

 private:
  void markJoined(Entry& entry);

  std::vector<Entry> entries_;
  std::size_t joined_ = 0;
  std::size_t first_ = 0;  // Of the frames that may be placed.
};

/// Said of a frame that took the place of a first one, in front of its name.
constexpr const char* kStartedAgain = "three frames did not fit the first one: starting again from";
/// Said in place of a mosaic.
constexpr const char* kNoMosaic =
    "no mosaic written: nothing could be joined; each frame should share about half with the one "
    "before";

/// Why the frame is not in the mosaic, in a few words; a first frame that nothing joined has no
/// reason of its own.
std::string reasonText(const StitchLog::Entry& entry);

/// What became of the frame when it was handed over: "joined at (30, 4), 50 matches".
std::string outcomeText(const FrameResult& result);

}  // namespace framequilt::tool
