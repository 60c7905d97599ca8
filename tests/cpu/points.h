// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <framequilt/records.h>

#include <ostream>

inline bool operator==(SPoint a, SPoint b) { return a.x == b.x && a.y == b.y; }

inline std::ostream& operator<<(std::ostream& out, SPoint point) {
  return out << '(' << point.x << ", " << point.y << ')';
}
