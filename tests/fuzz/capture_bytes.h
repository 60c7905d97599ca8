// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <array>
#include <opencv2/core/types.hpp>

#include "tests/fuzz/input_bytes.h"
#include "tests/support/scene.h"

namespace framequilt::fuzz {

/// Frames of a camera whose way the input decides, over one picture for gray and one for colour;
/// some of them are spoilt, or show something else.
class CaptureBytes {
 public:
  CaptureBytes(int rows, int cols, int channels)
      : rows_(rows), cols_(cols), scene_(sceneOf(channels)) {
    corner_ = {(scene_.picture().cols - cols_) / 2, (scene_.picture().rows - rows_) / 2};
  }

  static constexpr int kSceneRows = 520;
  static constexpr int kSceneCols = 760;

  /// The next frame. \param moved  Receives the step, also where the frame shows something else.
  Frame next(InputBytes& in, cv::Point& moved) {
    const cv::Point before = corner_;
    // In tenths of the frame; nearly a whole one now and then.
    corner_.x += in.between(-9, 9) * cols_ / 10;
    corner_.y += in.between(-4, 4) * rows_ / 20;
    corner_.x = std::clamp(corner_.x, 0, scene_.picture().cols - cols_);
    corner_.y = std::clamp(corner_.y, 0, scene_.picture().rows - rows_);
    moved = corner_ - before;
    Frame frame = scene_.cut(corner_.x, corner_.y, rows_, cols_);
    switch (in.byte()) {
      case 1:
        return withNoise(frame, in.between(1, 90), in.word());
      case 2:
        return withGain(frame, in.between(0, 1023), in.between(-128, 127));
      case 3:
        return noiseFrame(rows_, cols_, frame.channels, in.word());
      case 4:
        return Frame(rows_, cols_, frame.channels, in.byte());
      case 5:
        return withBlackPatch(in, frame);
      case 6: {
        Frame given = frame;
        given.bytes = in.image(given.bytes.size());
        return given;
      }
      default:
        return frame;
    }
  }

 private:
  static const Scene& sceneOf(int channels) {
    static const Scene gray(kSceneRows, kSceneCols, 1, 7);
    static const Scene colour(kSceneRows, kSceneCols, 3, 8);
    return channels == 1 ? gray : colour;
  }

  Frame withBlackPatch(InputBytes& in, Frame frame) const {
    const int row0 = in.between(0, rows_ - 1);
    const int col0 = in.between(0, cols_ - 1);
    const int row1 = std::min(rows_, row0 + in.between(1, 64));
    const int col1 = std::min(cols_, col0 + in.between(1, 64));
    for (int r = row0; r < row1; ++r) {
      for (int c = col0; c < col1; ++c) {
        for (int k = 0; k < frame.channels; ++k) frame.at(r, c, k) = 0;
      }
    }
    return frame;
  }

  int rows_, cols_;
  const Scene& scene_;
  cv::Point corner_;
};

}  // namespace framequilt::fuzz
