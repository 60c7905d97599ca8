// SPDX-License-Identifier: Apache-2.0
/// \file
/// Growth of the mosaic by whole frames, and the box that frames have filled so far.
#pragma once

#include <opencv2/core/mat.hpp>

#include "framequilt/export.h"
#include "framequilt/records.h"

/// Adds a black border of `growRows` or `growCols` on each side that the new frame, at position +
/// (dx, dy), reaches or touches; `dst` receives the result (`src` itself when nothing grows), the
/// position and both corners of the filled box shift along with growth at the top or left.
///
/// Per call only one of top and bottom grows, and one of left and right: top and left win. Below a
/// frame that reaches left and bottom the right side is not looked at either.
/// \throws cv::Exception when memory runs out.
FRAMEQUILT_EXPORT void BorderExpand(cv::Mat src, int growRows, int growCols, int dx, int dy,
                                    int frameRows, int frameCols, int mosaicCols, int mosaicRows,
                                    SPoint position, cv::Mat& dst, SPoint& positionOut,
                                    SPoint topLeft, SPoint bottomRight, SPoint& topLeftOut,
                                    SPoint& bottomRightOut);

/// Extends the filled box (bottom-right exclusive) to a frame of rows x cols at `position`. An axis
/// that the frame exceeds on both sides, or that it shares the start with, stays as it is. `dx` and
/// `dy` are not read. \return Always 0.
FRAMEQUILT_EXPORT int outputImageCoordate(SPoint topLeft, SPoint bottomRight, int dx, int dy,
                                          int rows, int cols, SPoint position, SPoint& topLeftOut,
                                          SPoint& bottomRightOut);
FRAMEQUILT_EXPORT int outputImageCoordate1(cv::Point_<int> topLeft, cv::Point_<int> bottomRight,
                                           int dx, int dy, int rows, int cols,
                                           cv::Point_<int> position, cv::Point_<int>& topLeftOut,
                                           cv::Point_<int>& bottomRightOut);
