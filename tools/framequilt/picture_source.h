// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <memory>
#include <vector>

#include "tools/framequilt/frame_source.h"

namespace framequilt::tool {

/// The pictures (one or more) as frames, each of them: `settings.every` has been applied.
///
/// The capture has the size that most of the pictures have, of several such sizes the one that
/// comes first, and colour when one of its pictures has. The others are remarked on and left out.
///
/// \throws ToolError when no picture can be read.
std::unique_ptr<FrameSource> openPictures(const std::vector<std::filesystem::path>& pictures,
                                          const InputSettings& settings);

/// The pictures of a capture whose shape is known, as `FrameSource::origin` told them: no headers
/// are read.
///
/// \param leftOut  Pictures that were left out already.
std::unique_ptr<FrameSource> reopenPictures(const std::vector<CaptureOrigin::Picture>& pictures,
                                            const CaptureShape& shape, std::size_t leftOut,
                                            const InputSettings& settings);

}  // namespace framequilt::tool
