// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core/mat.hpp>

#include "tools/framequilt/vips_library.h"

namespace framequilt::tool {

/// `picture` (8 bits, gray or blue-green-red; rows may lie apart) as libvips sees it, in gray or
/// red-green-blue. No copy: it reads from the pixels, which have to outlive it, as it goes.
///
/// \param pixelsPerMillimetre  What file formats with a resolution keep; 1 where it is unknown.
/// \throws ToolError, std::bad_alloc.
GObjectPtr<VipsImage> vipsViewOf(const cv::Mat& picture, double pixelsPerMillimetre = 1.0);

}  // namespace framequilt::tool
