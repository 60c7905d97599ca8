// SPDX-License-Identifier: Apache-2.0
#include "bench/peers/feather_canvas.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

namespace framequilt::bench {
namespace {

/// The feather is as wide as an eighth of the frame's shorter side.
cv::Mat featherWeights(cv::Size frame) {
  const int width = std::max(1, std::min(frame.width, frame.height) / 8);
  cv::Mat weights(frame, CV_32F);
  for (int r = 0; r < frame.height; ++r) {
    auto* row = weights.ptr<float>(r);
    const int toRowEdge = std::min(r, frame.height - 1 - r);
    for (int c = 0; c < frame.width; ++c) {
      const int toEdge = std::min(toRowEdge, std::min(c, frame.width - 1 - c));
      row[c] = static_cast<float>(std::min(toEdge + 1, width)) / static_cast<float>(width);
    }
  }
  return weights;
}

}  // namespace

FeatherCanvas::FeatherCanvas(const cv::Mat& first)
    : frameWeights_(featherWeights(first.size())),
      pixels_(cv::Mat::zeros(3 * first.rows, 3 * first.cols, first.type())),
      weights_(cv::Mat::zeros(pixels_.size(), CV_32F)),
      first_(first.cols, first.rows) {
  paste(first, {});
}

void FeatherCanvas::paste(const cv::Mat& frame, cv::Point place) {
  makeRoomFor({first_ + place, frame.size()});
  const cv::Rect box(first_ + place, frame.size());
  cv::Mat there = pixels_(box);
  cv::Mat weightsThere = weights_(box);
  cv::blendLinear(frame, there, frameWeights_, weightsThere, there);
  cv::max(weightsThere, frameWeights_, weightsThere);
}

void FeatherCanvas::makeRoomFor(const cv::Rect& box) {
  const int left = box.x < 0 ? std::max(-box.x, box.width) : 0;
  const int top = box.y < 0 ? std::max(-box.y, box.height) : 0;
  const int beyondRight = box.br().x - pixels_.cols;
  const int beyondBottom = box.br().y - pixels_.rows;
  const int right = beyondRight > 0 ? std::max(beyondRight, box.width) : 0;
  const int bottom = beyondBottom > 0 ? std::max(beyondBottom, box.height) : 0;
  if (left + top + right + bottom == 0) return;
  const auto widened = [&](const cv::Mat& plane) {
    cv::Mat larger;
    cv::copyMakeBorder(plane, larger, top, bottom, left, right, cv::BORDER_CONSTANT);
    return larger;
  };
  pixels_ = widened(pixels_);
  weights_ = widened(weights_);
  first_ += cv::Point(left, top);
}

}  // namespace framequilt::bench
