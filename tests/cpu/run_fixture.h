// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <framequilt/tuning.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <thread>
#include <vector>

#include "cpu/run_state.h"
#include "cpu/stitching_run.h"
#include "features/features_state.h"
#include "imaging/imaging_state.h"
#include "tests/support/points.h"
#include "tests/support/random_images.h"

using Bytes = std::vector<unsigned char>;

inline std::size_t area(int rows, int cols, int channels = 1) {
  return static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols) *
         static_cast<std::size_t>(channels);
}

/// Memory that the library may release.
template <class T>
T* fresh(std::size_t elements, T value = T{}) {
  T* memory = new T[elements];
  std::fill_n(memory, elements, value);
  return memory;
}

/// Blocks of 4 x 4 pixels of random gray, the same for the same seed: corners everywhere, no two
/// alike. `row0` and `col0`, above -6000, choose the window of a large scene.
inline Bytes texture(int rows, int cols, std::uint64_t seed, int row0 = 0, int col0 = 0) {
  Bytes image;
  image.reserve(area(rows, cols));
  for (int r = 0; r < rows; ++r) {
    for (int c = 0; c < cols; ++c) {
      const int block = (r + row0 + 6000) / 4 * 4000 + (c + col0 + 6000) / 4;
      Random random(seed + static_cast<std::uint64_t>(block));
      image.push_back(static_cast<unsigned char>(random.between(10, 245)));
    }
  }
  return image;
}

/// Every pixel of a gray image three times.
inline Bytes tripled(const Bytes& gray) {
  Bytes colour;
  for (const unsigned char value : gray) colour.insert(colour.end(), 3, value);
  return colour;
}

inline void waitUntilClear(const std::atomic<bool>& flag) {
  while (flag) std::this_thread::yield();
}

/// A started run whose frames the offset estimation can work on: the driver's part of the pair
/// planes and the search size are set up as well.
class RunForPairs : public testing::Test {
 protected:
  static constexpr int kRows = 150, kCols = 180;

  void SetUp() override {
    ASSERT_TRUE(initJointCpu(kRows, kCols, 3, 1, 100, 100));
    resiz_One = fresh<unsigned char>(area(kRows + 2, kCols + 2), 77);
    resiz_Two = fresh<unsigned char>(area(kRows + 2, kCols + 2), 77);
    resiz_OneBound = fresh<unsigned char>(area(kRows + 8, kCols + 8), 77);
    resiz_TwoBound = fresh<unsigned char>(area(kRows + 8, kCols + 8), 77);
    pointdownscal = 2;
    gray_pointdownscal_row = kRows / 2;
    gray_pointdownscal_col = kCols / 2;
  }

  void TearDown() override {
    uninitJointCpu();
    cpuMotorflage = false;
    cpuMotordx = cpuMotordy = 0;
    demesion = 200;
    scale = 1;
  }
};
