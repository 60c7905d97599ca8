// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ostream>

#include "tools/framequilt/options_simulate.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {

/// Writes the capture that `options` ask for and sums up on `out`. The truth comes first, so that a
/// capture which broke off is known as one.
/// \throws ToolError for a scene or a folder that cannot be used.
ExitStatus simulate(const SimulateOptions& options, std::ostream& out);

}  // namespace framequilt::tool
