// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <framequilt/session.h>

#include <nlohmann/json.hpp>

namespace framequilt::tool {

/// As {"x": .., "y": ..}.
nlohmann::ordered_json pointJson(cv::Point point);

/// As {"value": .., "limit": ..}; the value is null where nothing could be measured.
nlohmann::ordered_json measureJson(const Measure& measure);

/// Those that are there, each under its name.
nlohmann::ordered_json measuresJson(const Measures& measures);

}  // namespace framequilt::tool
