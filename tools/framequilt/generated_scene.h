// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <opencv2/core/mat.hpp>

namespace framequilt::tool {

/// A blue-green-red picture full of corners: rectangles of many sizes and colours on one another,
/// a little softened, between dark and light gray. The same for a seed on every machine.
cv::Mat generateScene(cv::Size size, std::uint32_t seed);

}  // namespace framequilt::tool
