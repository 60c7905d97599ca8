// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "imaging/cpu_level.h"
#include "tests/fuzz/target.h"

namespace framequilt::fuzz {

/// Calls `check` at each level of this machine, and goes back to the level in use.
template <class Check>
void atEachLevel(Check check) {
  static const std::vector<CpuLevel> levels = cpuLevels();
  const CpuLevel before = cpuLevel();
  for (const CpuLevel level : levels) {
    setCpuLevel(level);
    placeOfCheck() = nameOf(level);
    check();
  }
  placeOfCheck() = "";
  setCpuLevel(before);
}

}  // namespace framequilt::fuzz
