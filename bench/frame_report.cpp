// SPDX-License-Identifier: Apache-2.0
#include "bench/frame_report.h"

#include <cstdio>
#include <nlohmann/json.hpp>
#include <opencv2/core.hpp>
#include <optional>

namespace framequilt::bench {
namespace {

using nlohmann::ordered_json;

std::string number(double value, const char* format) {
  char text[64];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

/// Three digits are enough: 0.123, 1.23, 12.3, 123.
std::string shortNumber(double value) {
  if (value < 1) return number(value, "%.3f");
  if (value < 10) return number(value, "%.2f");
  if (value < 100) return number(value, "%.1f");
  return number(value, "%.0f");
}

/// What a contender takes for a frame; none when nothing was joined.
std::optional<double> perFrame(const Run& run, int frames) {
  if (!run.failure.empty()) return std::nullopt;
  if (run.calls.empty()) return run.first.wall / frames;
  const std::optional<Figures> figures = figuresOf(run);
  if (!figures) return std::nullopt;
  return figures->median;
}

/// What the peers of a pass take for a frame, together.
double peersPerFrame(const std::vector<Run>& pass, int frames) {
  double sum = 0;
  for (std::size_t i = 1; i < pass.size(); ++i) sum += perFrame(pass[i], frames).value_or(0);
  return sum;
}

/// One line of a table.
struct Line {
  const Run& run;
  bool ours;
  std::optional<double> perFrame;
  /// What it takes, where the library's first run takes 1. Runs of later passes are compared by way
  /// of the peers, which run in every pass: the machine may have become faster or slower.
  std::optional<double> ratio;

  /// The mosaic lacks frames or is torn: its time says nothing.
  bool wrong(int frames) const {
    return run.evaluation.joined < frames || !run.evaluation.misplaced.empty();
  }
};

std::vector<Line> linesOf(const SizeResults& size) {
  const std::vector<Run>& first = size.passes.front();
  const std::optional<double> one = perFrame(first.front(), size.frames);
  const auto ratioOf = [&](std::optional<double> time, double speed) -> std::optional<double> {
    if (!time || !one) return std::nullopt;
    return *time * speed / *one;
  };
  std::vector<Line> lines;
  for (const std::vector<Run>& pass : size.passes) {
    const double peers = peersPerFrame(pass, size.frames);
    const double speed = peers > 0 ? peersPerFrame(first, size.frames) / peers : 1;
    const std::optional<double> time = perFrame(pass.front(), size.frames);
    lines.push_back({pass.front(), true, time, ratioOf(time, speed)});
  }
  for (std::size_t i = 1; i < first.size(); ++i) {
    const std::optional<double> time = perFrame(first[i], size.frames);
    lines.push_back({first[i], false, time, ratioOf(time, 1)});
  }
  for (const Run& run : size.wholeCaptures) {
    const std::optional<double> time = perFrame(run, size.frames);
    lines.push_back({run, false, time, ratioOf(time, 1)});
  }
  return lines;
}

std::string memoryText(const Run& run, cv::Size frame) {
  if (!run.peakBytes) return "";
  const auto bytes = static_cast<double>(*run.peakBytes);
  return number(bytes / (1 << 20), "%.0f") + " (" +
         shortNumber(bytes / static_cast<double>(frame.area())) + ")";
}

std::string growthText(const Figures& figures) {
  if (!figures.growth) return "";
  return shortNumber(*figures.growth) + " (" + std::to_string(figures.growthFrames) + ")";
}

std::string errorText(const tool::Evaluation& evaluation) {
  if (!evaluation.step || !evaluation.placement) return "";
  return number(evaluation.step->max, "%.1f") + " / " + number(evaluation.placement->max, "%.1f");
}

std::string lineText(const Line& line, const SizeResults& size) {
  const Run& run = line.run;
  std::string text = "| " + run.name + " | ";
  if (!run.failure.empty()) return text + "failed: " + run.failure + " |||||||||\n";
  const std::optional<Figures> figures = figuresOf(run);
  const bool whole = run.calls.empty();
  text += line.perFrame ? shortNumber(*line.perFrame) + " | " : "| ";
  text += line.ratio ? shortNumber(*line.ratio) + " | " : "| ";
  text += figures ? shortNumber(figures->p95) + " | " : "| ";
  text += whole ? "| " : shortNumber(run.first.wall) + " | ";
  text += figures ? growthText(*figures) + " | " : "| ";
  const double busy = whole ? run.first.cpu / run.first.wall : figures ? figures->cpuPerWall : 0;
  text += number(busy, "%.2f") + " | " + memoryText(run, size.frame) + " | ";
  const std::string mark = line.wrong(size.frames) ? "**" : "";
  text += mark + std::to_string(run.evaluation.joined) + mark + " | " + mark +
          errorText(run.evaluation) + mark + " |\n";
  return text;
}

ordered_json jsonOf(const Call& call) {
  return {{"ms", call.spent.wall},
          {"cpu_ms", call.spent.cpu},
          {"joined", call.joined},
          {"grew", call.grew}};
}

template <class Value>
ordered_json orNull(const std::optional<Value>& value) {
  return value ? ordered_json(*value) : ordered_json();
}

ordered_json jsonOf(const Line& line, const SizeResults& size) {
  const Run& run = line.run;
  const tool::Evaluation& evaluation = run.evaluation;
  ordered_json json = {{"key", run.key},
                       {"name", run.name},
                       {"ours", line.ours},
                       {"failure", run.failure},
                       {"ms_per_frame", orNull(line.perFrame)},
                       {"ratio", orNull(line.ratio)},
                       {"first_ms", run.first.wall},
                       {"first_cpu_ms", run.first.cpu},
                       {"joined", evaluation.joined},
                       {"wrong", line.wrong(size.frames)},
                       {"peak_bytes", orNull(run.peakBytes)}};
  if (evaluation.step) json["largest_step_error"] = evaluation.step->max;
  if (evaluation.placement) json["largest_error"] = evaluation.placement->max;
  if (const std::optional<Figures> figures = figuresOf(run)) {
    json["median_ms"] = figures->median;
    json["p95_ms"] = figures->p95;
    json["median_cpu_ms"] = figures->medianCpu;
    json["cpu_per_wall"] = figures->cpuPerWall;
    json["growth_frames"] = figures->growthFrames;
    json["growth_per_median"] = orNull(figures->growth);
  }
  json["calls"] = ordered_json::array();
  for (const Call& call : run.calls) json["calls"].push_back(jsonOf(call));
  return json;
}

}  // namespace

std::string markdownOf(const Conditions& conditions, const std::vector<SizeResults>& results) {
  std::string text = "Processor " + conditions.processor + ", " +
                     std::to_string(conditions.processors) + " of them; compiler " +
                     conditions.compiler + "; OpenCV " CV_VERSION " with " +
                     std::to_string(conditions.opencvThreads) + " threads.\n\n";
  for (const SizeResults& size : results) {
    text += "### " + std::to_string(size.frame.width) + " x " + std::to_string(size.frame.height) +
            ", " + std::to_string(size.frames) + " frames\n\n";
    text +=
        "| contender | ms a frame | × ours | p95, ms | first two, ms | growth frames | "
        "CPU / wall | peak, MiB (bytes a pixel) | joined | largest error, px |\n"
        "|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|\n";
    for (const Line& line : linesOf(size)) text += lineText(line, size);
    text += "\n";
  }
  return text;
}

std::string jsonOf(const Conditions& conditions, const std::vector<SizeResults>& results) {
  ordered_json json = {{"processor", conditions.processor},
                       {"processors", conditions.processors},
                       {"compiler", conditions.compiler},
                       {"opencv", CV_VERSION},
                       {"opencv_threads", conditions.opencvThreads},
                       {"sizes", ordered_json::array()}};
  for (const SizeResults& size : results) {
    ordered_json contenders = ordered_json::array();
    for (const Line& line : linesOf(size)) contenders.push_back(jsonOf(line, size));
    json["sizes"].push_back({{"cols", size.frame.width},
                             {"rows", size.frame.height},
                             {"frames", size.frames},
                             {"contenders", contenders}});
  }
  return json.dump(2) + "\n";
}

}  // namespace framequilt::bench
