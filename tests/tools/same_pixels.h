// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

inline bool samePixels(const cv::Mat& a, const cv::Mat& b) {
  return a.type() == b.type() && a.size() == b.size() && cv::norm(a, b, cv::NORM_INF) == 0;
}
