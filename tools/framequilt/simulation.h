// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "tools/framequilt/camera_path.h"

namespace framequilt::tool {

/// A capture to be cut out of a scene.
struct SimulationOptions {
  PathOptions path;
  double noise = 0;     ///< Standard deviation in gray levels.
  double gain = 0;      ///< Brightness drifts within 1 - gain and 1 + gain; below 1.
  double vignette = 0;  ///< Share of the light, 0 to 1, that the corners lose.
  double blur = 0;      ///< Standard deviation in pixels.
  double rotation = 0;  ///< Each frame is turned by up to so many degrees to either side.
  bool gray = false;
  std::uint32_t seed = 1;
};

/// A capture whose truth is known. Frames are made when they are asked for, in any order, and are
/// the same for equal options on every machine.
class SimulatedCapture {
 public:
  /// \param scene  8 bits, gray or blue-green-red; its pixels are shared, not copied, unless they
  ///               are turned gray.
  /// \param name   What messages call the scene.
  /// \throws ToolError when the scene is smaller than a frame plus a step.
  SimulatedCapture(const cv::Mat& scene, const SimulationOptions& options,
                   const std::string& name = "the scene");

  /// As many as were asked for, or fewer where a serpentine reaches the scene's end.
  int frames() const { return static_cast<int>(path_.size()); }

  /// The top-left corner of frame `index` (from 0) in scene pixels, exactly. A turned frame is
  /// turned about its middle, which is where that of the unturned one would be.
  cv::Point2d truth(int index) const { return path_[static_cast<std::size_t>(index)]; }

  /// The factor of the brightness of frame `index`.
  double gain(int index) const;

  /// Degrees by which the camera is turned clockwise in frame `index`.
  double degrees(int index) const;

  /// The pixels of frame `index`: 8 bits, gray or blue-green-red, packed and the caller's own.
  cv::Mat frame(int index) const;

 private:
  cv::Mat scene_;
  SimulationOptions options_;
  std::vector<cv::Point2d> path_;
};

/// A size at which a scene has room for all frames that are asked for.
/// \throws ToolError when that would be more pixels than fit into memory on most machines.
cv::Size roomyScene(const PathOptions& options);

}  // namespace framequilt::tool
