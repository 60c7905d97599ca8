// SPDX-License-Identifier: Apache-2.0
#include "cpu/hint_strip.h"

#include <algorithm>

namespace framequilt {
namespace {

/// The end of an axis that both images show when the content lies `offset` further on in one of
/// them: [offset, side) there, [0, side - offset) in the other.
HintRange farPart(int offset, int side) { return {offset, side, offset}; }
HintRange nearPart(int offset, int side) { return {0, side - offset, 0}; }

HintRange part(bool far, int offset, int side) {
  return far ? farPart(offset, side) : nearPart(offset, side);
}

/// How far a hint goes along an axis, at most the whole of it.
int distanceWithin(int offset, int side) {
  const int limit = std::max(side, 0);
  const int held = std::clamp(offset, -limit, limit);
  return held < 0 ? -held : held;
}

}  // namespace

HintStrip stripOfReference(int dx, int dy, int rows, int cols) {
  const bool farRows = (dx >= 0) == (dy >= 0);
  return {part(farRows, distanceWithin(dy, rows), rows),
          part(dx >= 0, distanceWithin(dx, cols), cols)};
}

HintStrip stripOfNewFrame(int dx, int dy, int rows, int cols) {
  const bool farRows = (dx >= 0) != (dy >= 0);
  return {part(farRows, distanceWithin(dy, rows), rows),
          part(dx < 0, distanceWithin(dx, cols), cols)};
}

}  // namespace framequilt
