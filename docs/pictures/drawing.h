// SPDX-License-Identifier: Apache-2.0
/// \file
/// How the pictures of the documents look.
#pragma once

#include <framequilt/records.h>

#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace framequilt::pictures {

inline const cv::Scalar kFirst(40, 165, 255);   ///< Orange: the frame that was there before.
inline const cv::Scalar kJoined(90, 215, 90);   ///< Green: what agrees, what was joined.
inline const cv::Scalar kRefused(70, 70, 240);  ///< Red: what does not, what was refused.

using Points = std::vector<SPoint>;

/// Three channels, whatever `picture` has.
cv::Mat inColour(const cv::Mat& picture);

/// At `cols` columns, in proportion.
cv::Mat atWidth(const cv::Mat& picture, int cols);

/// Pictures of one height in a row, with white between them.
cv::Mat inARow(const std::vector<cv::Mat>& pictures);

/// Pictures of one width below each other, likewise.
cv::Mat inAColumn(const std::vector<cv::Mat>& pictures);

/// Rings around `points`, moved by `shift`.
void drawPoints(cv::Mat& picture, const Points& points, const cv::Scalar& colour,
                cv::Point shift = {});

void drawOutline(cv::Mat& picture, const cv::Rect& box, const cv::Scalar& colour, int width = 3);

/// Writes FOLDER/NAME, as its ending says. \throws std::runtime_error
void write(const std::string& folder, const std::string& name, const cv::Mat& picture);

}  // namespace framequilt::pictures
