// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/measures_json.h"

#include <cmath>
#include <optional>

#include "tools/framequilt/measure_fields.h"

namespace framequilt::tool {

using Json = nlohmann::ordered_json;

Json pointJson(cv::Point point) { return {{"x", point.x}, {"y", point.y}}; }

// JSON has no not-a-number.
Json measureJson(const Measure& measure) {
  const Json value = std::isnan(measure.value) ? Json(nullptr) : Json(measure.value);
  return {{"value", value}, {"limit", measure.limit}};
}

Json measuresJson(const Measures& measures) {
  Json object = Json::object();
  for (const MeasureField& field : measureFields()) {
    if (const std::optional<Measure> measure = field.of(measures)) {
      object[field.name] = measureJson(*measure);
    }
  }
  if (measures.offset) object["offset"] = pointJson(*measures.offset);
  return object;
}

}  // namespace framequilt::tool
