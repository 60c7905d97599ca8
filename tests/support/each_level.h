// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include "imaging/cpu_level.h"

/// Calls `check` at each level of this machine, and goes back to the level in use.
template <class Check>
void atEachLevel(Check check) {
  const framequilt::CpuLevel before = framequilt::cpuLevel();
  for (const framequilt::CpuLevel level : framequilt::cpuLevels()) {
    SCOPED_TRACE(framequilt::nameOf(level));
    framequilt::setCpuLevel(level);
    check();
  }
  framequilt::setCpuLevel(before);
}
