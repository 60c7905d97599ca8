// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framequilt/session.h"
#include "tests/support/scene.h"

/// The pixels of a simulated frame, which has to live as long.
inline framequilt::FrameView viewOf(const Frame& frame) {
  return {frame.bytes.data(), frame.rows, frame.cols, 0,
          frame.channels == 1 ? framequilt::PixelOrder::kGray : framequilt::PixelOrder::kBgr};
}

/// Options for gray frames of that size.
inline framequilt::SessionOptions grayOptions(int rows, int cols) {
  framequilt::SessionOptions options;
  options.rows = rows;
  options.cols = cols;
  options.channels = 1;
  return options;
}

/// Options for frames of the shape of `frame`.
inline framequilt::SessionOptions optionsFor(const Frame& frame) {
  framequilt::SessionOptions options;
  options.rows = frame.rows;
  options.cols = frame.cols;
  options.channels = frame.channels;
  options.backend = framequilt::Backend::kHost;
  return options;
}
