// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/frame_record.h"

#include "tools/framequilt/content_hash.h"
#include "tools/framequilt/measures_json.h"

namespace framequilt::tool {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kNothing = "nothing";

const char* verdictText(Verdict verdict) {
  switch (verdict) {
    case Verdict::kWaiting:
      return "first";
    case Verdict::kJoined:
      return "joined";
    case Verdict::kRefused:
      return "refused";
    case Verdict::kCancelled:
      break;
  }
  return "cancelled";
}

Json changedJson(const cv::Rect& changed, const cv::Mat& mosaic) {
  return {{"x", changed.x},
          {"y", changed.y},
          {"cols", changed.width},
          {"rows", changed.height},
          {"hash", hashOfPixels(mosaic(changed))}};
}

std::string textOf(const Json& fields, const std::string& name) {
  const auto field = fields.find(name);
  return field == fields.end() ? kNothing : field->dump();
}

}  // namespace

Json frameRecord(const SourceFrame& frame, const std::string& path, const FrameResult& result,
                 const FrameSource& source, const cv::Mat& mosaic) {
  Json record = {{"frame", frame.number}, {"file", frame.name}, {"path", path}};
  if (!frame.path.empty()) record["bytes"] = hashOfFile(frame.path).value_or("");
  record["pixels"] = hashOfPixels(frame.pixels);
  record["verdict"] = verdictText(result.verdict);
  if (result.verdict == Verdict::kRefused) {
    record["reason"] = wordsFor(result.reason).reason;
    record["judged"] = measureJson(result.judged);
  }
  if (result.verdict == Verdict::kJoined) {
    record["placement"] = pointJson(result.placement);
    record["changed"] = changedJson(result.changed, mosaic);
  }
  record["measures"] = measuresJson(result.measures);
  if (result.becameFirst) record["became_first"] = true;
  if (result.full) record["full"] = true;
  record["left_out"] = source.skipped();
  record["dropped"] = source.dropped();
  return record;
}

Json mosaicRecord(const cv::Mat& mosaic) {
  if (mosaic.empty()) return nullptr;
  return {{"cols", mosaic.cols}, {"rows", mosaic.rows}, {"hash", hashOfPixels(mosaic)}};
}

std::optional<RecordDifference> firstDifference(const Json& was, const Json& is) {
  const Json before = was.flatten();
  const Json now = is.flatten();
  for (const Json* fields : {&before, &now}) {
    for (const auto& item : fields->items()) {
      const std::string& name = item.key();
      if (name == "/path" || textOf(before, name) == textOf(now, name)) continue;
      // A whole that is no object has an empty name.
      return RecordDifference{name.empty() ? "all of it" : name.substr(1), textOf(before, name),
                              textOf(now, name)};
    }
  }
  return std::nullopt;
}

std::string differenceText(const RecordDifference& difference) {
  return difference.field + " was " + difference.was + ", is " + difference.is;
}

}  // namespace framequilt::tool
