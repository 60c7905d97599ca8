// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/recorded_run.h"

#include <utility>

#include "tools/framequilt/path_text.h"

namespace framequilt::tool {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kFrame = "frame";
constexpr const char* kCheckpoint = "checkpoint";
constexpr const char* kMosaic = "mosaic";
constexpr const char* kEnd = "end";
constexpr const char* kComplete = "complete";
constexpr const char* kFull = "full";

const char* textOf(RunEnd end) {
  switch (end) {
    case RunEnd::kComplete:
      return kComplete;
    case RunEnd::kFull:
      return kFull;
    case RunEnd::kInterrupted:
      return "interrupted";
    case RunEnd::kBrokenOff:
      break;
  }
  return "broken off";
}

}  // namespace

RecordedRun::RecordedRun(const JournalFile& journal)
    : header_(readHeaderText(journal.objects().front(), inQuotes(journal.file()))) {
  for (std::size_t i = 1; i < journal.objects().size(); ++i) {
    try {
      add(journal.objects()[i]);
    } catch (const Json::exception&) {
      throw ToolError(inQuotes(journal.file()) + " line " + std::to_string(i + 1) +
                      " is not as framequilt writes it: use the version that wrote it");
    }
  }
}

void RecordedRun::add(const std::string& line) {
  const Json object = Json::parse(line);
  finished_ = false;
  if (object.contains(kFrame)) {
    static_cast<void>(object.at(kFrame).get<std::size_t>());
    static_cast<void>(object.at("file").get<std::string>());
    static_cast<void>(object.at("path").get<std::string>());
    static_cast<void>(object.at("left_out").get<std::size_t>());
    static_cast<void>(object.at("dropped").get<std::size_t>());
    frames_.push_back(line);
    return;
  }
  mosaics_[object.at(kCheckpoint).get<std::size_t>()] = object.at(kMosaic);
  const std::string end = object.value(kEnd, "");
  finished_ = end == kComplete || end == kFull;
}

Json RecordedRun::frame(std::size_t index) const { return Json::parse(frames_[index]); }

const Json* RecordedRun::mosaicAfter(std::size_t frames) const {
  const auto found = mosaics_.find(frames);
  return found == mosaics_.end() ? nullptr : &found->second;
}

std::string checkpointText(std::size_t frames, const Json& mosaic, std::optional<RunEnd> end) {
  Json object = {{kCheckpoint, frames}, {kMosaic, mosaic}};
  if (end) object[kEnd] = textOf(*end);
  return object.dump();
}

}  // namespace framequilt::tool
