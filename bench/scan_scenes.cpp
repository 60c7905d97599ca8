// SPDX-License-Identifier: Apache-2.0
/// \file
/// Cuts a serpentine scan out of a large picture, stitches it and compares the placements with the
/// places the frames were cut from.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <opencv2/imgcodecs.hpp>
#include <random>
#include <string>
#include <vector>

#include "tools/framequilt/engine_lines.h"
#include "tools/framequilt/run_driver.h"
#include "tools/framequilt/stitch_log.h"
#include "tools/framequilt/tool_error.h"

namespace {

using framequilt::tool::Outcome;
using framequilt::tool::RunDriver;
using framequilt::tool::RunSettings;

struct Scan {
  std::string scene;
  int cols = 1920;
  int rows = 1080;
  int frames = 20;
  double overlap = 0.75;
  int scale = 1;
  int cornerBudget = 1;
  bool gray = false;
  bool overlapMode = false;
  std::string mosaic;
};

struct Result {
  int refused = 0;
  std::vector<double> stepErrors;       // Of a joined frame against the one placed before it.
  std::vector<double> placementErrors;  // Of a joined frame against the first one.
  std::vector<double> milliseconds;
};

/// A few pixels of unevenness, as a hand or a worn stage leaves them; the same on every run.
class Unevenness {
 public:
  int next() { return static_cast<int>(engine_() % 15U) - 7; }

 private:
  std::mt19937 engine_{2024};
};

int clamped(int value, int limit) { return std::clamp(value, 0, limit); }

/// Where frames are cut: rows of steps, every other one backwards, as far as the scene reaches.
std::vector<cv::Point> serpentine(const Scan& scan, cv::Size scene) {
  const int stepX = std::max(1, static_cast<int>(std::lround(scan.cols * (1 - scan.overlap))));
  const int stepY = std::max(1, static_cast<int>(std::lround(scan.rows * (1 - scan.overlap))));
  const cv::Point last(scene.width - scan.cols, scene.height - scan.rows);
  const int perRow = last.x / stepX + 1;
  Unevenness uneven;
  std::vector<cv::Point> path;
  for (int frame = 0; frame < scan.frames; ++frame) {
    const int row = frame / perRow;
    const int along = frame % perRow;
    const int col = row % 2 == 0 ? along : perRow - 1 - along;
    if (row * stepY > last.y) break;
    const int x = clamped(col * stepX + uneven.next(), last.x);
    path.emplace_back(x, clamped(row * stepY + uneven.next(), last.y));
  }
  return path;
}

double distance(cv::Point a, cv::Point b) {
  return std::hypot(static_cast<double>(a.x - b.x), static_cast<double>(a.y - b.y));
}

/// Follows the placements of one run against the places that the frames were cut from.
class Comparison {
 public:
  void add(cv::Point truth, const Outcome& outcome, double milliseconds) {
    using Verdict = Outcome::Verdict;
    if (outcome.verdict != Verdict::kWaiting) result_.milliseconds.push_back(milliseconds);
    if (outcome.verdict == Verdict::kRefused || outcome.verdict == Verdict::kBecameFirst) {
      ++result_.refused;
      std::cout << "refused at (" << truth.x << ", " << truth.y
                << "): " << framequilt::tool::text(outcome.refusal) << "\n";
    }
    if (outcome.verdict == Verdict::kRefused) return;
    if (outcome.verdict == Verdict::kJoined) {
      result_.stepErrors.push_back(distance(outcome.placement - placed_, truth - truth_));
      result_.placementErrors.push_back(distance(outcome.placement, truth - first_));
    } else {
      first_ = truth;
    }
    truth_ = truth;
    placed_ = outcome.placement;
  }

  const Result& result() const { return result_; }

 private:
  Result result_;
  cv::Point first_, truth_, placed_;
};

Result stitchAlong(const std::vector<cv::Point>& path, const Scan& scan, const cv::Mat& scene,
                   RunDriver& run) {
  Comparison comparison;
  for (const cv::Point& corner : path) {
    const cv::Mat frame = scene(cv::Rect(corner, cv::Size(scan.cols, scan.rows))).clone();
    const auto start = std::chrono::steady_clock::now();
    const Outcome outcome = run.offer(frame);
    const std::chrono::duration<double, std::milli> spent =
        std::chrono::steady_clock::now() - start;
    comparison.add(corner, outcome, spent.count());
    if (outcome.full) break;
  }
  return comparison.result();
}

/// Nearest rank; 0 for no values.
double percentile(std::vector<double> values, std::size_t percent) {
  if (values.empty()) return 0;
  std::sort(values.begin(), values.end());
  return values[(values.size() * percent + 99) / 100 - 1];
}

void printErrors(const char* name, const std::vector<double>& errors) {
  std::printf("%s error (px): median %.2f, p95 %.2f, max %.2f\n", name, percentile(errors, 50),
              percentile(errors, 95), percentile(errors, 100));
}

void print(const Scan& scan, std::size_t frames, const Result& result) {
  std::printf("%s: %zu frames of %d x %d, overlap %.2f, scale %d\n", scan.scene.c_str(), frames,
              scan.cols, scan.rows, scan.overlap, scan.scale);
  const std::size_t joined = result.stepErrors.empty() ? 0 : result.stepErrors.size() + 1;
  std::printf("joined %zu, refused %d\n", joined, result.refused);
  printErrors("step", result.stepErrors);
  printErrors("placement", result.placementErrors);
  std::printf("ms per frame: median %.1f, p95 %.1f\n", percentile(result.milliseconds, 50),
              percentile(result.milliseconds, 95));
}

int scanScene(const Scan& scan) {
  const cv::Mat scene = cv::imread(scan.scene, scan.gray ? cv::IMREAD_GRAYSCALE : cv::IMREAD_COLOR);
  if (scene.cols < scan.cols || scene.rows < scan.rows) {
    std::cerr << "scan_scenes: '" << scan.scene << "' is no picture of a frame's size or more\n";
    return 2;
  }
  const framequilt::tool::EngineLines quiet(false);
  RunSettings settings{scan.rows, scan.cols, scene.channels()};
  settings.scale = scan.scale;
  settings.cornerBudget = scan.cornerBudget;
  settings.overlapMode = scan.overlapMode;
  RunDriver run(settings);
  const std::vector<cv::Point> path = serpentine(scan, scene.size());
  print(scan, path.size(), stitchAlong(path, scan, scene, run));
  const cv::Mat mosaic = run.mosaic();
  if (scan.mosaic.empty() || mosaic.empty()) return 0;
  return cv::imwrite(scan.mosaic, mosaic) ? 0 : 2;
}

int runProgram(int argc, char** argv) {
  CLI::App app("Stitches simulated scans of a scene and measures error and speed.", "scan_scenes");
  Scan scan;
  app.add_option("scene", scan.scene, "Picture to cut frames from")->required();
  app.add_option("--cols", scan.cols, "Frame width")->capture_default_str();
  app.add_option("--rows", scan.rows, "Frame height")->capture_default_str();
  app.add_option("--frames", scan.frames, "Most frames to cut")->capture_default_str();
  app.add_option("--overlap", scan.overlap, "Fraction shared by neighbours")
      ->check(CLI::Range(0.0, 0.99))
      ->capture_default_str();
  app.add_option("--scale", scan.scale)->check(CLI::IsMember({1, 2}))->capture_default_str();
  app.add_option("--corner-budget", scan.cornerBudget)->capture_default_str();
  app.add_flag("--gray", scan.gray);
  app.add_flag("--overlap-mode", scan.overlapMode, "Judge frames by their overlap");
  app.add_option("--mosaic", scan.mosaic, "Also write the mosaic");
  CLI11_PARSE(app, argc, argv);
  return scanScene(scan);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return runProgram(argc, argv);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "scan_scenes: %s\n", failure.what());
    return 2;
  }
}
