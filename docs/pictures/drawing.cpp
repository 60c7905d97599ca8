// SPDX-License-Identifier: Apache-2.0
#include "docs/pictures/drawing.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

namespace framequilt::pictures {
namespace {

constexpr int kGap = 10;
constexpr int kRadius = 4;

}  // namespace

cv::Mat inColour(const cv::Mat& picture) {
  if (picture.channels() == 3) return picture.clone();
  cv::Mat colour;
  cv::cvtColor(picture, colour, cv::COLOR_GRAY2BGR);
  return colour;
}

cv::Mat atWidth(const cv::Mat& picture, int cols) {
  cv::Mat sized;
  const cv::Size size(cols, picture.rows * cols / picture.cols);
  cv::resize(picture, sized, size, 0, 0, cv::INTER_AREA);
  return sized;
}

cv::Mat inARow(const std::vector<cv::Mat>& pictures) {
  std::vector<cv::Mat> parts;
  for (const cv::Mat& picture : pictures) {
    if (!parts.empty()) parts.emplace_back(picture.rows, kGap, CV_8UC3, cv::Scalar::all(255));
    parts.push_back(inColour(picture));
  }
  cv::Mat row;
  cv::hconcat(parts, row);
  return row;
}

cv::Mat inAColumn(const std::vector<cv::Mat>& pictures) {
  cv::Mat column;
  for (const cv::Mat& picture : pictures) {
    if (!column.empty()) {
      column.push_back(cv::Mat(kGap, picture.cols, CV_8UC3, cv::Scalar::all(255)));
    }
    column.push_back(inColour(picture));
  }
  return column;
}

void drawPoints(cv::Mat& picture, const Points& points, const cv::Scalar& colour, cv::Point shift) {
  for (const SPoint& point : points) {
    cv::circle(picture, cv::Point(point.x, point.y) + shift, kRadius, colour, 1, cv::LINE_AA);
  }
}

void drawOutline(cv::Mat& picture, const cv::Rect& box, const cv::Scalar& colour, int width) {
  cv::rectangle(picture, box, colour, width);
}

void write(const std::string& folder, const std::string& name, const cv::Mat& picture) {
  const std::string path = folder + "/" + name;
  if (!cv::imwrite(path, picture, {cv::IMWRITE_JPEG_QUALITY, 82})) {
    throw std::runtime_error("'" + path + "' could not be written: check the folder");
  }
}

}  // namespace framequilt::pictures
