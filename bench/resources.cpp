// SPDX-License-Identifier: Apache-2.0
#include "bench/resources.h"

#include <malloc.h>
#include <time.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <opencv2/core/ocl.hpp>
#include <stdexcept>

namespace framequilt::bench {
namespace {

double milliseconds(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return 1e3 * static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_nsec);
}

/// What follows "KEY:" and blanks in a file of such lines; empty when there is no such line.
std::string valueOf(const std::string& key, const char* file) {
  std::ifstream lines(file);
  for (std::string line; std::getline(lines, line);) {
    if (line.compare(0, key.size(), key) != 0) continue;
    const std::size_t value = line.find_first_not_of(" \t:", key.size());
    return value == std::string::npos ? "" : line.substr(value);
  }
  return "";
}

/// A line of the process's status, which is in KiB.
std::optional<std::int64_t> statusBytes(const char* key) {
  const std::string value = valueOf(key, "/proc/self/status");
  if (value.empty()) return std::nullopt;
  return 1024 * std::stoll(value);
}

/// From here on the peak is that of the pages in use now.
bool resetPeak() {
  std::ofstream file("/proc/self/clear_refs");
  file << "5" << std::flush;
  return file.good();
}

int entriesOf(const char* folder) {
  const std::filesystem::directory_iterator all(folder);
  return static_cast<int>(std::distance(begin(all), end(all)));
}

}  // namespace

Spent Stopwatch::now() {
  return {milliseconds(CLOCK_MONOTONIC), milliseconds(CLOCK_PROCESS_CPUTIME_ID)};
}

Spent Stopwatch::spent() const {
  const Spent end = now();
  return {end.wall - start_.wall, end.cpu - start_.cpu};
}

PeakMemory::PeakMemory() {
  malloc_trim(0);  // Pages that others left would hide what is taken anew.
  if (resetPeak()) atStart_ = statusBytes("VmRSS");
}

std::optional<std::int64_t> PeakMemory::bytes() const {
  const std::optional<std::int64_t> peak = statusBytes("VmHWM");
  if (!peak || !atStart_) return std::nullopt;
  return *peak - *atStart_;
}

Holdings holdings() {
  const std::optional<std::int64_t> resident = statusBytes("VmRSS");
  if (!resident) throw std::runtime_error("/proc does not tell the resident memory");
  // One descriptor is that of the folder itself.
  return {*resident, entriesOf("/proc/self/task"), entriesOf("/proc/self/fd") - 1};
}

void useHostAlone() {
  setenv("OCL_ICD_VENDORS", "/nowhere", /*overwrite=*/1);
  cv::ocl::setUseOpenCL(false);
}

std::string processorName() {
  const std::string name = valueOf("model name", "/proc/cpuinfo");
  return name.empty() ? "unknown" : name;
}

}  // namespace framequilt::bench
