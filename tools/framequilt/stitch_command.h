// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ostream>

#include "tools/framequilt/frame_source.h"
#include "tools/framequilt/options_stitch.h"
#include "tools/framequilt/run_journal.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {

/// Where the command speaks.
struct Streams {
  std::ostream& out;    ///< Results.
  std::ostream& notes;  ///< Remarks and progress.
  bool notesOnTerminal = false;
};

/// Stitches the frames of `options`, writes the mosaic and what else is asked for, and sums up.
///
/// A run that breaks off (interrupted, out of memory, mosaic full) still writes the mosaic it has.
/// \return kMosaicWritten, or kNothingJoined with no mosaic written.
/// \throws ToolError, Error for input, options or output that cannot be used.
ExitStatus stitch(const StitchOptions& options, const Streams& streams);

/// The same for the capture that `open` opens, by a journal unless that is null.
/// \throws JournalError for frames that do not come out as the journal has them; nothing is
/// written.
ExitStatus stitchCapture(const StitchOptions& options, const Streams& streams,
                         const SourceOpener& open, RunJournal* journal);

}  // namespace framequilt::tool
