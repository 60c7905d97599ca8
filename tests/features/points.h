// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <framequilt/records.h>

#include <ostream>
#include <vector>

inline bool operator==(const SPoint& a, const SPoint& b) { return a.x == b.x && a.y == b.y; }

/// How a point is shown when an expectation fails.
inline void PrintTo(const SPoint& point, std::ostream* out) {
  *out << "(" << point.x << ", " << point.y << ")";
}

using Points = std::vector<SPoint>;
