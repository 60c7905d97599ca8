// SPDX-License-Identifier: Apache-2.0
#include "tests/run/captures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <opencv2/core.hpp>

namespace {

constexpr int kRows = 240;
constexpr int kCols = 320;
constexpr std::array<SPoint, RoundTrip::kFrames> kCorners = {
    {{200, 150}, {320, 150}, {320, 230}, {200, 240}, {104, 152}, {144, 182}}};

int fusedWithItself(int gray) { return 255 * gray >> 8; }

/// The values that a pixel may have, both inclusive.
struct Range {
  int low, high;
};

/// What `frames` leave of a picture's value at (x, y).
Range expectedValue(int value, int channels, int x, int y, const std::vector<Placement>& frames) {
  int covers = 0;
  bool onlyReference = false;
  for (const Placement& frame : frames) {
    const bool inside = x >= frame.corner.x && x < frame.corner.x + frame.cols &&
                        y >= frame.corner.y && y < frame.corner.y + frame.rows;
    if (!inside) continue;
    onlyReference = covers == 0 && &frame == &frames.front();
    ++covers;
  }
  if (covers == 0) return {0, 0};
  if (channels > 1 || onlyReference) return {value, value};
  if (covers == 1) return {fusedWithItself(value), fusedWithItself(value)};
  return {value - covers, value};
}

SPoint boundingStart(const std::vector<Placement>& frames) {
  SPoint start = frames.front().corner;
  for (const Placement& frame : frames) {
    start = {std::min(start.x, frame.corner.x), std::min(start.y, frame.corner.y)};
  }
  return start;
}

SPoint boundingEnd(const std::vector<Placement>& frames) {
  SPoint end = frames.front().corner;
  for (const Placement& frame : frames) {
    end = {std::max(end.x, frame.corner.x + frame.cols),
           std::max(end.y, frame.corner.y + frame.rows)};
  }
  return end;
}

}  // namespace

std::string CaptureKind::name() const {
  return std::string(channels == 1 ? "gray" : "colour") + "_scale" + std::to_string(scale) +
         (stitchMode == 0 ? "_overlap" : "_motion") +
         (staticDynamicFlag == 0 ? "_static" : "_dynamic");
}

RunSettings CaptureKind::settings() const {
  RunSettings settings;
  settings.rows = kRows * scale;
  settings.cols = kCols * scale;
  settings.channels = channels;
  settings.stitchMode = stitchMode;
  settings.staticDynamicFlag = staticDynamicFlag;
  settings.frameScale = scale;
  return settings;
}

std::vector<CaptureKind> everyKind() {
  std::vector<CaptureKind> kinds;
  for (const int channels : {1, 3}) {
    for (const int scale : {1, 2}) {
      for (const int mode : {0, 1}) {
        for (const int dynamic : {0, 1}) kinds.push_back({channels, scale, mode, dynamic});
      }
    }
  }
  return kinds;
}

RoundTrip::RoundTrip(const CaptureKind& kind)
    : scale_(kind.scale),
      lowContrast_(kind.stitchMode != 0 && kind.staticDynamicFlag != 0),
      scene_(560 * kind.scale, 700 * kind.scale, kind.channels, 11) {}

SPoint RoundTrip::corner(int index) { return kCorners.at(static_cast<std::size_t>(index)); }

Frame RoundTrip::exposed(Frame frame) const {
  return lowContrast_ ? withGain(std::move(frame), 26, 105) : frame;
}

Frame RoundTrip::frame(int index) const {
  const SPoint start = corner(index);
  return exposed(scene_.cut(start.x * scale_, start.y * scale_, kRows * scale_, kCols * scale_));
}

Frame RoundTrip::workingPicture() const { return exposed(everyNth(scene_.picture(), scale_)); }

std::vector<FrameOutcome> RoundTrip::play(CaptureRun& run) const {
  std::vector<FrameOutcome> outcomes;
  outcomes.push_back(run.first(frame(0), frame(1)));
  for (int i = 2; i < kFrames; ++i) outcomes.push_back(run.next(frame(i)));
  return outcomes;
}

void expectMosaicShows(const cv::Mat& mosaic, const Frame& picture, SPoint origin,
                       const std::vector<Placement>& frames) {
  ASSERT_EQ(mosaic.channels(), picture.channels);
  const SPoint start = boundingStart(frames);
  const SPoint end = boundingEnd(frames);
  int wrong = 0;
  std::string firstWrong;
  for (int y = start.y; y < end.y; ++y) {
    for (int x = start.x; x < end.x; ++x) {
      for (int k = 0; k < picture.channels; ++k) {
        const int value = mosaic.ptr(origin.y + y, origin.x + x)[k];
        const Range expected = expectedValue(picture.at(y, x, k), picture.channels, x, y, frames);
        if (value >= expected.low && value <= expected.high) continue;
        if (wrong++ == 0) {
          firstWrong = "picture row " + std::to_string(y) + ", column " + std::to_string(x) + ": " +
                       std::to_string(value) + " instead of " + std::to_string(expected.low) +
                       ".." + std::to_string(expected.high);
        }
      }
    }
  }
  EXPECT_EQ(wrong, 0) << firstWrong;

  const cv::Rect bounds(origin.x + start.x, origin.y + start.y, end.x - start.x, end.y - start.y);
  EXPECT_EQ(cv::countNonZero(mosaic.reshape(1)),
            cv::countNonZero(mosaic(bounds).clone().reshape(1)))
      << "something lies outside the frames";
}
