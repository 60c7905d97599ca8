// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/measure_fields.h"

namespace framequilt::tool {
namespace {

template <std::optional<Measure> Measures::*kMember>
std::optional<Measure> member(const Measures& measures) {
  return measures.*kMember;
}

std::optional<Measure> matchesOf(const Measures& measures) { return measures.matches; }

constexpr std::array<MeasureField, 6> kFields = {{
    {"matches", "matches", Refusal::kTooFewMatches, matchesOf},
    {"moved_percent", "moved by", Refusal::kMovedTooLittle, member<&Measures::moved>},
    {"overlap_percent", "overlap", Refusal::kMovedTooFar, member<&Measures::overlap>},
    {"change", "change", Refusal::kMovingScene, member<&Measures::change>},
    {"brightness_difference", "brightness difference", Refusal::kBrightness,
     member<&Measures::brightness>},
    {"sharpness_difference", "sharpness difference", Refusal::kSharpness,
     member<&Measures::sharpness>},
}};

}  // namespace

const std::array<MeasureField, 6>& measureFields() { return kFields; }

}  // namespace framequilt::tool
