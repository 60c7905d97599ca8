// SPDX-License-Identifier: Apache-2.0
/// \file
/// What a mosaic of a simulated capture has to look like.
#pragma once

#include <gtest/gtest.h>

#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "framequilt/records.h"
#include "tests/support/capture_run.h"

inline bool operator==(const SPoint& a, const SPoint& b) { return a.x == b.x && a.y == b.y; }
inline SPoint operator+(SPoint a, SPoint b) { return {a.x + b.x, a.y + b.y}; }
inline SPoint operator-(SPoint a, SPoint b) { return {a.x - b.x, a.y - b.y}; }
inline SPoint operator/(SPoint a, int divisor) { return {a.x / divisor, a.y / divisor}; }
inline void PrintTo(const SPoint& point, std::ostream* out) {
  *out << '(' << point.x << ", " << point.y << ')';
}

/// How much a single-channel pixel loses in one fusion with its equal: the weights sum to 255 and
/// the sum is divided by 256.
inline int fusedWithItself(int gray) { return 255 * gray >> 8; }

/// The mosaic pixel (row, col), compared with channel 0.. of a picture's pixel.
inline bool pixelEquals(const cv::Mat& mosaic, int row, int col, const Frame& picture, int y,
                        int x) {
  const unsigned char* pixel = mosaic.ptr(row, col);
  for (int k = 0; k < picture.channels; ++k) {
    if (pixel[k] != picture.at(y, x, k)) return false;
  }
  return true;
}

/// Checks a colour mosaic against `picture` (at working size), whose pixel (0, 0) lies at `origin`
/// in the mosaic: frames of rows x cols were joined at `corners` of the picture, everything else is
/// black.
inline void expectMosaicShows(const cv::Mat& mosaic, const Frame& picture, SPoint origin,
                              const std::vector<SPoint>& corners, int rows, int cols) {
  const auto covered = [&](int x, int y) {
    for (const SPoint& corner : corners) {
      if (x >= corner.x && x < corner.x + cols && y >= corner.y && y < corner.y + rows) return true;
    }
    return false;
  };
  int wrong = 0;
  std::string where;
  for (int r = 0; r < mosaic.rows; ++r) {
    const unsigned char* row = mosaic.ptr(r);
    for (int c = 0; c < mosaic.cols; ++c) {
      const int x = c - origin.x;
      const int y = r - origin.y;
      const bool inside = x >= 0 && y >= 0 && x < picture.cols && y < picture.rows && covered(x, y);
      bool right = true;
      for (int k = 0; k < picture.channels; ++k) {
        const int expected = inside ? picture.at(y, x, k) : 0;
        right = right && row[c * picture.channels + k] == expected;
      }
      if (!right && wrong++ == 0) where = std::to_string(r) + ", " + std::to_string(c);
    }
  }
  EXPECT_EQ(wrong, 0) << "pixels differ, the first at row, column " << where;
}
