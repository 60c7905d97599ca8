// SPDX-License-Identifier: Apache-2.0
#include "tools/viewer/model/camera_track.h"

namespace framequilt::viewer {

void CameraTrack::begin(cv::Size frame, int scale) {
  *this = {};
  frame_ = frame;
  scale_ = scale;
}

QRectF CameraTrack::placeAt(cv::Point placement) const {
  const double perPixel = 1.0 / scale_;
  return {placement.x * perPixel, placement.y * perPixel, frame_.width * perPixel,
          frame_.height * perPixel};
}

void CameraTrack::markFirstJoined() {
  FrameMark& first = marks_[first_];
  if (first.joined) return;
  first = {placeAt({0, 0}), true, true};
  path_.push_back(first.place.center());
}

void CameraTrack::add(const FrameResult& result) {
  if (result.verdict == Verdict::kJoined) {
    if (!marks_.empty()) markFirstJoined();
    reference_ = result.placement;
    marks_.push_back({placeAt(reference_), true, true});
    path_.push_back(marks_.back().place.center());
    return;
  }
  if (result.verdict == Verdict::kWaiting || result.becameFirst) {
    first_ = marks_.size();
    reference_ = {};
    marks_.push_back({placeAt(reference_), false, true});
    return;
  }
  const std::optional<cv::Point> offset = result.measures.offset;
  marks_.push_back({placeAt(reference_ + offset.value_or(cv::Point())), false, offset.has_value()});
}

}  // namespace framequilt::viewer
