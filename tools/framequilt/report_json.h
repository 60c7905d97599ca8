// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <opencv2/core/types.hpp>
#include <string>
#include <string_view>

#include "tools/framequilt/options_stitch.h"
#include "tools/framequilt/stitch_log.h"

namespace framequilt::tool {

/// What a report tells beside the frames.
struct RunFacts {
  std::string_view backend;
  int scale = 1;
  cv::Size mosaic;          ///< Of the picture written; empty when there was none.
  cv::Point firstInMosaic;  ///< Where placement (0, 0) lies in it, in mosaic pixels.
  std::size_t leftOut = 0;  ///< Pictures that could not be used.
  std::size_t dropped = 0;  ///< Frames of a camera that came too fast.
  bool full = false;
  bool interrupted = false;
  cv::Size frame;  ///< Of each frame, in its pixels.
};

/// The run as one JSON object: options, counts, and for every frame what was measured and decided,
/// each value beside its limit. docs/command-line.md describes the fields.
std::string reportJson(const StitchOptions& options, const RunFacts& facts, const StitchLog& log);

}  // namespace framequilt::tool
