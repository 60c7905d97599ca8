// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core/types.hpp>
#include <optional>
#include <string>
#include <vector>

namespace framequilt::bench {

/// What OpenCV's stitcher made of a capture.
struct ScansResult {
  std::string failure;  ///< Why there is no mosaic; empty when there is one.
  /// For each frame, its top-left corner from that of the first one used; none: left out.
  std::vector<std::optional<cv::Point2d>> places;
};

/// OpenCV's `Stitcher` for scans, as it comes, over all frames at once.
ScansResult stitchAsScans(const std::vector<cv::Mat>& frames);

}  // namespace framequilt::bench
