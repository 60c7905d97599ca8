// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <framequilt/session.h>

#include <cstddef>
#include <functional>
#include <opencv2/core/mat.hpp>
#include <string>

#include "tools/framequilt/frame_source.h"
#include "tools/framequilt/options_stitch.h"
#include "tools/framequilt/stitch_log.h"
#include "tools/framequilt/stitch_loop.h"
#include "tools/framequilt/stitch_outputs.h"

namespace framequilt::tool {

/// What the library is asked for a capture of that shape.
SessionOptions sessionOptions(const StitchOptions& options, const CaptureShape& shape);

/// A capture as far as it has been stitched.
struct StitchedCapture {
  const Session& session;
  const SessionOptions& sessionOptions;
  const StitchLog& log;
  LoopEnd end;
  std::size_t leftOut = 0;  ///< Pictures that could not be used.
  std::size_t dropped = 0;  ///< Frames of a camera that came too fast.
};

/// Gets remarks, a line each.
using Note = std::function<void(const std::string& line)>;

/// Publishes whatever `outputs` wants: the report in any case, the rest where frames were joined.
/// One that cannot be written does not keep the others back.
/// \returns the mosaic that was written, which shares its pixels with the session; empty when none
///          was.
/// \throws ToolError naming the last file that could not be written; those before it are remarked
///         on to `note`.
cv::Mat publishResults(const StitchOptions& options, const StitchedCapture& capture,
                       StitchOutputs& outputs, const Note& note);

}  // namespace framequilt::tool
