// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace framequilt::pictures {

/// The steps of a run over `frames`, a capture of colour frames whose neighbours overlap: corners,
/// matches, overlap, weights, the growing mosaic. Writes run-*.jpg to `folder`, and
/// to standard output what was found in the first two.
/// \return The mosaic.
cv::Mat writeRunPictures(const std::vector<cv::Mat>& frames, const std::string& folder);

}  // namespace framequilt::pictures
