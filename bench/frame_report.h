// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core/types.hpp>
#include <string>
#include <vector>

#include "bench/frame_runs.h"

namespace framequilt::bench {

/// Everything measured with frames of one size.
struct SizeResults {
  cv::Size frame;
  int frames = 0;
  /// Runs that took turns, the library's own first. The first pass is what others are held against.
  std::vector<std::vector<Run>> passes;
  std::vector<Run> wholeCaptures;  ///< Of contenders that take all frames at once.
};

/// How it was measured.
struct Conditions {
  std::string processor;
  int processors = 0;  ///< That programs may use.
  int opencvThreads = 0;
  std::string compiler;
};

/// The conditions in a sentence and a table for each size, in Markdown.
std::string markdownOf(const Conditions& conditions, const std::vector<SizeResults>& results);

std::string jsonOf(const Conditions& conditions, const std::vector<SizeResults>& results);

}  // namespace framequilt::bench
