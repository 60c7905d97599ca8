// SPDX-License-Identifier: Apache-2.0
#include "cpu/mosaic_growth.h"

#include <algorithm>
#include <opencv2/core.hpp>

#include "imaging/black_image.h"

namespace {

struct Border {
  int top, bottom, left, right;

  bool empty() const { return top == 0 && bottom == 0 && left == 0 && right == 0; }
};

/// Touching an edge counts as reaching it. Top and left win over bottom and right.
Border borderFor(int nx, int ny, int frameRows, int frameCols, int mosaicRows, int mosaicCols,
                 int growRows, int growCols) {
  const bool top = ny <= 0;
  const bool left = nx <= 0;
  const bool bottom = !top && ny + frameRows >= mosaicRows;
  const bool right = !left && nx + frameCols >= mosaicCols;
  return {top ? growRows : 0, bottom ? growRows : 0, left ? growCols : 0, right ? growCols : 0};
}

template <class Point>
Point shifted(Point point, const Border& border) {
  return {point.x + border.left, point.y + border.top};
}

/// One axis of the filled box, extended to a frame at [from, to).
void extendAxis(int from, int to, int& start, int& end) {
  if (from >= start && to <= end) return;
  if (from < start && to < end) {
    start = from;
  } else if (from > start) {
    end = std::max(to, end);
  }
}

template <class Point>
void extendBox(Point topLeft, Point bottomRight, int rows, int cols, Point position,
               Point& topLeftOut, Point& bottomRightOut) {
  extendAxis(position.x, position.x + cols, topLeft.x, bottomRight.x);
  extendAxis(position.y, position.y + rows, topLeft.y, bottomRight.y);
  topLeftOut = topLeft;
  bottomRightOut = bottomRight;
}

}  // namespace

void BorderExpand(cv::Mat src, int growRows, int growCols, int dx, int dy, int frameRows,
                  int frameCols, int mosaicCols, int mosaicRows, SPoint position, cv::Mat& dst,
                  SPoint& positionOut, SPoint topLeft, SPoint bottomRight, SPoint& topLeftOut,
                  SPoint& bottomRightOut) {
  const Border border = borderFor(position.x + dx, position.y + dy, frameRows, frameCols,
                                  mosaicRows, mosaicCols, growRows, growCols);
  if (border.empty()) {
    dst = src;
  } else {
    const cv::Mat grown = framequilt::blackImage(src.rows + border.top + border.bottom,
                                                 src.cols + border.left + border.right, src.type());
    framequilt::copyToBlack(src, grown(cv::Rect(border.left, border.top, src.cols, src.rows)));
    dst = grown;
  }
  positionOut = shifted(position, border);
  topLeftOut = shifted(topLeft, border);
  bottomRightOut = shifted(bottomRight, border);
}

int outputImageCoordate(SPoint topLeft, SPoint bottomRight, int /*dx*/, int /*dy*/, int rows,
                        int cols, SPoint position, SPoint& topLeftOut, SPoint& bottomRightOut) {
  extendBox(topLeft, bottomRight, rows, cols, position, topLeftOut, bottomRightOut);
  return 0;
}

int outputImageCoordate1(cv::Point_<int> topLeft, cv::Point_<int> bottomRight, int /*dx*/,
                         int /*dy*/, int rows, int cols, cv::Point_<int> position,
                         cv::Point_<int>& topLeftOut, cv::Point_<int>& bottomRightOut) {
  extendBox(topLeft, bottomRight, rows, cols, position, topLeftOut, bottomRightOut);
  return 0;
}
