// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/outlines.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <string>

namespace framequilt::tool {
namespace {

const cv::Scalar kBorder(60, 220, 60);
const cv::Scalar kText(255, 255, 255);
const cv::Scalar kPlate(30, 30, 30);
constexpr int kFont = cv::FONT_HERSHEY_SIMPLEX;

/// Lines and digits grow with the frames, so that they can be read on a mosaic of any size.
struct Pen {
  explicit Pen(const cv::Rect& frame)
      : thickness(std::max(1, std::min(frame.width, frame.height) / 240)),
        textScale(std::max(0.4, std::min(frame.width, frame.height) / 400.0)) {}
  int thickness;
  double textScale;
};

void drawNumber(cv::Mat& picture, const FrameOutline& outline, const Pen& pen) {
  const std::string number = std::to_string(outline.number);
  int baseline = 0;
  const cv::Size size = cv::getTextSize(number, kFont, pen.textScale, pen.thickness, &baseline);
  const int margin = 2 * pen.thickness + 2;
  const cv::Point corner = outline.place.tl() + cv::Point(2 * pen.thickness, 2 * pen.thickness);
  cv::rectangle(picture, cv::Rect(corner, size + cv::Size(2 * margin, 2 * margin)), kPlate,
                cv::FILLED);
  cv::putText(picture, number, corner + cv::Point(margin, margin + size.height), kFont,
              pen.textScale, kText, pen.thickness, cv::LINE_AA);
}

}  // namespace

cv::Mat withOutlines(const cv::Mat& mosaic, const std::vector<FrameOutline>& outlines) {
  cv::Mat picture;
  if (mosaic.channels() == 1) {
    cv::cvtColor(mosaic, picture, cv::COLOR_GRAY2BGR);
  } else {
    picture = mosaic.clone();
  }
  for (const FrameOutline& outline : outlines) {
    const Pen pen(outline.place);
    // The line lies inside the frame, also where the frame ends with the picture.
    const int inset = pen.thickness / 2;
    cv::rectangle(picture,
                  cv::Rect(outline.place.x + inset, outline.place.y + inset,
                           outline.place.width - 2 * inset, outline.place.height - 2 * inset),
                  kBorder, pen.thickness);
    drawNumber(picture, outline, pen);
  }
  return picture;
}

}  // namespace framequilt::tool
