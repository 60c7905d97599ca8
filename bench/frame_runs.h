// SPDX-License-Identifier: Apache-2.0
/// \file
/// Runs of contenders over a capture, and what they cost.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "bench/captures.h"
#include "bench/contender.h"
#include "bench/resources.h"
#include "tools/framequilt/evaluation.h"

namespace framequilt::bench {

/// One frame after the first two.
struct Call {
  Spent spent;
  bool joined = false;
  bool grew = false;  ///< The mosaic became larger.
};

/// What one contender made of a capture.
struct Run {
  std::string key, name;
  int pass = 0;  ///< Runs of one pass took turns.
  Spent first;   ///< From opening to a mosaic of two frames.
  std::vector<Call> calls;
  tool::Evaluation evaluation;
  std::optional<std::int64_t> peakBytes;
  std::string failure;  ///< Why there is no result; empty when there is one.
};

/// Gives every frame to each of the contenders in turn, before the next frame comes; the one that
/// begins changes from frame to frame. What slows the machine for a while slows all of them.
std::vector<Run> takeTurns(const Capture& capture, const std::vector<Entry>& entries, int pass);

/// How much memory one contender takes for the capture, at most.
std::optional<std::int64_t> peakMemory(const Capture& capture, const Entry& entry);

/// OpenCV's stitcher, which takes all frames at once: `first` holds the whole time, `calls`
/// nothing.
Run runScans(const Capture& capture);

/// What stands in a table, in milliseconds; of joined frames after the first two.
struct Figures {
  double median = 0;
  double p95 = 0;
  double medianCpu = 0;
  double cpuPerWall = 0;
  std::optional<double> growth;  ///< Median of frames that made the mosaic grow, over the median.
  int growthFrames = 0;
};

/// None when no frame was joined after the first two.
std::optional<Figures> figuresOf(const Run& run);

}  // namespace framequilt::bench
