// SPDX-License-Identifier: Apache-2.0
#include "interface/frame_copy.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "imaging/gray.h"

namespace framequilt {
namespace {

/// Bytes of a pixel, and which of them are blue, green and red.
struct Layout {
  int bytes, blue, green, red;
};

Layout layoutOf(PixelOrder order) {
  switch (order) {
    case PixelOrder::kBgr:
      return {3, 0, 1, 2};
    case PixelOrder::kRgb:
      return {3, 2, 1, 0};
    case PixelOrder::kBgra:
      return {4, 0, 1, 2};
    case PixelOrder::kGray:
      break;
  }
  return {1, 0, 0, 0};
}

unsigned char notZero(unsigned char value) { return value == 0 ? 1 : value; }

void replaceZeros(unsigned char* bytes, int count) {
  for (int i = 0; i < count; ++i) bytes[i] = notZero(bytes[i]);
}

void toColour(const unsigned char* in, Layout layout, int cols, unsigned char* out) {
  for (int c = 0; c < cols; ++c, in += layout.bytes, out += 3) {
    out[0] = in[layout.blue];
    out[1] = in[layout.green];
    out[2] = in[layout.red];
  }
}

}  // namespace

std::size_t packedRow(const FrameView& frame) {
  return static_cast<std::size_t>(frame.cols) *
         static_cast<std::size_t>(layoutOf(frame.order).bytes);
}

cv::Mat frameCopy(const FrameView& frame, int channels) {
  const Layout layout = layoutOf(frame.order);
  const std::size_t packed = packedRow(frame);
  const std::size_t stride = frame.strideBytes != 0 ? frame.strideBytes : packed;
  const bool toGray = channels == 1 && layout.bytes != 1;
  std::vector<unsigned char> colourRow(toGray ? 3 * static_cast<std::size_t>(frame.cols)
                                              : std::size_t{0});

  cv::Mat copy(frame.rows, frame.cols, channels == 1 ? CV_8UC1 : CV_8UC3);
  for (int r = 0; r < frame.rows; ++r) {
    const unsigned char* in = frame.pixels + static_cast<std::size_t>(r) * stride;
    unsigned char* out = copy.ptr(r);
    if (toGray) {
      toColour(in, layout, frame.cols, colourRow.data());
      rgb2Gray(colourRow.data(), 1, frame.cols, out);
    } else if (channels == 1 || frame.order == PixelOrder::kBgr) {
      std::copy_n(in, packed, out);
    } else {
      toColour(in, layout, frame.cols, out);
    }
    replaceZeros(out, frame.cols * channels);
  }
  return copy;
}

FrameView viewOf(const cv::Mat& frame) {
  const int channels = frame.channels();
  if (frame.depth() != CV_8U || frame.dims > 2 ||
      (channels != 1 && channels != 3 && channels != 4)) {
    throw Error(ErrorCode::kInvalidFrame,
                "a frame has to have 8 bits and 1, 3 or 4 channels: convert it first");
  }
  const PixelOrder order = channels == 1   ? PixelOrder::kGray
                           : channels == 3 ? PixelOrder::kBgr
                                           : PixelOrder::kBgra;
  return {frame.data, frame.rows, frame.cols, frame.step[0], order};
}

}  // namespace framequilt
