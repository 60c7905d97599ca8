// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "tools/framequilt/tool_error.h"

/// What the ToolError of `action` says, "no error" where it throws none.
template <class Action>
std::string toolErrorOf(Action action) {
  try {
    action();
  } catch (const framequilt::tool::ToolError& failure) {
    return failure.what();
  }
  return "no error";
}
