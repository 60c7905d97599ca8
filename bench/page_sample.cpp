// SPDX-License-Identifier: Apache-2.0
// Writes a page of a large mosaic that no capture was stitched for, to measure how fast it opens:
// page_sample FOLDER SIDE FRAMES
#include <framequilt/session.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>

#include "tools/framequilt/deep_zoom.h"
#include "tools/framequilt/report_json.h"
#include "tools/framequilt/report_page.h"

namespace {

using namespace framequilt;
using namespace framequilt::tool;

/// Smoothed noise, a square of it repeated.
cv::Mat texturedMosaic(int side) {
  constexpr int kSquare = 1000;
  cv::Mat noise(kSquare, kSquare, CV_8UC3);
  cv::RNG random(7);
  random.fill(noise, cv::RNG::UNIFORM, 0, 256);
  cv::GaussianBlur(noise, noise, {9, 9}, 2);
  cv::Mat mosaic;
  const int times = (side + kSquare - 1) / kSquare;
  cv::repeat(noise, times, times, mosaic);
  return mosaic(cv::Rect(0, 0, side, side));
}

/// Frames in rows, every twentieth refused.
StitchLog serpentine(int side, int frames, cv::Size frame) {
  StitchLog log;
  const int perRow = std::max(2, static_cast<int>(std::lround(std::sqrt(frames))));
  const int step = (side - frame.width) / (perRow - 1);
  for (int i = 0; i < frames; ++i) {
    FrameResult result;
    result.verdict = Verdict::kJoined;
    result.placement = {i % perRow * step, i / perRow * step};
    result.measures.matches = {40.0 + i % 60, 11};
    result.measures.offset = cv::Point(step, i % 9);
    result.measures.moved = {40.0 + i % 20, 10};
    result.measures.overlap = {60.0 - i % 20, 10};
    if (i == 0) result.verdict = Verdict::kWaiting;
    if (i % 20 == 19) {
      result.verdict = Verdict::kRefused;
      result.reason = Refusal::kTooFewMatches;
      result.judged = result.measures.matches = {7, 11};
      result.measures.offset.reset();
    }
    const auto number = static_cast<std::size_t>(i) + 1;
    log.add(number, "frame_" + std::to_string(number) + ".png", result, 5);
  }
  return log;
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 4) {
    std::fprintf(stderr, "usage: page_sample FOLDER SIDE FRAMES\n");
    return 2;
  }
  const std::filesystem::path folder = argv[1];
  const int side = std::atoi(argv[2]);
  const cv::Size frame(side / 20, side / 20);
  const cv::Mat mosaic = texturedMosaic(side);
  RunFacts facts;
  facts.backend = "host";
  facts.mosaic = mosaic.size();
  facts.frame = frame;
  const std::string report = reportJson({}, facts, serpentine(side, std::atoi(argv[3]), frame));
  const DeepZoom pyramid{"mosaic"};
  std::filesystem::create_directories(folder);
  writeDeepZoom(mosaic, pyramid, folder, folder);
  std::ofstream(folder / "index.html")
      << reportPage("page sample", tilesOf(pyramid, mosaic.size()), report);
  return 0;
} catch (const std::exception& failure) {
  std::fprintf(stderr, "%s\n", failure.what());
  return 1;
}
