// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <opencv2/core/types.hpp>
#include <optional>

namespace framequilt::tool {

/// How the camera is known to have moved between the frames of a capture.
class Hints {
 public:
  /// None known.
  Hints() = default;

  /// From a file with columns frame, dx, dy (the way since the frame before) or frame, x, y (the
  /// position), in pixels of the frames; frames count from 1.
  /// \throws ToolError naming the file, the line and what is wrong.
  static Hints fromFile(const std::filesystem::path& file);

  /// The way from one frame to a later one, rounded to whole pixels; none where a frame on it is
  /// missing in the file, and where it is longer than any.
  std::optional<cv::Point> between(std::size_t from, std::size_t to) const;

 private:
  std::map<std::size_t, cv::Point2d> positions_;
  std::map<std::size_t, cv::Point2d> steps_;
};

}  // namespace framequilt::tool
