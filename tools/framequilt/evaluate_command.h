// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ostream>

#include "tools/framequilt/options_evaluate.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {

/// Compares the two tables of `options` and reports on `out`.
/// \throws ToolError for tables that cannot be read or do not belong together.
ExitStatus evaluate(const EvaluateOptions& options, std::ostream& out);

}  // namespace framequilt::tool
