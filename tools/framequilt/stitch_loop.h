// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <framequilt/session.h>

#include <functional>

#include "tools/framequilt/console.h"
#include "tools/framequilt/frame_source.h"
#include "tools/framequilt/hints.h"
#include "tools/framequilt/stitch_log.h"

namespace framequilt::tool {

/// How a capture came to its end.
struct LoopEnd {
  bool full = false;
  bool interrupted = false;
  bool brokenOff = false;  ///< Something failed.
};

/// Told of each frame once it is decided; false ends the run. What it throws leaves the loop when
/// it is a `JournalError`.
using FrameWitness = std::function<bool(const SourceFrame& frame, const FrameResult& result)>;

/// Offers the frames of `source` one after another until they end, the mosaic is full, the user
/// wants to stop or something breaks off; all but the first is remarked on.
LoopEnd stitchFrames(FrameSource& source, const Hints& hints, Session& session, StitchLog& log,
                     Console& console, const FrameWitness& witness = {});

}  // namespace framequilt::tool
