// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>
#include <string>

namespace framequilt::pictures {

/// For each reason to refuse a frame, a pair of frames out of `scene` that is refused for it, and
/// mostly one beside it that is joined. Writes gate-*.jpg to `folder`, and to standard output what
/// the session said of each pair.
/// \throws std::runtime_error when a pair is judged otherwise.
void writeGatePictures(const cv::Mat& scene, const std::string& folder);

}  // namespace framequilt::pictures
