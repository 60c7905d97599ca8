// SPDX-License-Identifier: Apache-2.0
#include "interface/judgement.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace framequilt {
namespace {

/// Fewer agreeing pairs are not blended.
constexpr int kFewestPairs = 11;
/// So many agree by chance in frames that share nothing.
constexpr int kMostByChance = 3;

/// How far the view moved along the side it moved most, in working pixels.
struct Shift {
  int distance;
  int side;
};

Shift largerShift(const stitchflags& record, const SessionOptions& options) {
  const int across = std::abs(record.offsetX);
  const int down = std::abs(record.offsetY);
  return across > down ? Shift{across, options.cols / options.scale}
                       : Shift{down, options.rows / options.scale};
}

Measure percentMoved(const Shift& shift, const Limits& limits) {
  return {100.0 * shift.distance / shift.side, 100.0 * (1.0F - limits.mostOverlap)};
}

Measure percentOverlap(const Shift& shift, const Limits& limits) {
  return {100.0 * (shift.side - shift.distance) / shift.side, 100.0 * limits.leastOverlap};
}

Measure difference(float one, float two, float limit) { return {std::fabs(one - two), limit}; }

Measures measuresOf(const EngineCall& call, const SessionOptions& options) {
  Measures measures;
  const stitchflags& record = call.record;
  measures.matches = {static_cast<double>(record.matchNum), kFewestPairs};
  if (call.result < 0) return measures;
  measures.offset = cv::Point(record.offsetX, record.offsetY) * options.scale;
  const Shift shift = largerShift(record, options);
  measures.moved = percentMoved(shift, call.limits);
  measures.overlap = percentOverlap(shift, call.limits);
  if (options.criterion == Criterion::kOverlap) {
    measures.brightness = difference(record.brightOne, record.brightTwo, call.limits.brightness);
    measures.sharpness =
        difference(record.definitionOne, record.definitionTwo, call.limits.sharpness);
  } else if (call.motion && (options.dynamicScene || record.stitch_flags != 1)) {
    // What a static scene allows is nearly everything, and mostly not measured.
    measures.change = {static_cast<double>(*call.motion), static_cast<double>(call.limits.change)};
  }
  return measures;
}

/// The first criterion that the frame did not meet.
Refusal reasonOf(const EngineCall& call, const Measures& measures, const SessionOptions& options) {
  if (call.result < 0) {
    return call.record.matchNum > kMostByChance ? Refusal::kTooFewMatches : Refusal::kNoOverlap;
  }
  if (call.record.stitch_flags != 1) {
    if (options.criterion == Criterion::kMotion) return Refusal::kMovingScene;
    // Not-a-number is no difference below the limit either.
    const bool bright = measures.brightness->value < measures.brightness->limit;
    return bright ? Refusal::kSharpness : Refusal::kBrightness;
  }
  const Shift shift = largerShift(call.record, options);
  const float tooFar = (1.0F - call.limits.leastOverlap) * static_cast<float>(shift.side);
  return static_cast<float>(shift.distance) < tooFar ? Refusal::kMovedTooLittle
                                                     : Refusal::kMovedTooFar;
}

Measure measureBehind(Refusal reason, const Measures& measures) {
  switch (reason) {
    case Refusal::kMovedTooLittle:
      return measures.moved.value_or(Measure{});
    case Refusal::kMovedTooFar:
      return measures.overlap.value_or(Measure{});
    case Refusal::kMovingScene:
      return measures.change.value_or(Measure{});
    case Refusal::kBrightness:
      return measures.brightness.value_or(Measure{});
    case Refusal::kSharpness:
      return measures.sharpness.value_or(Measure{});
    default:
      return measures.matches;
  }
}

}  // namespace

Judgement judge(const EngineCall& call, const SessionOptions& options) {
  Judgement judgement;
  judgement.measures = measuresOf(call, options);
  if (call.blended) return judgement;
  judgement.reason = reasonOf(call, judgement.measures, options);
  judgement.judged = measureBehind(judgement.reason, judgement.measures);
  return judgement;
}

}  // namespace framequilt
