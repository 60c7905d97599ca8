// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/stitch_log.h"

#include <algorithm>
#include <cstdio>

#include "tools/framequilt/csv_table.h"
#include "tools/framequilt/nearest_rank.h"
#include "tools/framequilt/path_text.h"

namespace framequilt::tool {

std::string_view text(Refusal reason) {
  switch (reason) {
    case Refusal::kNone:
      return "no later frame joined it";
    case Refusal::kNoOverlap:
      return "no overlap found";
    case Refusal::kTooFewMatches:
      return "too few matches";
    case Refusal::kMovedTooLittle:
      return "moved too little";
    case Refusal::kMovedTooFar:
      return "moved too far";
    case Refusal::kMovingScene:
      return "moving scene";
    case Refusal::kBrightness:
      return "brightness differs";
    case Refusal::kSharpness:
      return "sharpness differs";
  }
  return "unknown";
}

void StitchLog::add(const std::filesystem::path& picture, const Outcome& outcome,
                    double milliseconds) {
  Entry entry{picture,
              outcome.verdict == Outcome::Verdict::kJoined,
              outcome.refusal,
              outcome.placement,
              {}};
  if (outcome.verdict != Outcome::Verdict::kWaiting) entry.milliseconds = milliseconds;
  if (outcome.verdict == Outcome::Verdict::kBecameFirst) first_ = entries_.size();
  entries_.push_back(entry);
  if (entry.joined) {
    entries_[first_].joined = true;
    entries_[first_].reason = Refusal::kNone;
  }
}

int StitchLog::joined() const {
  return static_cast<int>(std::count_if(entries_.begin(), entries_.end(),
                                        [](const Entry& entry) { return entry.joined; }));
}

std::string StitchLog::placementsCsv() const {
  std::string lines = "frame,file,x,y,joined\n";
  int frame = 0;
  for (const Entry& entry : entries_) {
    const std::string place =
        entry.joined ? std::to_string(entry.placement.x) + "," + std::to_string(entry.placement.y)
                     : ",";
    lines += std::to_string(++frame) + "," + csvField(entry.picture.filename().string()) + "," +
             place + "," + (entry.joined ? "1" : "0") + "\n";
  }
  return lines;
}

std::string StitchLog::countsText() const {
  const int read = static_cast<int>(entries_.size());
  std::string lines = "frames read: " + std::to_string(read) + "\n";
  lines += "joined: " + std::to_string(joined()) + "\n";
  lines += "refused: " + std::to_string(read - joined()) + "\n";
  for (const Entry& entry : entries_) {
    if (entry.joined) continue;
    lines += "  " + inQuotes(entry.picture) + ": " + std::string(text(entry.reason)) + "\n";
  }
  return lines;
}

std::string StitchLog::timesText() const {
  std::vector<double> times;
  for (const Entry& entry : entries_) {
    if (entry.milliseconds) times.push_back(*entry.milliseconds);
  }
  if (times.empty()) return "ms per frame: -\n";
  std::sort(times.begin(), times.end());
  char line[80];
  std::snprintf(line, sizeof line, "ms per frame: median %.1f, p95 %.1f\n", nearestRank(times, 50),
                nearestRank(times, 95));
  return line;
}

}  // namespace framequilt::tool
