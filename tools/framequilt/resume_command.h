// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/framequilt/frame_source.h"
#include "tools/framequilt/options_journal.h"
#include "tools/framequilt/stitch_command.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {

/// Goes on with the run of a journal and writes what it would have written: the same bytes, but for
/// times. A finished run is left alone.
///
/// \param camera  Opens the camera that the run worked with, and is not called otherwise.
/// \return as `stitch`.
/// \throws ToolError, Error for a journal, frames or outputs that cannot be used.
ExitStatus resume(const ResumeOptions& options, const Streams& streams, const SourceOpener& camera);

/// With the camera that the journal names.
ExitStatus resume(const ResumeOptions& options, const Streams& streams);

}  // namespace framequilt::tool
