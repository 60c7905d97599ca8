// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "bench/contender.h"

namespace framequilt::bench {

/// This library on the host, frames judged by motion, static scene: the entry points with a corner
/// budget of 1, the same with 8, and a session with its default budget. The library has one run at
/// a time, so that one of them can be open at once.
std::vector<Entry> ourContenders();

}  // namespace framequilt::bench
