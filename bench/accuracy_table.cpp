// SPDX-License-Identifier: Apache-2.0
/// \file
/// Stitches simulated captures of a scene, for frames of several sizes, overlaps and conditions,
/// and holds the placements against the truth: a table in Markdown, and below it every frame that
/// falls short.
#include <framequilt/session.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "bench/guarded_main.h"
#include "tools/framequilt/engine_lines.h"
#include "tools/framequilt/evaluation.h"
#include "tools/framequilt/simulation.h"

namespace {

using framequilt::FrameResult;
using framequilt::Verdict;
using framequilt::tool::EvaluatedFrame;
using framequilt::tool::Evaluation;
using framequilt::tool::SimulatedCapture;
using framequilt::tool::SimulationOptions;

struct Wishes {
  std::string scene;
  int frames = 20;
  int cornerBudget = framequilt::SessionOptions().cornerBudget;
  int scale = framequilt::kAutoScale;
  std::vector<int> overlaps = {30, 40, 50, 60, 70, 80};
  std::vector<std::string> conditions;  // Empty: all.
  std::vector<std::string> sizes;       // Empty: all.
  std::vector<int> region;              // Columns and rows of the scene: x, y, width, height.
};

struct Condition {
  const char* name;
  void (*apply)(SimulationOptions&);
};

constexpr std::array<Condition, 7> kConditions = {{
    {"clean", [](SimulationOptions&) {}},
    {"noise 5", [](SimulationOptions& options) { options.noise = 5; }},
    {"gain ±20 %", [](SimulationOptions& options) { options.gain = 0.2; }},
    {"vignette 40 %", [](SimulationOptions& options) { options.vignette = 0.4; }},
    {"blur 1.5 px", [](SimulationOptions& options) { options.blur = 1.5; }},
    {"sub-pixel", [](SimulationOptions& options) { options.path.subpixel = true; }},
    {"rotation ±0.5°", [](SimulationOptions& options) { options.rotation = 0.5; }},
}};

const std::array<cv::Size, 4> kSizes = {{{640, 480}, {960, 720}, {1280, 960}, {1920, 1080}}};

std::string sizeText(cv::Size size) {
  return std::to_string(size.width) + " x " + std::to_string(size.height);
}

/// One simulated capture, stitched.
struct Run {
  Evaluation evaluation;
  std::vector<std::string> shortfalls;  ///< A line for each frame refused or misplaced.
};

std::string frameText(const FrameResult& result) {
  const std::string line = "frame " + std::to_string(result.frame + 1);
  if (result.verdict == Verdict::kRefused) return line + " refused, " + explain(result);
  const auto matches = static_cast<int>(result.measures.matches.value);
  return line + " misplaced with " + std::to_string(matches) + " agreeing matches";
}

Run stitchCapture(const SimulatedCapture& capture, const Wishes& wishes) {
  const cv::Mat first = capture.frame(0);
  framequilt::SessionOptions options;
  options.rows = first.rows;
  options.cols = first.cols;
  options.channels = first.channels();
  options.cornerBudget = wishes.cornerBudget;
  options.scale = wishes.scale;
  options.backend = framequilt::Backend::kHost;  // The same table on every machine.
  framequilt::Session session(options);

  std::vector<EvaluatedFrame> frames;
  std::vector<FrameResult> results;
  for (int i = 0; i < capture.frames(); ++i) {
    const FrameResult result = session.add(capture.frame(i));
    EvaluatedFrame frame{i + 1, {}, capture.truth(i)};
    if (result.verdict == Verdict::kJoined) {
      frame.placement = cv::Point2d(result.placement);
      frames[static_cast<std::size_t>(session.firstFrame())].placement = cv::Point2d();
    }
    frames.push_back(frame);
    results.push_back(result);
  }
  Run run{evaluatePlacements(frames), {}};
  for (const FrameResult& result : results) {
    if (result.verdict == Verdict::kRefused) run.shortfalls.push_back(frameText(result));
  }
  for (const int number : run.evaluation.misplaced) {
    run.shortfalls.push_back(frameText(results[static_cast<std::size_t>(number - 1)]));
  }
  return run;
}

SimulationOptions simulation(const Condition& condition, cv::Size size, int overlap, int frames) {
  SimulationOptions options;
  options.path.shape = framequilt::tool::PathShape::kDrift;
  options.path.frames = frames;
  options.path.frame = size;
  options.path.lowestOverlap = options.path.highestOverlap = overlap / 100.0;
  condition.apply(options);
  return options;
}

/// "20, 1.0 / 2.2": frames joined, median and largest step error.
std::string cell(const Evaluation& evaluation) {
  if (!evaluation.step) return std::to_string(evaluation.joined);
  char text[96];
  std::snprintf(text, sizeof text, "%d, %.1f / %.1f", evaluation.joined, evaluation.step->median,
                evaluation.step->max);
  if (evaluation.misplaced.empty()) return text;
  return "**" + std::string(text) + ", " + std::to_string(evaluation.misplaced.size()) +
         " misplaced**";
}

bool wanted(const std::vector<std::string>& names, const std::string& name) {
  return names.empty() || std::find(names.begin(), names.end(), name) != names.end();
}

void printTable(const cv::Mat& scene, const Wishes& wishes) {
  std::vector<std::string> shortfalls;
  std::printf("| condition | frame |");
  for (const int overlap : wishes.overlaps) std::printf(" %d %% |", overlap);
  std::printf("\n|---|---|");
  for (std::size_t i = 0; i < wishes.overlaps.size(); ++i) std::printf("---|");
  std::printf("\n");
  for (const Condition& condition : kConditions) {
    if (!wanted(wishes.conditions, condition.name)) continue;
    for (const cv::Size& size : kSizes) {
      if (!wanted(wishes.sizes, sizeText(size))) continue;
      std::printf("| %s | %s |", condition.name, sizeText(size).c_str());
      for (const int overlap : wishes.overlaps) {
        const SimulatedCapture capture(scene, simulation(condition, size, overlap, wishes.frames));
        const Run run = stitchCapture(capture, wishes);
        std::printf(" %s |", cell(run.evaluation).c_str());
        std::fflush(stdout);
        for (const std::string& line : run.shortfalls) {
          shortfalls.push_back(std::string(condition.name) + ", " + sizeText(size) + ", " +
                               std::to_string(overlap) + " %: " + line);
        }
      }
      std::printf("\n");
    }
  }
  std::printf("\n");
  for (const std::string& line : shortfalls) std::printf("- %s\n", line.c_str());
}

int runProgram(int argc, char** argv) {
  CLI::App app("Holds placements of simulated captures against the truth.", "accuracy_table");
  Wishes wishes;
  app.add_option("scene", wishes.scene, "Picture to cut frames from")->required();
  app.add_option("--frames", wishes.frames, "Frames of each capture")->capture_default_str();
  app.add_option("--corner-budget", wishes.cornerBudget)->capture_default_str();
  app.add_option("--scale", wishes.scale, "1 or 2; 0: automatic")->capture_default_str();
  app.add_option("--overlaps", wishes.overlaps, "In percent")->capture_default_str();
  app.add_option("--conditions", wishes.conditions, "Only these");
  app.add_option("--sizes", wishes.sizes, "Only these, such as '640 x 480'");
  app.add_option("--region", wishes.region, "Only this part of the scene: x y width height")
      ->expected(4);
  CLI11_PARSE(app, argc, argv);
  cv::Mat scene = cv::imread(wishes.scene, cv::IMREAD_COLOR);
  if (scene.empty()) {
    std::cerr << "accuracy_table: '" << wishes.scene << "' cannot be read as a picture\n";
    return 2;
  }
  if (!wishes.region.empty()) {
    scene = scene(cv::Rect(wishes.region[0], wishes.region[1], wishes.region[2], wishes.region[3]));
  }
  const framequilt::tool::EngineLines quiet(false);
  printTable(scene, wishes);
  return 0;
}

}  // namespace

int main(int argc, char** argv) { return guardedMain("accuracy_table", &runProgram, argc, argv); }
