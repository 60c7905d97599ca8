// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/framequilt/options_journal.h"
#include "tools/framequilt/stitch_command.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {

/// Stitches the recorded frames of a journal again, writes nothing, and reports whether every
/// record and the mosaic are the same.
///
/// \return kDone, or kReplayDiffers.
/// \throws ToolError, Error for a journal or frames that cannot be used.
ExitStatus replay(const ReplayOptions& options, const Streams& streams);

}  // namespace framequilt::tool
