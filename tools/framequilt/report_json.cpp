// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/report_json.h"

#include <nlohmann/json.hpp>

#include "tools/framequilt/measures_json.h"

namespace framequilt::tool {
namespace {

using Json = nlohmann::ordered_json;

Json reasonJson(const StitchLog::Entry& entry) {
  const FrameResult& result = entry.result;
  Json reason = {{"text", reasonText(entry)}};
  if (result.reason == Refusal::kNone) return reason;
  const RefusalWords& words = wordsFor(result.reason);
  reason["quantity"] = words.quantity;
  reason["unit"] = words.unit;
  reason.update(measureJson(result.judged));
  reason["explanation"] = explain(result);
  reason["advice"] = words.advice;
  return reason;
}

Json json(const StitchLog::Entry& entry) {
  Json frame = {{"frame", entry.number}, {"file", entry.name}, {"joined", entry.joined}};
  if (entry.joined) {
    frame["placement"] = pointJson(entry.placement);
  } else {
    frame["reason"] = reasonJson(entry);
  }
  if (entry.result.becameFirst) frame["became_first"] = true;
  // A first frame was matched with nothing.
  if (entry.milliseconds) {
    frame["measures"] = measuresJson(entry.result.measures);
    frame["milliseconds"] = *entry.milliseconds;
  }
  return frame;
}

Json json(const StitchOptions& options) {
  return {{"mode", options.mode},
          {"scene", options.dynamicScene ? "dynamic" : "static"},
          {"corner_budget", options.cornerBudget},
          {"max_rows", options.maxRows},
          {"max_cols", options.maxCols},
          {"every", options.every},
          {"crop", options.crop},
          {"pixel_size", options.pixelSize ? Json(*options.pixelSize) : Json(nullptr)}};
}

Json json(cv::Size size) { return {{"cols", size.width}, {"rows", size.height}}; }

Json json(const RunFacts& facts) {
  if (facts.mosaic.empty()) return nullptr;
  return {{"cols", facts.mosaic.width},
          {"rows", facts.mosaic.height},
          {"first_frame", pointJson(facts.firstInMosaic)}};
}

}  // namespace

std::string reportJson(const StitchOptions& options, const RunFacts& facts, const StitchLog& log) {
  Json report = {{"version", FRAMEQUILT_VERSION},
                 {"backend", facts.backend},
                 {"scale", facts.scale},
                 {"options", json(options)},
                 {"mosaic", json(facts)},
                 {"frame_size", json(facts.frame)},
                 {"frames_read", log.entries().size()},
                 {"joined", log.joined()},
                 {"refused", log.refused()},
                 {"left_out", facts.leftOut},
                 {"dropped", facts.dropped},
                 {"full", facts.full},
                 {"interrupted", facts.interrupted},
                 {"frames", Json::array()}};
  for (const StitchLog::Entry& entry : log.entries()) report["frames"].push_back(json(entry));
  // A file name may hold bytes that are not UTF-8.
  return report.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace framequilt::tool
