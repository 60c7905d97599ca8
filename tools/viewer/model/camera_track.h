// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <framequilt/session.h>

#include <QPointF>
#include <QRectF>
#include <opencv2/core/types.hpp>
#include <optional>
#include <vector>

namespace framequilt::viewer {

/// Where a frame lies, in steady mosaic pixels.
struct FrameMark {
  QRectF place;
  bool joined = false;
  /// A refused frame lies where its offset says; without an offset the mark is where the camera
  /// was known to be last.
  bool measured = false;
};

/// The way of the camera over the mosaic.
class CameraTrack {
 public:
  /// \param frame  In frame pixels.
  /// \param scale  Frame pixels per mosaic pixel.
  void begin(cv::Size frame, int scale);
  /// The next frame, in the order of the capture.
  void add(const FrameResult& result);

  /// One mark a frame.
  const std::vector<FrameMark>& marks() const { return marks_; }
  /// The middles of the joined frames in their order.
  const std::vector<QPointF>& path() const { return path_; }

 private:
  QRectF placeAt(cv::Point placement) const;
  void markFirstJoined();

  cv::Size frame_;
  int scale_ = 1;
  std::vector<FrameMark> marks_;
  std::vector<QPointF> path_;
  std::size_t first_ = 0;  // That may become part of the mosaic.
  cv::Point reference_;    // Placement of the frame that the next one is matched with.
};

}  // namespace framequilt::viewer
