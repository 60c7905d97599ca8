// SPDX-License-Identifier: Apache-2.0
/// \file
/// Times frames of one capture over mosaics of several sizes: a table in Markdown on standard
/// output. Frames in which the mosaic grew are left out.
///
///     mosaic_bench [--size WIDTHxHEIGHT] [--sides PIXELS ...] [--frames N] [--passes N]
#include <framequilt/framequilt.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <opencv2/core.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/captures.h"
#include "bench/guarded_main.h"
#include "bench/resources.h"
#include "cpu/run_state.h"
#include "tools/framequilt/engine_lines.h"
#include "tools/framequilt/nearest_rank.h"

namespace {

using namespace framequilt::bench;

constexpr int kFirstSide = 6000;
constexpr int kLimit = 40000;

/// The run goes on as if its mosaic had grown by as much on every side.
void enlargeMosaic(int side) {
  const int margin = (side - kFirstSide) / 2;
  if (margin <= 0) return;
  const cv::Rect filled(outbordLeftCpu.x, outbordLeftCpu.y, outbordRightCpu.x - outbordLeftCpu.x,
                        outbordRightCpu.y - outbordLeftCpu.y);
  cv::Mat larger = cv::Mat::zeros(side, side, mosaicImgCpu.type());
  mosaicImgCpu(filled).copyTo(larger(filled + cv::Point(margin, margin)));
  mosaicImgCpu = larger;
  for (SPoint* point : {&flagsCpu.position, &outbordLeftCpu, &outbordRightCpu}) {
    point->x += margin;
    point->y += margin;
  }
}

/// Milliseconds of each frame that was joined to a mosaic of that side.
std::vector<double> frameTimes(const Capture& capture, int side) {
  const cv::Size frame = capture.frameSize();
  if (!initJoint(frame.height, frame.width, 3, 1, kLimit, kLimit, /*judged by motion*/ 1,
                 /*static scene*/ 0)) {
    throw std::runtime_error("the library does not start");
  }
  SPoint topLeft{}, bottomRight{};
  cv::Mat mosaic;
  stitchflags record{};
  const auto call = [&](unsigned char* reference, const cv::Mat& next, int index) {
    stichingImagedJoint(reference, next.data, index, /*frameScale=*/1, 0, 0, false, topLeft,
                        bottomRight, mosaic, record);
  };
  cv::Mat reference = capture.frames[0].clone();
  call(reference.data, capture.frames[1], 0);
  enlargeMosaic(side);

  std::vector<double> times;
  for (std::size_t i = 2; i < capture.frames.size(); ++i) {
    const SPoint before = flagsCpu.position;
    const cv::Size size = mosaicImgCpu.size();
    const Stopwatch watch;
    call(nullptr, capture.frames[i], 1);
    const double spent = watch.spent().wall;
    const bool joined = record.position.x != before.x || record.position.y != before.y;
    if (joined && mosaic.size() == size) times.push_back(spent);
  }
  uinitJoint();
  return times;
}

double medianOf(std::vector<double> values) {
  if (values.empty()) throw std::runtime_error("no frame was joined");
  std::sort(values.begin(), values.end());
  return framequilt::tool::nearestRank(values, 50);
}

int runProgram(int argc, char** argv) {
  CLI::App app("Times frames over mosaics of several sizes.", "mosaic_bench");
  std::string size = "1280x960";
  std::vector<int> sides = {6000, 10000, 14000, 20000};
  int frames = 20;
  int passes = 5;
  app.add_option("--size", size, "Of the frames")->capture_default_str();
  app.add_option("--sides", sides, "Of the mosaics, in pixels")
      ->check(CLI::Range(kFirstSide, kLimit - 10000))
      ->capture_default_str();
  app.add_option("--frames", frames, "Of the capture")
      ->check(CLI::Range(4, 1000))
      ->capture_default_str();
  app.add_option("--passes", passes, "Over all sizes")
      ->check(CLI::Range(1, 1000))
      ->capture_default_str();
  CLI11_PARSE(app, argc, argv);
  cv::Size frame;
  if (std::sscanf(size.c_str(), "%dx%d", &frame.width, &frame.height) != 2 || frame.empty()) {
    throw std::runtime_error("'" + size + "' is no size such as 640x480");
  }
  useHostAlone();

  const framequilt::tool::EngineLines quiet(false);
  const Capture capture = simulateScan(frame, frames);
  std::vector<std::vector<double>> times(sides.size());
  for (int pass = 0; pass < passes; ++pass) {
    for (std::size_t i = 0; i < sides.size(); ++i) {
      const std::vector<double> taken = frameTimes(capture, sides[i]);
      times[i].insert(times[i].end(), taken.begin(), taken.end());
    }
  }
  const double first = medianOf(times[0]);
  std::printf("| mosaic | frames of %d x %d | ms a frame | of the first |\n|---|---:|---:|---:|\n",
              frame.width, frame.height);
  for (std::size_t i = 0; i < sides.size(); ++i) {
    const double median = medianOf(times[i]);
    std::printf("| %d x %d | %zu | %.2f | %.2f |\n", sides[i], sides[i], times[i].size(), median,
                median / first);
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) { return guardedMain("mosaic_bench", &runProgram, argc, argv); }
