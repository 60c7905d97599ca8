// SPDX-License-Identifier: Apache-2.0
#include "bench/soak_samples.h"

#include <algorithm>
#include <cstddef>

namespace framequilt::bench {
namespace {

double besideMosaic(const Sample& sample) {
  return static_cast<double>(sample.holdings.residentBytes - sample.mosaicBytes);
}

void addIfCountsDiffer(const std::vector<Sample>& samples, int Holdings::*count, const char* name,
                       std::vector<std::string>& grown) {
  const auto [fewest, most] = std::minmax_element(
      samples.begin(), samples.end(),
      [&](const Sample& a, const Sample& b) { return a.holdings.*count < b.holdings.*count; });
  if (fewest->holdings.*count == most->holdings.*count) return;
  grown.push_back(std::string(name) + " between " + std::to_string(fewest->holdings.*count) +
                  " and " + std::to_string(most->holdings.*count));
}

}  // namespace

double fittedGrowth(const std::vector<Sample>& samples) {
  const auto count = static_cast<double>(samples.size());
  double meanDone = 0;
  double meanBytes = 0;
  for (const Sample& sample : samples) {
    meanDone += static_cast<double>(sample.done) / count;
    meanBytes += besideMosaic(sample) / count;
  }
  double together = 0;
  double squares = 0;
  for (const Sample& sample : samples) {
    const double done = static_cast<double>(sample.done) - meanDone;
    together += done * (besideMosaic(sample) - meanBytes);
    squares += done * done;
  }
  if (squares == 0) return 0;
  return together / squares * static_cast<double>(samples.back().done - samples.front().done);
}

std::vector<Sample> afterWarmUp(const std::vector<Sample>& samples) {
  std::vector<Sample> rest;
  for (const Sample& sample : samples) {
    if (4 * sample.done >= samples.back().done) rest.push_back(sample);
  }
  return rest;
}

std::vector<std::string> whatGrew(const std::vector<Sample>& samples, std::int64_t allowedBytes) {
  std::vector<std::string> grown;
  const std::vector<Sample> rest = afterWarmUp(samples);
  const double bytes = fittedGrowth(rest);
  if (bytes > static_cast<double>(allowedBytes)) {
    grown.push_back("resident memory by " +
                    std::to_string(static_cast<std::int64_t>(bytes) / 1024) + " KiB");
  }
  addIfCountsDiffer(rest, &Holdings::threads, "threads", grown);
  addIfCountsDiffer(rest, &Holdings::files, "file descriptors", grown);
  return grown;
}

}  // namespace framequilt::bench
