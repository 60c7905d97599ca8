// SPDX-License-Identifier: Apache-2.0
/// \file
/// What a process holds in the course of a soak, and whether that grew.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "bench/resources.h"

namespace framequilt::bench {

/// One look at the process.
struct Sample {
  std::int64_t done = 0;  ///< Frames or cycles.
  Holdings holdings;
  std::int64_t mosaicBytes = 0;  ///< Of the open session.
};

/// By how much the resident memory beside the mosaic grew over the samples, on the straight line
/// that fits them best.
double fittedGrowth(const std::vector<Sample>& samples);

/// The samples after the first quarter of the work, in which all is reached that is reused later.
std::vector<Sample> afterWarmUp(const std::vector<Sample>& samples);

/// A line for each thing that grew after the first quarter; none where all is flat.
/// \param allowedBytes  By which the resident memory beside the mosaic may grow.
std::vector<std::string> whatGrew(const std::vector<Sample>& samples, std::int64_t allowedBytes);

}  // namespace framequilt::bench
