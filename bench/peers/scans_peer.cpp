// SPDX-License-Identifier: Apache-2.0
#include "bench/peers/scans_peer.h"

#include <opencv2/core.hpp>
#include <opencv2/stitching.hpp>

namespace framequilt::bench {
namespace {

std::string words(cv::Stitcher::Status status) {
  switch (status) {
    case cv::Stitcher::OK:
      return "";
    case cv::Stitcher::ERR_NEED_MORE_IMGS:
      return "too few frames match";
    case cv::Stitcher::ERR_HOMOGRAPHY_EST_FAIL:
      return "no estimate of the transforms";
    case cv::Stitcher::ERR_CAMERA_PARAMS_ADJUST_FAIL:
      return "no adjustment of the transforms";
  }
  return "status " + std::to_string(status);
}

/// Top-left corner of a camera's frame in pixels of the frames. The transform leads from the mosaic
/// to the frame, at the size that the stitcher works in; its linear part is a rotation.
cv::Point2d cornerOf(const cv::detail::CameraParams& camera, double workScale) {
  cv::Matx33d transform;
  camera.R.convertTo(transform, CV_64F);
  const cv::Matx22d turn = transform.get_minor<2, 2>(0, 0);
  const cv::Vec2d corner =
      -1.0 / workScale * (turn.t() * cv::Vec2d(transform(0, 2), transform(1, 2)));
  return {corner[0], corner[1]};
}

}  // namespace

ScansResult stitchAsScans(const std::vector<cv::Mat>& frames) {
  ScansResult result;
  result.places.resize(frames.size());
  const cv::Ptr<cv::Stitcher> stitcher = cv::Stitcher::create(cv::Stitcher::SCANS);
  cv::Mat mosaic;
  result.failure = words(stitcher->stitch(frames, mosaic));
  if (!result.failure.empty()) return result;
  const std::vector<int> used = stitcher->component();
  const std::vector<cv::detail::CameraParams> cameras = stitcher->cameras();
  const cv::Point2d origin = cornerOf(cameras.front(), stitcher->workScale());
  for (std::size_t i = 0; i < used.size(); ++i) {
    result.places[static_cast<std::size_t>(used[i])] =
        cornerOf(cameras[i], stitcher->workScale()) - origin;
  }
  return result;
}

}  // namespace framequilt::bench
