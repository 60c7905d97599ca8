// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core/mat.hpp>

namespace framequilt {

/// The mosaic as the last joined frame left it, for any thread to copy from.
///
/// Steady coordinates count from the first placed frame. The thread that stitches publishes and
/// views; every other copies.
class PublishedMosaic {
 public:
  /// \param matrix  The mosaic with its margins; its pixels are shared.
  /// \param box     What frames fill of it.
  /// \param origin  The first placed frame in it.
  void publish(const cv::Mat& matrix, const cv::Rect& box, cv::Point origin);

  /// The box, sharing its pixels; empty before anything was published.
  cv::Mat view() const;
  cv::Rect steadyBox() const;
  /// Parts outside of the box are 0. The type is that of the mosaic, `type` before there is one.
  cv::Mat copy(const cv::Rect& steadyRegion, int type) const;

 private:
  // All three are read under the lock that the engine holds while it blends.
  cv::Mat matrix_;
  cv::Rect box_;
  cv::Point origin_;
};

}  // namespace framequilt
