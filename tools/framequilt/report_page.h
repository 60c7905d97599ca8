// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core/mat.hpp>
#include <string>

#include "tools/framequilt/deep_zoom.h"

namespace framequilt::tool {

/// Where the page takes the mosaic from: JSON for the viewer in it.
std::string tilesOf(const DeepZoom& pyramid, cv::Size mosaic);
/// The mosaic itself as a JPEG, made smaller where it has to be; "null" for an empty one.
std::string tilesInside(const cv::Mat& mosaic);

/// A page that shows the mosaic, the frames in it and what was measured, on its own: it takes
/// nothing from anywhere but, perhaps, the tiles beside it.
///
/// \param title   What it is called; bytes that are not UTF-8 are replaced.
/// \param tiles   Of the two above.
/// \param report  What `reportJson` gives.
std::string reportPage(const std::string& title, const std::string& tiles,
                       const std::string& report);

}  // namespace framequilt::tool
