// SPDX-License-Identifier: Apache-2.0
/// \file
/// Times the library frame by frame beside other ways to do the same with OpenCV, in one process,
/// on simulated captures: tables in Markdown on standard output, everything else as JSON.
///
///     frame_bench [--sizes WIDTHxHEIGHT ...] [--frames N] [--threads N] [--json FILE]
#include <sched.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <fstream>
#include <opencv2/core.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/captures.h"
#include "bench/frame_report.h"
#include "bench/frame_runs.h"
#include "bench/guarded_main.h"
#include "bench/our_contenders.h"
#include "bench/peers/orb_peer.h"
#include "bench/peers/phase_peer.h"
#include "bench/resources.h"
#include "tools/framequilt/engine_lines.h"

namespace {

using namespace framequilt::bench;

struct Wishes {
  std::vector<std::string> sizes = {"640x480", "1280x960", "1920x1080", "3840x2160"};
  int frames = 20;
  int threads = 2;
  int largestScansPixels = 3840 * 2160;
  std::string json;
};

int usableProcessors() {
  cpu_set_t set;
  CPU_ZERO(&set);
  return sched_getaffinity(0, sizeof set, &set) == 0 ? CPU_COUNT(&set) : 0;
}

std::string compiler() {
#ifdef __clang__
  return __VERSION__;
#else
  return "GCC " __VERSION__;
#endif
}

cv::Size parsedSize(const std::string& text) {
  cv::Size size;
  if (std::sscanf(text.c_str(), "%dx%d", &size.width, &size.height) != 2 || size.empty()) {
    throw std::runtime_error("'" + text + "' is no size such as 640x480");
  }
  return size;
}

SizeResults measure(cv::Size frame, const Wishes& wishes) {
  const auto progress = [&](const std::string& what) {
    std::fprintf(stderr, "frame_bench: %d x %d, %s\n", frame.width, frame.height, what.c_str());
  };
  progress("frames");
  const Capture capture = simulateScan(frame, wishes.frames);
  const std::vector<Entry> peers = {orbPeer(), phasePeer()};

  SizeResults results;
  results.frame = frame;
  results.frames = static_cast<int>(capture.frames.size());
  for (const Entry& ours : ourContenders()) {
    progress(ours.name + " beside its peers");
    std::vector<Entry> entries = {ours};
    entries.insert(entries.end(), peers.begin(), peers.end());
    const int pass = static_cast<int>(results.passes.size());
    std::vector<Run> runs = takeTurns(capture, entries, pass);
    progress("memory");
    runs[0].peakBytes = peakMemory(capture, ours);
    for (std::size_t i = 0; pass == 0 && i < peers.size(); ++i) {
      runs[i + 1].peakBytes = peakMemory(capture, peers[i]);
    }
    results.passes.push_back(std::move(runs));
  }
  if (frame.area() <= wishes.largestScansPixels) {
    progress("OpenCV's stitcher");
    results.wholeCaptures.push_back(runScans(capture));
  }
  return results;
}

int runProgram(int argc, char** argv) {
  CLI::App app("Times frames, beside other ways to stitch them.", "frame_bench");
  Wishes wishes;
  app.add_option("--sizes", wishes.sizes, "Of the frames")->capture_default_str();
  app.add_option("--frames", wishes.frames, "Of each capture")
      ->check(CLI::Range(4, 1000))
      ->capture_default_str();
  app.add_option("--threads", wishes.threads, "Of OpenCV")->capture_default_str();
  app.add_option("--largest-scans", wishes.largestScansPixels,
                 "Pixels of the largest frames that OpenCV's stitcher is given")
      ->capture_default_str();
  app.add_option("--json", wishes.json, "File for everything that was measured");
  CLI11_PARSE(app, argc, argv);

  useHostAlone();
  cv::setNumThreads(wishes.threads);
  const framequilt::tool::EngineLines quiet(false);

  std::vector<SizeResults> results;
  for (const std::string& size : wishes.sizes) {
    results.push_back(measure(parsedSize(size), wishes));
  }
  const Conditions conditions{processorName(), usableProcessors(), cv::getNumThreads(), compiler()};
  std::fputs(markdownOf(conditions, results).c_str(), stdout);
  if (!wishes.json.empty()) {
    std::ofstream file(wishes.json);
    file << jsonOf(conditions, results);
    file.close();
    if (!file) throw std::runtime_error("'" + wishes.json + "' cannot be written");
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) { return guardedMain("frame_bench", &runProgram, argc, argv); }
