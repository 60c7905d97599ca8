// SPDX-License-Identifier: Apache-2.0
#include "framequilt/refusal.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>

namespace framequilt {
namespace {

/// In the order of the enumeration.
constexpr std::array<RefusalWords, 9> kWords = {{
    {},
    {"no overlap found", "matches", "", "needs at least",
     "let neighbouring frames share about half, in focus and with texture"},
    {"too few matches", "matches", "", "needs at least",
     "let frames overlap more, or raise the corner budget"},
    {"moved too little", "moved by", "%", "needs more than",
     "nothing is lost: move on, or hand over fewer frames"},
    {"moved too far", "overlap", "%", "needs more than", "slow down or take frames more often"},
    {"moving scene", "change", "gray levels", "needs less than",
     "let the scene come to rest, or treat it as static"},
    {"brightness differs", "difference", "gray levels", "needs less than",
     "keep exposure and lighting fixed"},
    {"sharpness differs", "difference", "levels", "needs less than",
     "keep the focus, and hold still while a frame is taken"},
    {"mosaic full", "size", "pixels", "limit",
     "raise the limit of rows and columns, or begin another mosaic"},
}};

/// Whole numbers plainly, others with one decimal.
std::string numberText(double number) {
  if (std::isnan(number)) return "not measurable";
  char text[64];
  // Limits are kept in single precision: 0.1 percent of a percent is no fraction to show.
  const bool whole = std::fabs(number - std::round(number)) < 0.001;
  std::snprintf(text, sizeof text, whole ? "%.0f" : "%.1f", number);
  return text;
}

std::string withUnit(double number, std::string_view unit) {
  std::string text = numberText(number);
  if (!unit.empty() && !std::isnan(number)) text.append(" ").append(unit);
  return text;
}

}  // namespace

const RefusalWords& wordsFor(Refusal reason) { return kWords.at(static_cast<std::size_t>(reason)); }

std::string explain(Refusal reason, const Measure& measure) {
  if (reason == Refusal::kNone) return {};
  const RefusalWords& words = wordsFor(reason);
  std::string line(words.reason);
  line.append(": ").append(words.quantity).append(" ");
  line.append(withUnit(measure.value, words.unit)).append(", ");
  line.append(words.relation).append(" ").append(withUnit(measure.limit, words.unit));
  return line;
}

}  // namespace framequilt
