// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace framequilt::tool {

/// Where a capture stands.
struct CaptureProgress {
  std::size_t done = 0;              ///< Frames handed over.
  std::optional<std::size_t> total;  ///< Frames in all, where known.
  std::size_t joined = 0;
  std::size_t refused = 0;
  double seconds = 0;  ///< Since the first frame.
};

/// "12 of 40 frames, 11 joined, 1 refused, 8.4 frames/s, 0:03 left". Without a total neither it nor
/// the time left is told, without time spent no rate.
std::string progressText(const CaptureProgress& progress);

}  // namespace framequilt::tool
