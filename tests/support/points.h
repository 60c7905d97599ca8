// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <framequilt/records.h>

#include <ostream>
#include <vector>

using Points = std::vector<SPoint>;

inline bool operator==(SPoint a, SPoint b) { return a.x == b.x && a.y == b.y; }

/// How a point is shown when an expectation fails.
inline void PrintTo(SPoint point, std::ostream* out) {
  *out << '(' << point.x << ", " << point.y << ')';
}
