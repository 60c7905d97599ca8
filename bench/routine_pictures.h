// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core/mat.hpp>
#include <vector>

#include "framequilt/records.h"

namespace framequilt::bench {

/// What the routines are given: two frames of one scene that overlap by three quarters, and what a
/// run makes of them on its way. Rows are packed; `data` of each matrix is handed over.
struct RoutinePictures {
  explicit RoutinePictures(cv::Size frame);

  cv::Size size;
  cv::Mat colourA, colourB;
  cv::Mat grayA, grayB;
  cv::Mat gx2, gy2, gxy;  ///< Smoothed gradient products of A.
  cv::Mat response;       ///< Of A.
  float responseMean = 0;
  std::vector<float> candidateValues;  ///< All local maxima of A's response above the mean.
  std::vector<SPoint> candidates;
  /// The mosaic's part and the new frame of a blend: the first is black where no frame lies.
  cv::Mat mosaicPart;
};

/// The strongest corners of both frames, spread out.
struct CornerPair {
  /// \throws std::runtime_error when the frames have fewer than `count`.
  CornerPair(const RoutinePictures& pictures, int count);

  std::vector<SPoint> cornersA, cornersB;
  std::vector<unsigned short> descriptorsA, descriptorsB;  ///< 200 elements a corner.
  std::vector<SPoint> matchedA, matchedB;

  static constexpr int kLength = 200;
  static constexpr int kPatch = 20;
};

}  // namespace framequilt::bench
