// SPDX-License-Identifier: Apache-2.0
/// \file
/// Simulated captures: a textured picture and the frames that a camera would see of it.
/// Whole-number arithmetic only, so that every byte is the same on every machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// An 8-bit image: rows top to bottom without padding, 1 or more bytes a pixel.
struct Frame {
  int rows = 0, cols = 0, channels = 1;
  std::vector<unsigned char> bytes;

  Frame() = default;
  Frame(int rows, int cols, int channels, int value = 0);

  unsigned char& at(int row, int col, int channel = 0) { return bytes[index(row, col, channel)]; }
  unsigned char at(int row, int col, int channel = 0) const {
    return bytes[index(row, col, channel)];
  }

 private:
  std::size_t index(int row, int col, int channel) const {
    return (static_cast<std::size_t>(row) * static_cast<std::size_t>(cols) +
            static_cast<std::size_t>(col)) *
               static_cast<std::size_t>(channels) +
           static_cast<std::size_t>(channel);
  }
};

/// A picture with corners everywhere: noise of several sizes under boxes and discs. No byte is 0.
class Scene {
 public:
  Scene(int rows, int cols, int channels, std::uint64_t seed);

  /// What a camera of that size sees with its top-left pixel at (x, y), inside the picture.
  Frame cut(int x, int y, int rows, int cols) const;

  const Frame& picture() const { return picture_; }

 private:
  Frame picture_;
};

/// `frame` with every byte changed by at most `amplitude`, within 1..255.
Frame withNoise(Frame frame, int amplitude, std::uint64_t seed);

/// `frame` with every byte scaled by gain256 / 256, truncated, and `offset` added, within 1..255.
Frame withGain(Frame frame, int gain256, int offset);

/// A frame of unrelated bytes in 1..255.
Frame noiseFrame(int rows, int cols, int channels, std::uint64_t seed);

/// The pixels of every `factor`th row and column: a frame at working size.
Frame everyNth(const Frame& frame, int factor);
