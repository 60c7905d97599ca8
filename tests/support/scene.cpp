// SPDX-License-Identifier: Apache-2.0
#include "tests/support/scene.h"

#include <algorithm>

#include "tests/support/random_images.h"

namespace {

constexpr int kDarkest = 16;
constexpr int kBrightest = 239;

unsigned char byteWithin(int value, int lowest, int highest) {
  return static_cast<unsigned char>(std::clamp(value, lowest, highest));
}

/// A signed plane that the layers of a picture are added up in.
class Plane {
 public:
  Plane(int rows, int cols, int value)
      : rows_(rows),
        cols_(cols),
        values_(static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols), value) {}

  int& at(int row, int col) {
    return values_[static_cast<std::size_t>(row) * static_cast<std::size_t>(cols_) +
                   static_cast<std::size_t>(col)];
  }
  int rows() const { return rows_; }
  int cols() const { return cols_; }

 private:
  int rows_, cols_;
  std::vector<int> values_;
};

/// Where `step` of `cell` lies on a smooth curve from 0 to 256.
int eased(int step, int cell) {
  const int t = step * 256 / cell;
  return t * t * (768 - 2 * t) >> 16;
}

int between(int from, int to, int part256) { return (from * (256 - part256) + to * part256) >> 8; }

/// Adds values in [-amplitude, amplitude] that flow into each other over `cell` pixels.
void addNoise(Plane& plane, int cell, int amplitude, Random& random) {
  const int across = plane.cols() / cell + 2;
  const int down = plane.rows() / cell + 2;
  Plane lattice(down, across, 0);
  for (int r = 0; r < down; ++r) {
    for (int c = 0; c < across; ++c) lattice.at(r, c) = random.between(-amplitude, amplitude);
  }
  for (int r = 0; r < plane.rows(); ++r) {
    const int upper = r / cell;
    const int partDown = eased(r % cell, cell);
    for (int c = 0; c < plane.cols(); ++c) {
      const int left = c / cell;
      const int partAcross = eased(c % cell, cell);
      plane.at(r, c) +=
          between(between(lattice.at(upper, left), lattice.at(upper, left + 1), partAcross),
                  between(lattice.at(upper + 1, left), lattice.at(upper + 1, left + 1), partAcross),
                  partDown);
    }
  }
}

/// Adds boxes and discs of random place, size and strength; edges and corners come from them.
void addShapes(Plane& plane, int pixelsEach, Random& random) {
  const int count = plane.rows() * plane.cols() / pixelsEach;
  for (int i = 0; i < count; ++i) {
    const bool disc = random.between(0, 2) == 0;
    const int halfRows = random.between(2, 12);
    const int halfCols = disc ? halfRows : random.between(2, 12);
    const int row = random.between(0, plane.rows() - 1);
    const int col = random.between(0, plane.cols() - 1);
    const int strength = random.between(25, 70) * (random.between(0, 1) == 0 ? 1 : -1);
    for (int r = std::max(0, row - halfRows); r <= std::min(plane.rows() - 1, row + halfRows);
         ++r) {
      for (int c = std::max(0, col - halfCols); c <= std::min(plane.cols() - 1, col + halfCols);
           ++c) {
        const int distance2 = (r - row) * (r - row) + (c - col) * (c - col);
        if (disc && distance2 > halfRows * halfRows) continue;
        plane.at(r, c) += strength;
      }
    }
  }
}

}  // namespace

Frame::Frame(int rowCount, int colCount, int channelCount, int value)
    : rows(rowCount),
      cols(colCount),
      channels(channelCount),
      bytes(static_cast<std::size_t>(rowCount) * static_cast<std::size_t>(colCount) *
                static_cast<std::size_t>(channelCount),
            static_cast<unsigned char>(value)) {}

Scene::Scene(int rows, int cols, int channels, std::uint64_t seed)
    : picture_(rows, cols, channels) {
  Random random(seed);
  Plane light(rows, cols, 128);
  for (const int cell : {97, 41, 17, 7}) addNoise(light, cell, cell / 4 + 14, random);
  addShapes(light, 450, random);
  for (int k = 0; k < channels; ++k) {
    Plane tint(rows, cols, 0);
    if (channels > 1) addNoise(tint, 53, 24, random);
    for (int r = 0; r < rows; ++r) {
      for (int c = 0; c < cols; ++c) {
        picture_.at(r, c, k) = byteWithin(
            std::clamp(light.at(r, c), kDarkest, kBrightest) + tint.at(r, c), kDarkest, kBrightest);
      }
    }
  }
}

Frame Scene::cut(int x, int y, int rows, int cols) const {
  Frame frame(rows, cols, picture_.channels);
  for (int r = 0; r < rows; ++r) {
    for (int c = 0; c < cols; ++c) {
      for (int k = 0; k < frame.channels; ++k) frame.at(r, c, k) = picture_.at(y + r, x + c, k);
    }
  }
  return frame;
}

Frame withNoise(Frame frame, int amplitude, std::uint64_t seed) {
  Random random(seed);
  for (unsigned char& byte : frame.bytes) {
    byte = byteWithin(byte + random.between(-amplitude, amplitude), 1, 255);
  }
  return frame;
}

Frame withGain(Frame frame, int gain256, int offset) {
  for (unsigned char& byte : frame.bytes) {
    byte = byteWithin(byte * gain256 / 256 + offset, 1, 255);
  }
  return frame;
}

Frame noiseFrame(int rows, int cols, int channels, std::uint64_t seed) {
  Frame frame(rows, cols, channels);
  frame.bytes = Random(seed).bytes(frame.bytes.size(), 1, 255);
  return frame;
}

Frame everyNth(const Frame& frame, int factor) {
  Frame small(frame.rows / factor, frame.cols / factor, frame.channels);
  for (int r = 0; r < small.rows; ++r) {
    for (int c = 0; c < small.cols; ++c) {
      for (int k = 0; k < frame.channels; ++k) {
        small.at(r, c, k) = frame.at(r * factor, c * factor, k);
      }
    }
  }
  return small;
}
