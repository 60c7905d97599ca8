// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ostream>

#include "tools/framequilt/options_stitch.h"
#include "tools/framequilt/run_driver.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {

/// Stitches the pictures of `options`, writes the mosaic and sums up on `out`; notes go to `notes`.
///
/// A run that breaks off (out of memory, mosaic full, a picture that can no longer be read) still
/// writes the mosaic it has.
/// \return kMosaicWritten, or kNothingJoined with no file written.
/// \throws ToolError for input or output that cannot be used.
ExitStatus stitch(const StitchOptions& options, std::ostream& out, std::ostream& notes,
                  const EntryPoints& engine = {});

}  // namespace framequilt::tool
