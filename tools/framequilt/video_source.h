// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <memory>

#include "tools/framequilt/frame_source.h"

namespace framequilt::tool {

/// Whether the extension is that of a video.
bool namesVideo(const std::filesystem::path& file);

/// The frames of a video file, in colour, numbered from 1 in the order they are shown.
///
/// OpenCV 4.6 does not notice when frames change size in mid-file: FFmpeg's come in the size of the
/// first, with pixels that are none of theirs. Files of that kind are rare (recorded broadcasts).
///
/// \throws ToolError when the file cannot be read.
std::unique_ptr<FrameSource> openVideo(const std::filesystem::path& file,
                                       const InputSettings& settings);

}  // namespace framequilt::tool
