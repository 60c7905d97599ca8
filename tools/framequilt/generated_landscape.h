// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <opencv2/core/mat.hpp>

namespace framequilt::tool {

/// A blue-green-red picture of hills, shores and water from above, lit from the top left, with
/// texture of every size down to a few pixels. The same for a seed, but for the last bit of floats.
cv::Mat generateLandscape(cv::Size size, std::uint32_t seed);

}  // namespace framequilt::tool
