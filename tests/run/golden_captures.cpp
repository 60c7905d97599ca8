// SPDX-License-Identifier: Apache-2.0
#include "tests/run/golden_captures.h"

#include <array>
#include <cstddef>
#include <cstdint>

#include "framequilt/tuning.h"
#include "tests/support/digest.h"
#include "tests/support/scoped_value.h"

namespace {

/// Exposure of each frame of a noisy capture, in 256ths.
constexpr std::array<int, RoundTrip::kFrames> kGains = {256, 250, 262, 256, 244, 259};

Frame asTaken(const GoldenCapture& capture, const RoundTrip& trip, int index) {
  Frame frame = trip.frame(index);
  if (!capture.noisy) return frame;
  return withNoise(withGain(frame, kGains.at(static_cast<std::size_t>(index)), 0), 3,
                   static_cast<std::uint64_t>(index) + 40);
}

/// Where the strips are cut for a step of the camera: to the left they take the rows the other way
/// round.
Hint hintFor(SPoint step) { return {step.x, step.x < 0 ? -step.y : step.y, true}; }

}  // namespace

std::vector<GoldenCapture> goldenCaptures() {
  std::vector<GoldenCapture> captures;
  for (const CaptureKind& kind : everyKind()) {
    captures.push_back({"exact_" + kind.name(), kind, false, false});
    captures.push_back({"noisy_" + kind.name(), kind, true, false});
  }
  for (const int channels : {1, 3}) {
    const CaptureKind kind = {channels, 1, 1, 0};
    captures.push_back({"hinted_" + kind.name(), kind, true, true});
  }
  return captures;
}

std::string digestOf(const GoldenCapture& capture) {
  const ScopedValue<int> scaleOfRun(scale, capture.kind.scale);
  const RoundTrip trip(capture.kind);
  CaptureRun run(capture.kind.settings());
  Digest digest;
  for (int i = 1; i < RoundTrip::kFrames; ++i) {
    const Frame frame = asTaken(capture, trip, i);
    const Hint hint =
        capture.hinted ? hintFor(RoundTrip::corner(i) - RoundTrip::corner(i - 1)) : Hint{};
    addOutcome(digest,
               i == 1 ? run.first(asTaken(capture, trip, 0), frame, hint) : run.next(frame, hint));
  }
  return digest.hex();
}
