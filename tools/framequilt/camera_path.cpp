// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/camera_path.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "tools/framequilt/seeded_random.h"

namespace framequilt::tool {
namespace {

// Paths are drawn in whole ticks, a pixel or a hundredth of one, so that they have no rounding.
constexpr int kTicksOfSubpixel = 100;
constexpr int kUnevenPixels = 4;

int ticksPerPixel(const PathOptions& options) { return options.subpixel ? kTicksOfSubpixel : 1; }

/// Lengths of steps along one side of the frame, in ticks.
struct StepRange {
  int shortest;
  int longest;
};

StepRange stepRange(int side, const PathOptions& options) {
  // Keeps 0.4 * 640 at 256 although 1 - 0.6 is a little more than 0.4.
  constexpr double kRoundingError = 1e-6;
  const double ticks = static_cast<double>(side) * ticksPerPixel(options);
  const double shortest = (1 - options.highestOverlap) * ticks;
  const double longest = (1 - options.lowestOverlap) * ticks;
  StepRange range{static_cast<int>(std::ceil(shortest - kRoundingError)),
                  static_cast<int>(std::floor(longest + kRoundingError))};
  if (range.shortest > range.longest) {  // No whole number of ticks lies between them.
    range.shortest = range.longest = static_cast<int>(std::lround(longest));
  }
  return {std::max(1, range.shortest), std::max(1, range.longest)};
}

/// One direction of the scene, in ticks.
struct Axis {
  int side;    ///< Of the frame.
  int last;    ///< The largest coordinate of a frame's corner.
  int uneven;  ///< How far a serpentine strays from its line, to either side.
  StepRange step;
};

using Axes = std::array<Axis, 2>;  // To the side, and down.
using Place = std::array<int, 2>;  // A frame's corner.

/// How far a step of `length` ticks along `along` may lead across it, so that it stays the farther
/// one both in pixels and as a fraction of the frame's side.
int sidewaysLimit(int length, const Axis& along, const Axis& across) {
  const std::int64_t sameFraction = std::int64_t{length} * across.side / along.side;
  return static_cast<int>(std::min<std::int64_t>(length - 1, sameFraction));
}

Axes axesOf(cv::Size scene, const PathOptions& options) {
  const int ticks = ticksPerPixel(options);
  const auto axis = [&](int side, int extent) {
    return Axis{side * ticks, (extent - side) * ticks, 0, stepRange(side, options)};
  };
  Axes axes{axis(options.frame.width, scene.width), axis(options.frame.height, scene.height)};
  for (std::size_t i = 0; i < axes.size(); ++i) {
    const Axis& along = axes[1 - i];
    Axis& across = axes[i];
    // From one side of the line to the other is twice as far.
    across.uneven =
        std::min(kUnevenPixels * ticks, sidewaysLimit(along.step.shortest, along, across) / 2);
  }
  return axes;
}

/// A length of a step that fits into `room` ticks; none when even the shortest does not.
std::optional<int> drawStep(const StepRange& step, int room, SeededRandom& random) {
  if (room < step.shortest) return std::nullopt;
  return random.between(step.shortest, std::min(step.longest, room));
}

/// `value` or a little beside it, inside the scene.
int strayed(int value, int by, const Axis& axis, SeededRandom& random) {
  return std::clamp(value + random.between(-by, by), 0, axis.last);
}

std::vector<Place> serpentine(const Axes& axes, std::size_t frames, SeededRandom& random) {
  const auto& [across, down] = axes;
  int line = down.uneven;
  bool forward = true;
  Place place{strayed(across.uneven, across.uneven, across, random),
              strayed(line, down.uneven, down, random)};
  std::vector<Place> path{place};
  while (path.size() < frames) {
    const int ahead = forward ? across.last - place[0] : place[0];
    if (const auto step = drawStep(across.step, ahead, random)) {
      place[0] += forward ? *step : -*step;
      place[1] = strayed(line, down.uneven, down, random);
    } else if (const auto stepDown = drawStep(down.step, down.last - place[1], random)) {
      place[0] = strayed(place[0], across.uneven, across, random);
      place[1] += *stepDown;
      line += *stepDown;
      forward = !forward;
    } else {
      break;
    }
    path.push_back(place);
  }
  return path;
}

/// Where the camera may be heading: 0 and 1 are right and left, 2 and 3 down and up.
struct Heading {
  int code;
  std::size_t axis() const { return static_cast<std::size_t>(code / 2); }
  bool forward() const { return code % 2 == 0; }
  int reverse() const { return code ^ 1; }
};

int room(const Axes& axes, const Place& place, Heading heading) {
  const std::size_t i = heading.axis();
  return heading.forward() ? axes[i].last - place[i] : place[i];
}

/// Keeps the heading half of the times, turns otherwise, and goes straight back only where nothing
/// else is left. That is always possible: a step was at least as long as the shortest one.
Heading nextHeading(const Axes& axes, const Place& place, Heading heading, SeededRandom& random) {
  std::vector<int> open;
  for (const int code : {0, 1, 2, 3}) {
    const Heading candidate{code};
    const bool fits = room(axes, place, candidate) >= axes[candidate.axis()].step.shortest;
    if (fits && code != heading.reverse()) open.push_back(code);
  }
  if (open.empty()) return {heading.reverse()};
  const bool keeps = random.between(0, 1) == 0;
  if (keeps && std::find(open.begin(), open.end(), heading.code) != open.end()) return heading;
  return {open[static_cast<std::size_t>(random.between(0, static_cast<int>(open.size()) - 1))]};
}

std::vector<Place> drift(const Axes& axes, std::size_t frames, SeededRandom& random) {
  Place place{};
  for (std::size_t i = 0; i < place.size(); ++i) {
    place[i] = random.between(0, std::max(0, axes[i].last - axes[i].step.longest));
  }
  Heading heading{axes[0].last >= axes[0].step.longest ? 0 : 2};
  std::vector<Place> path{place};
  while (path.size() < frames) {
    heading = nextHeading(axes, place, heading, random);
    const std::size_t main = heading.axis();
    const auto step = drawStep(axes[main].step, room(axes, place, heading), random);
    if (!step) break;
    const std::size_t other = 1 - main;
    place[main] += heading.forward() ? *step : -*step;
    const int limit = sidewaysLimit(*step, axes[main], axes[other]);
    place[other] = strayed(place[other], limit, axes[other], random);
    path.push_back(place);
  }
  return path;
}

}  // namespace

cv::Size longestStep(const PathOptions& options) {
  const int ticks = ticksPerPixel(options);
  const auto pixels = [&](int side) {
    return (stepRange(side, options).longest + ticks - 1) / ticks;
  };
  return {pixels(options.frame.width), pixels(options.frame.height)};
}

bool holdsStep(cv::Size scene, const PathOptions& options) {
  const cv::Size room = scene - options.frame;
  const cv::Size step = longestStep(options);
  return room.width >= 0 && room.height >= 0 &&
         (room.width >= step.width || room.height >= step.height);
}

std::vector<cv::Point2d> cameraPath(cv::Size scene, const PathOptions& options,
                                    std::uint32_t seed) {
  SeededRandom random(seed, RandomPurpose::kPath);
  const Axes axes = axesOf(scene, options);
  const auto frames = static_cast<std::size_t>(options.frames);
  const double ticks = ticksPerPixel(options);
  std::vector<cv::Point2d> path;
  for (const Place& place : options.shape == PathShape::kSerpentine
                                ? serpentine(axes, frames, random)
                                : drift(axes, frames, random)) {
    path.emplace_back(place[0] / ticks, place[1] / ticks);
  }
  return path;
}

}  // namespace framequilt::tool
