// SPDX-License-Identifier: Apache-2.0
/// \file
/// The offset estimation of the programs that link scripted_offset.cpp: it gives what the test
/// says, so that limits can be met to the pixel.
#pragma once

#include <string>

#include "tests/support/capture_run.h"

struct ScriptedOffset {
  int dx = 0, dy = 0;
  int matchNum = 100;
  bool found = true;
};

/// Given to every frame from now on.
void scriptOffset(ScriptedOffset offset);
