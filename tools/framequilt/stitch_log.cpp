// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/stitch_log.h"

#include <algorithm>
#include <cstdio>
#include <map>

#include "tools/framequilt/csv_table.h"
#include "tools/framequilt/nearest_rank.h"
#include "tools/framequilt/path_text.h"

namespace framequilt::tool {
namespace {

/// More names than these are only counted.
constexpr std::size_t kNamesShown = 3;

using Entries = std::vector<const StitchLog::Entry*>;

std::string someNames(const Entries& entries) {
  std::string names;
  for (std::size_t i = 0; i < std::min(kNamesShown, entries.size()); ++i) {
    if (!names.empty()) names += ", ";
    names += inQuotes(entries[i]->name);
  }
  if (entries.size() > kNamesShown) {
    names += " and " + std::to_string(entries.size() - kNamesShown) + " more";
  }
  return names;
}

/// Without a line end.
std::string timesLine(double median, double p95) {
  char line[80];
  std::snprintf(line, sizeof line, "ms per frame: median %.1f, p95 %.1f", median, p95);
  return line;
}

}  // namespace

std::string reasonText(const StitchLog::Entry& entry) {
  if (entry.result.reason == Refusal::kNone) return "no later frame joined it";
  return std::string(wordsFor(entry.result.reason).reason);
}

std::string outcomeText(const FrameResult& result) {
  switch (result.verdict) {
    case Verdict::kWaiting:
      return "first frame";
    case Verdict::kJoined:
      return "joined at (" + std::to_string(result.placement.x) + ", " +
             std::to_string(result.placement.y) + "), " +
             std::to_string(static_cast<long>(result.measures.matches.value)) + " matches";
    case Verdict::kRefused:
      return "refused, " + explain(result);
    case Verdict::kCancelled:
      break;
  }
  return "cancelled";
}

void StitchLog::add(std::size_t number, const std::string& name, const FrameResult& result,
                    double milliseconds) {
  Entry entry{number, name, result, false, result.placement, {}};
  if (result.verdict != Verdict::kWaiting) entry.milliseconds = milliseconds;
  if (result.becameFirst) first_ = entries_.size();
  entries_.push_back(entry);
  if (result.verdict != Verdict::kJoined) return;
  markJoined(entries_.back());
  markJoined(entries_[first_]);
}

/// Counted here, since the progress asks after every frame.
void StitchLog::markJoined(Entry& entry) {
  if (!entry.joined) ++joined_;
  entry.joined = true;
}

std::string StitchLog::placementsCsv() const {
  std::string lines = "frame,file,x,y,joined\n";
  for (const Entry& entry : entries_) {
    const std::string place =
        entry.joined ? std::to_string(entry.placement.x) + "," + std::to_string(entry.placement.y)
                     : ",";
    lines += std::to_string(entry.number) + "," + csvField(entry.name) + "," + place + "," +
             (entry.joined ? "1" : "0") + "\n";
  }
  return lines;
}

std::string StitchLog::countsText() const {
  std::string lines = "frames read: " + std::to_string(entries_.size()) + "\n";
  lines += "joined: " + std::to_string(joined()) + "\n";
  lines += "refused: " + std::to_string(refused()) + "\n";
  std::map<Refusal, Entries> byReason;
  for (const Entry& entry : entries_) {
    if (!entry.joined) byReason[entry.result.reason].push_back(&entry);
  }
  for (const auto& [reason, entries] : byReason) {
    lines += "  " + reasonText(*entries.front()) + ": " + std::to_string(entries.size()) + " (" +
             someNames(entries) + ")";
    if (reason != Refusal::kNone) lines.append(": ").append(wordsFor(reason).advice);
    lines += "\n";
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
  return timesLine(nearestRank(times, 50), nearestRank(times, 95)) + "\n";
}

}  // namespace framequilt::tool
