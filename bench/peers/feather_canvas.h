// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core/mat.hpp>

namespace framequilt::bench {

/// A canvas that grows by whole frames and mixes every frame with what lies there already, by
/// weights that fall towards the edges of the frames.
class FeatherCanvas {
 public:
  /// \param first  Lies in the middle of a canvas of three by three frames.
  explicit FeatherCanvas(const cv::Mat& first);

  /// \param place  From the corner of the first frame.
  void paste(const cv::Mat& frame, cv::Point place);

  const cv::Mat& pixels() const { return pixels_; }

 private:
  void makeRoomFor(const cv::Rect& box);

  cv::Mat frameWeights_;  ///< One float a pixel: 1 inside, falling towards the edges.
  cv::Mat pixels_;
  cv::Mat weights_;  ///< The largest of those pasted there; 0 where no frame lies.
  cv::Point first_;  ///< Corner of the first frame in the canvas.
};

}  // namespace framequilt::bench
