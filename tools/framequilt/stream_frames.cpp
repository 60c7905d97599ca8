// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/stream_frames.h"

#include <utility>

#include "tools/framequilt/path_text.h"

namespace framequilt::tool {

StreamFrames::StreamFrames(std::string name, Pull pull, const InputSettings& settings)
    : name_(std::move(name)), pull_(std::move(pull)), settings_(settings) {
  first_ = pullFitting();
}

std::optional<SourceFrame> StreamFrames::next() {
  std::optional<NumberedFrame> frame = std::exchange(first_, std::nullopt);
  if (!frame) frame = pullFitting();
  if (!frame) return std::nullopt;
  return SourceFrame{
      std::move(frame->pixels), frame->number, name_ + "#" + std::to_string(frame->number), {}};
}

std::optional<NumberedFrame> StreamFrames::pullFitting() {
  while (std::optional<NumberedFrame> frame = pull_()) {
    if (fits(*frame)) return frame;
    ++skipped_;
  }
  return std::nullopt;
}

bool StreamFrames::fits(const NumberedFrame& frame) {
  const cv::Mat& pixels = frame.pixels;
  const std::string which = "frame " + std::to_string(frame.number) + " of " + inQuotes(name_);
  if (pixels.empty() || pixels.type() != CV_8UC3) {
    if (!std::exchange(damageNoted_, true)) {
      settings_.remark(which + " cannot be decoded: such frames are left out");
    }
    return false;
  }
  if (empty()) {
    shape_.rows = pixels.rows;
    shape_.cols = pixels.cols;
  }
  if (pixels.rows == shape_.rows && pixels.cols == shape_.cols) return true;
  if (!std::exchange(sizeNoted_, true)) {
    settings_.remark(which + " has " + sizeText(pixels.rows, pixels.cols) + ", the first has " +
                     sizeText(shape_.rows, shape_.cols) + ": frames of another size are left out");
  }
  return false;
}

}  // namespace framequilt::tool
