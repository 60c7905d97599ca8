// SPDX-License-Identifier: Apache-2.0
/// \file
/// The overlap measures once more, step by step over checked vectors.
#pragma once

#include <algorithm>
#include <utility>

#include "tests/imaging/overlap_planes.h"

/// Both parts of an overlap and the planes of a frame of `frameRows` x `frameCols`.
struct SlowOverlap {
  int rows[2], cols[2];
  int frameRows, frameCols;
  SidePlanes side[2];

  std::pair<float, float> bright(const Bytes& image1, const Bytes& image2, int channels) {
    const Bytes* const images[2] = {&image1, &image2};
    for (int s = 0; s < 2; ++s) toGray(s, *images[s], channels);
    for (int s = 0; s < 2; ++s) smooth(s);
    return {meanOnGrid(0), meanOnGrid(1)};
  }

  std::pair<float, float> definition() {
    for (int s = 0; s < 2; ++s) sampleQuarter(s);
    for (int s = 0; s < 2; ++s) respond(s);
    return {meanStrong(0), meanStrong(1)};
  }

 private:
  /// The size of the first part counts for both.
  void toGray(int s, const Bytes& image, int channels) {
    for (std::size_t i = 0; i < area(rows[0], cols[0]); ++i) {
      side[s].bound.at(i) = channels < 2 ? image.at(i) : grayOf(&image.at(3 * i));
    }
  }

  /// Mirrored neighbours, weights 1 2 1 down and along; the padded image stays in `plane`.
  void smooth(int s) {
    const int R = rows[s], C = cols[s];
    const Bytes gray = side[s].bound;
    const auto grayAt = [&](int r, int c) {
      return static_cast<int>(gray.at(at(mirrored(r, R), mirrored(c, C), C)));
    };
    Bytes result(gray.size(), 0);
    for (int r = -1; r <= R && R > 0 && C > 0; ++r) {
      for (int c = -1; c <= C; ++c) {
        side[s].plane.at(at(r + 1, c + 1, C + 2)) = static_cast<unsigned char>(grayAt(r, c));
        if (r < 0 || c < 0 || r == R || c == C) continue;
        int sum = 0;
        for (int dr = -1; dr <= 1; ++dr) {
          for (int dc = -1; dc <= 1; ++dc) {
            sum += grayAt(r + dr, c + dc) * (dr == 0 ? 2 : 1) * (dc == 0 ? 2 : 1);
          }
        }
        result.at(at(r, c, C)) = static_cast<unsigned char>(sum / 16);
      }
    }
    side[s].bound = result;
  }

  float meanOnGrid(int s) const {
    float sum = 0.0F;
    int count = 0;
    for (int r = 2; r + 2 < rows[0]; r += 2) {
      for (int c = 2; c + 2 < cols[0]; c += 2, ++count) sum += side[s].bound.at(at(r, c, cols[s]));
    }
    return sum / static_cast<float>(count);
  }

  void sampleQuarter(int s) {
    for (int r = 0; r < rows[0] / 2; ++r) {
      for (int c = 0; c < cols[0] / 2; ++c) {
        if (r % 2 != 0 || c % 2 != 0) continue;
        side[s].plane.at(at(r / 2, c / 2, cols[s] / 2)) = side[s].bound.at(at(r, c, cols[s]));
      }
    }
  }

  /// Edge response of the half-size grid, with its outer frame blank.
  void respond(int s) {
    static constexpr int kTaps[9] = {-1, -2, -1, 2, 4, 2, -1, -2, -1};
    const int R = rows[s] / 2, C = cols[s] / 2;
    const Bytes grid = side[s].plane;
    const auto column = [C](int c) {
      if (c < 0) return mirrored(c, C);
      return c < C ? c : std::max(0, c - 5);  // the right border repeats what lies five before
    };
    for (int r = 0; r < R; ++r) {
      for (int c = 0; c < C; ++c) {
        int sum = 0;
        for (int k = 0; k < 9; ++k) sum += kTaps[k] * grid.at(at(r, column(c + k - 4), C));
        const bool blank = r == 0 || r == R - 1 || c < 10 || c >= C - 11;
        side[s].plane.at(at(r, c, C)) = static_cast<unsigned char>(blank ? 0 : (sum + 2560) % 256);
      }
    }
    // On a narrow grid the ten columns of the last row run over its end.
    for (int c = C; C > 0 && R > 0 && c < 10; ++c) side[s].plane.at(at(R - 1, c, C)) = 0;
  }

  /// With the geometry of the first part.
  float meanStrong(int s) const {
    float sum = 0.0F;
    int count = 0;
    for (int r = 0; r < rows[0] / 2; ++r) {
      for (int c = 0; c < cols[0] / 2; ++c) {
        const unsigned char value =
            side[s].plane.at(area(r, cols[0]) / 2 + static_cast<std::size_t>(c));
        if (value < 11) continue;
        sum += value;
        ++count;
      }
    }
    return sum / static_cast<float>(count);
  }
};
