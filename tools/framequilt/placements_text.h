// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>

#include "tools/framequilt/stitch_log.h"

namespace framequilt::tool {

/// Where the frames lie, in the form that the name of `file` asks for: JSON for .json, a tile
/// configuration for .txt, else comma-separated values.
/// \throws ToolError as `tileConfiguration` does.
std::string placementsText(const StitchLog& log, const std::filesystem::path& file);

/// One JSON array with an object for each frame, of the fields that the CSV has; a refused frame
/// has neither x nor y.
std::string placementsJson(const StitchLog& log);

/// The joined frames in the form of TileConfiguration.registered.txt, which microscopy tools read:
/// "name; ; (x, y)" below a head of comments and the number of dimensions.
/// \throws ToolError for a name that this form cannot hold; `file` is what the message calls it.
std::string tileConfiguration(const StitchLog& log, const std::filesystem::path& file);

}  // namespace framequilt::tool
