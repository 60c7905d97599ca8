// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/progress_text.h"

#include <cmath>
#include <cstdio>

namespace framequilt::tool {
namespace {

std::string rateText(double framesPerSecond) {
  char text[48];
  std::snprintf(text, sizeof text, "%.1f frames/s", framesPerSecond);
  return text;
}

/// Minutes and seconds, or hours, minutes and seconds.
std::string timeText(double seconds) {
  const auto whole = static_cast<long long>(std::ceil(seconds));
  const long long hours = whole / 3600;
  const int minutes = static_cast<int>(whole % 3600 / 60);
  const int rest = static_cast<int>(whole % 60);
  char text[64];
  if (hours > 0) {
    std::snprintf(text, sizeof text, "%lld:%02d:%02d", hours, minutes, rest);
  } else {
    std::snprintf(text, sizeof text, "%d:%02d", minutes, rest);
  }
  return text;
}

}  // namespace

std::string progressText(const CaptureProgress& progress) {
  std::string text = std::to_string(progress.done);
  if (progress.total) text += " of " + std::to_string(*progress.total);
  text += progress.done == 1 && !progress.total ? " frame, " : " frames, ";
  text += std::to_string(progress.joined) + " joined, ";
  text += std::to_string(progress.refused) + " refused";
  if (progress.seconds <= 0 || progress.done == 0) return text;
  const double rate = static_cast<double>(progress.done) / progress.seconds;
  text += ", " + rateText(rate);
  if (progress.total && *progress.total >= progress.done) {
    text += ", " + timeText(static_cast<double>(*progress.total - progress.done) / rate) + " left";
  }
  return text;
}

}  // namespace framequilt::tool
