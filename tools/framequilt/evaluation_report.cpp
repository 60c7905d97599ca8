// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/evaluation_report.h"

#include <cstdio>
#include <nlohmann/json.hpp>

namespace framequilt::tool {
namespace {

using Json = nlohmann::ordered_json;

std::string fixed(double value, int decimals) {
  char text[400];  // The longest double has 309 digits before the point.
  std::snprintf(text, sizeof text, "%.*f", decimals, value);
  return text;
}

std::string pixels(double value) { return fixed(value, 2); }

std::string misplacedText(const std::vector<int>& frames) {
  std::string text = std::to_string(frames.size());
  for (const int frame : frames) {
    text += frame == frames.front() ? " (frames " : ", ";
    text += std::to_string(frame);
  }
  return frames.empty() ? text : text + ")";
}

template <class Value>
Json orNull(const std::optional<Value>& spread, double ErrorSpread::*member) {
  return spread ? Json((*spread).*member) : Json();
}

}  // namespace

std::string evaluationText(const Evaluation& evaluation) {
  const auto& [frames, joined, step, misplaced, drift, placement] = evaluation;
  std::string text = "frames: " + std::to_string(frames) + "\n";
  text +=
      "joined: " + std::to_string(joined) + " (" + fixed(evaluation.joinedPercent(), 1) + " %)\n";
  text += "step error (px): ";
  text += step ? "median " + pixels(step->median) + ", p95 " + pixels(step->p95) + ", max " +
                     pixels(step->max)
               : "-";
  text += "\nmisplaced steps (> " + fixed(Evaluation::kMisplaced, 0) +
          " px): " + misplacedText(misplaced) + "\n";
  text += "drift (px): " + (drift ? pixels(*drift) : "-") + "\n";
  text += "placement error (px): ";
  text +=
      placement ? "median " + pixels(placement->median) + ", max " + pixels(placement->max) : "-";
  return text + "\n";
}

std::string evaluationJson(const Evaluation& evaluation) {
  const auto& [frames, joined, step, misplaced, drift, placement] = evaluation;
  Json json;
  json["frames"] = frames;
  json["joined"] = joined;
  json["joined_percent"] = evaluation.joinedPercent();
  json["step_error_px"] = {{"median", orNull(step, &ErrorSpread::median)},
                           {"p95", orNull(step, &ErrorSpread::p95)},
                           {"max", orNull(step, &ErrorSpread::max)}};
  json["misplaced_steps"] = misplaced;
  json["drift_px"] = drift ? Json(*drift) : Json();
  json["placement_error_px"] = {{"median", orNull(placement, &ErrorSpread::median)},
                                {"max", orNull(placement, &ErrorSpread::max)}};
  return json.dump(2) + "\n";
}

}  // namespace framequilt::tool
