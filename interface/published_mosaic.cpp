// SPDX-License-Identifier: Apache-2.0
#include "interface/published_mosaic.h"

#include <cstdint>
#include <mutex>
#include <opencv2/core.hpp>

#include "interface/mosaic_lock.h"

namespace framequilt {

void PublishedMosaic::publish(const cv::Mat& matrix, const cv::Rect& box, cv::Point origin) {
  const std::lock_guard lock(mosaicMutex());
  matrix_ = matrix;
  box_ = box;
  origin_ = origin;
}

cv::Mat PublishedMosaic::view() const {
  const std::lock_guard lock(mosaicMutex());
  return matrix_.empty() ? cv::Mat() : matrix_(box_);
}

cv::Rect PublishedMosaic::steadyBox() const {
  const std::lock_guard lock(mosaicMutex());
  return box_ - origin_;
}

cv::Mat PublishedMosaic::copy(const cv::Rect& steadyRegion, int type) const {
  cv::Mat pixels = cv::Mat::zeros(steadyRegion.size(), type);
  const std::lock_guard lock(mosaicMutex());
  // Wide enough for any corner of a region.
  using WideRect = cv::Rect_<std::int64_t>;
  const WideRect wanted(std::int64_t{steadyRegion.x} + origin_.x,
                        std::int64_t{steadyRegion.y} + origin_.y, steadyRegion.width,
                        steadyRegion.height);
  const WideRect there = wanted & WideRect(box_.x, box_.y, box_.width, box_.height);
  if (!there.empty()) matrix_(cv::Rect(there)).copyTo(pixels(cv::Rect(there - wanted.tl())));
  return pixels;
}

}  // namespace framequilt
