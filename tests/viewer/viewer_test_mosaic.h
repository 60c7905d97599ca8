// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

#include "tools/viewer/model/mosaic_patch.h"

namespace framequilt::viewer {

/// A mosaic that is a matrix; its pixel (0, 0) is the steady origin.
struct TestMosaic {
  explicit TestMosaic(cv::Size size, int gray = 100)
      : pixels(size, CV_8UC3, cv::Scalar::all(gray)) {}

  MosaicReader reader() const {
    return [shared = pixels](const cv::Rect& part) {
      cv::Mat copy = cv::Mat::zeros(part.size(), CV_8UC3);
      const cv::Rect common = part & cv::Rect({}, shared.size());
      if (!common.empty()) shared(common).copyTo(copy(common - part.tl()));
      return copy;
    };
  }
  MosaicPatch patch(const cv::Rect& changed) const { return readPatch(reader(), changed); }
  MosaicPatch whole() const { return patch(cv::Rect({}, pixels.size())); }

  cv::Mat pixels;
};

}  // namespace framequilt::viewer
