// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>

#include "tools/framequilt/frame_source.h"
#include "tools/framequilt/simulation.h"

namespace framequilt::tool {

/// The frames of a capture that is simulated over a generated scene, made when their turn comes.
/// Of `settings` only `interrupted` is looked at.
///
/// \throws ToolError when the capture would need too large a scene.
std::unique_ptr<FrameSource> openSimulation(const SimulationOptions& options,
                                            const InputSettings& settings);

}  // namespace framequilt::tool
