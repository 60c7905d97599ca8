// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/frame_loading.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>

#include "tools/framequilt/path_text.h"
#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {
namespace {

namespace fs = std::filesystem;

void requireReadable(const fs::path& picture) {
  errno = 0;
  if (!std::ifstream(picture, std::ios::binary)) {
    throw ToolError(inQuotes(picture) + " cannot be opened (" + std::strerror(errno) +
                    "): check the path and its permissions");
  }
}

/// Gray or blue-green-red, at the depth of the file.
cv::Mat decode(const fs::path& picture) {
  requireReadable(picture);
  cv::Mat decoded;
  try {
    decoded = cv::imread(picture.string(), cv::IMREAD_ANYCOLOR | cv::IMREAD_ANYDEPTH);
  } catch (const cv::Exception&) {
    // Sizes beyond the decoder's limits; the message below fits them too.
  }
  if (decoded.empty()) {
    throw ToolError(inQuotes(picture) +
                    " cannot be read as a picture: leave it out or save it again as .png or .jpg");
  }
  return decoded;
}

cv::Mat inEightBits(const fs::path& picture, const cv::Mat& decoded) {
  if (decoded.depth() == CV_8U) return decoded;
  if (decoded.depth() != CV_16U) {
    throw ToolError(inQuotes(picture) +
                    " has neither 8 nor 16 bits per channel: convert it to 8 bits");
  }
  cv::Mat converted;
  decoded.convertTo(converted, CV_8U, 255.0 / 65535.0);
  return converted;
}

}  // namespace

CaptureShape surveyPictures(const std::vector<fs::path>& pictures) {
  CaptureShape shape{0, 0, 1};
  for (const fs::path& picture : pictures) {
    const cv::Mat frame = inEightBits(picture, decode(picture));
    if (shape.rows == 0) {
      shape.rows = frame.rows;
      shape.cols = frame.cols;
    }
    if (frame.rows != shape.rows || frame.cols != shape.cols) {
      throw ToolError(inQuotes(picture) + " has " + sizeText(frame.rows, frame.cols) + " but " +
                      inQuotes(pictures.front()) + " has " + sizeText(shape.rows, shape.cols) +
                      ": give pictures of one size");
    }
    if (frame.channels() != 1) shape.channels = 3;
  }
  return shape;
}

cv::Mat loadFrame(const fs::path& picture, int channels) {
  cv::Mat frame = inEightBits(picture, decode(picture));
  if (channels == 3 && frame.channels() == 1) cv::cvtColor(frame, frame, cv::COLOR_GRAY2BGR);
  cv::max(frame, cv::Scalar::all(1), frame);
  return frame;
}

}  // namespace framequilt::tool
