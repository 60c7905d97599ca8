// SPDX-License-Identifier: Apache-2.0
/// \file
/// The fusion once more, pixel by pixel, and images to try it on.
#pragma once

#include <algorithm>
#include <vector>

#include "imaging/imaging_state.h"
#include "tests/imaging/reference.h"
#include "tests/support/guarded.h"
#include "tests/support/random_images.h"

/// A fusion leaves none of its planes behind.
inline bool planesAreReleased() {
  return AreaImageOneGaryFloat == nullptr && AreaImageTwoGaryFloat == nullptr &&
         AreaImageOneWeight == nullptr && AreaImageOneGary == nullptr &&
         AreaImageTwoGary == nullptr;
}

inline Floats contentMask(const Bytes& image, std::size_t pixels, int channels) {
  Floats map(pixels);
  for (std::size_t i = 0; i < pixels; ++i) {
    const bool content = channels == 3 ? grayOf(&image[3 * i]) > 0 : image[i] > 0;
    map[i] = content ? 255.0F : 0.0F;
  }
  return map;
}

/// One raster pass over the columns between the outermost ones: `step` is -1 on the way down and 1
/// on the way up, where the neighbours lie.
inline void spread(Floats& map, int cols, std::vector<int> rowOrder, int step) {
  for (int r : rowOrder) {
    for (int i = 1; i < cols - 1; ++i) {
      const int c = step < 0 ? i : cols - 1 - i;
      float& here = map[at(r, c, cols)];
      if (here == 0.0F) continue;
      here = std::min({here, map[at(r, c + step, cols)] + 0.2F, map[at(r + step, c, cols)] + 0.2F,
                       map[at(r + step, c + step, cols)] + 0.3F});
    }
  }
}

inline void toDistances(Floats& map, int rows, int cols) {
  if (rows < 2 || cols < 3) return;
  std::vector<int> downward, upward;
  for (int r = 1; r < rows; ++r) downward.push_back(r);
  for (int r = rows - 2; r >= 0; --r) upward.push_back(r);
  spread(map, cols, downward, -1);
  spread(map, cols, upward, 1);
}

inline void clearFrame(Floats& map, int rows, int cols) {
  for (int r = 0; r < rows; ++r) {
    for (int c = 0; c < cols; ++c) {
      if (r == 0 || c == 0 || r == rows - 1 || c == cols - 1) map[at(r, c, cols)] = 0.0F;
    }
  }
}

inline Bytes slowWeights(const Bytes& image1, const Bytes& image2, int rows, int cols,
                         int channels) {
  Floats a = contentMask(image1, area(rows, cols), channels);
  Floats b = contentMask(image2, area(rows, cols), channels);
  clearFrame(b, rows, cols);
  toDistances(a, rows, cols);
  toDistances(b, rows, cols);
  Bytes weight(a.size(), 0);
  for (std::size_t i = 0; i < a.size(); ++i) {
    const float sum = a[i] + b[i];
    if (sum == 0.0F) continue;
    const float scaled = a[i] * 255.0F;
    weight[i] = static_cast<unsigned char>(scaled / sum);
  }
  return weight;
}

inline Bytes slowMix(const Bytes& image1, Bytes image2, const Bytes& weight, int channels) {
  const std::size_t bytesPerPixel = channels >= 2 ? 3 : 1;
  for (std::size_t i = 0; i < weight.size() * bytesPerPixel; ++i) {
    const int w = weight[i / bytesPerPixel];
    const int sum = (255 - w) * image2[i] + w * image1[i];
    image2[i] = static_cast<unsigned char>(sum / (channels >= 2 ? 255 : 256));
  }
  return image2;
}

/// About a third of the pixels is black, in runs.
inline Bytes patchy(Random& random, int rows, int cols, int channels) {
  Bytes image = random.bytes(area(rows, cols, channels));
  const int pixels = rows * cols;
  for (int i = 0; i < pixels;) {
    const int run = random.between(1, 12);
    const bool black = random.between(0, 2) == 0;
    for (int end = std::min(pixels, i + run); i < end; ++i) {
      if (black) std::fill_n(image.begin() + i * channels, channels, static_cast<unsigned char>(0));
    }
  }
  return image;
}
