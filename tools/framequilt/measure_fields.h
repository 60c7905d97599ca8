// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <framequilt/session.h>

#include <array>
#include <optional>

namespace framequilt::tool {

/// A value that is held against a limit, as reports name it.
struct MeasureField {
  const char* name;   ///< In the JSON report: "brightness_difference".
  const char* label;  ///< For people: "brightness difference".
  Refusal refusal;    ///< What it is refused for; `wordsFor` has its unit and how the limit stands.
  std::optional<Measure> (*of)(const Measures& measures);
};

/// All of them, in the order in which they are measured.
const std::array<MeasureField, 6>& measureFields();

}  // namespace framequilt::tool
