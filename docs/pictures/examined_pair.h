// SPDX-License-Identifier: Apache-2.0
/// \file
/// Two frames given to a session, with what its engine found in them.
#pragma once

#include <framequilt/session.h>

#include <opencv2/core.hpp>

#include "docs/pictures/drawing.h"

namespace framequilt::pictures {

struct ExaminedPair {
  cv::Mat one, two;
  FrameResult result;               ///< Of the second frame.
  Points cornersOne, cornersTwo;    ///< That the engine chose.
  Points matchedOne, matchedTwo;    ///< Pair k is matchedOne[k], matchedTwo[k].
  Points agreeingOne, agreeingTwo;  ///< Pairs that agree on the offset that most agree on.
};

/// \param options  Rows and columns are taken from the frames, and the host is used.
/// \throws std::runtime_error when the pairs are not those that the engine counted.
ExaminedPair examine(const cv::Mat& one, const cv::Mat& two, SessionOptions options = {});

/// A gray image as the engine makes it of a frame.
cv::Mat engineGray(const cv::Mat& frame);

}  // namespace framequilt::pictures
