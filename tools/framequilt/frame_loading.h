// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <opencv2/core/mat.hpp>
#include <vector>

#include "tools/framequilt/frame_source.h"

namespace framequilt::tool {

/// Reads every picture once and tells their common shape, so that a picture that cannot be used is
/// known before any is stitched.
///
/// \throws ToolError naming the first picture that is missing, unreadable or of another size.
CaptureShape surveyPictures(const std::vector<std::filesystem::path>& pictures);

/// One picture as a frame: 8 bits, gray or blue-green-red as `channels` asks, turned upright as its
/// EXIF data say. 16-bit pictures are scaled down, transparency is dropped. Bytes of value 0
/// become 1, since a mosaic holds 0 where no frame lies.
///
/// \throws ToolError for a picture that is missing or unreadable.
cv::Mat loadFrame(const std::filesystem::path& picture, int channels);

}  // namespace framequilt::tool
