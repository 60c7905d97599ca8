// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <framequilt/tuning.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <vector>

#include "features/features_state.h"
#include "features/harris.h"
#include "imaging/imaging_state.h"
#include "tests/support/points.h"
#include "tests/support/random_images.h"
#include "tests/support/scoped_value.h"

/// A random texture of square patches, which gives corners at the crossings.
inline std::vector<unsigned char> patchwork(unsigned seed, int rows, int cols, int side = 9) {
  Random random(seed);
  const int across = cols / side + 1;
  const auto tones =
      random.bytes(static_cast<std::size_t>(across) * static_cast<std::size_t>(rows / side + 1));
  std::vector<unsigned char> image;
  for (int r = 0; r < rows; ++r) {
    for (int c = 0; c < cols; ++c) {
      image.push_back(tones[static_cast<std::size_t>(r / side * across + c / side)]);
    }
  }
  return image;
}

/// The globals of a run of rows x cols gray frames at scale 1, as the corner search sees them.
class HarrisRun : public testing::Test {
 protected:
  static constexpr int kRows = 180;
  static constexpr int kCols = 240;

  HarrisRun() {
    resiz_OneBound = new unsigned char[kSearchPixels * 4];
    resiz_TwoBound = new unsigned char[kSearchPixels * 4];
  }

  ~HarrisRun() override {
    for (unsigned char** plane : {&resiz_OneBound, &resiz_TwoBound}) {
      delete[] * plane;
      *plane = nullptr;
    }
    for (float** plane : {&grad_x2, &grad_y2, &grad_xy, &grad_bound, &grad_bound_temp, &grad_x21,
                          &grad_y21, &grad_xy1, &grad_bound1, &grad_bound_temp1}) {
      delete[] * plane;
      *plane = nullptr;
    }
  }

  static constexpr std::size_t kSearchPixels = std::size_t{kRows / 2} * (kCols / 2);

 private:
  ScopedValue<int> realRows_{RealImgRow, kRows}, realCols_{RealImgCol, kCols};
  ScopedValue<int> scaleRows_{imgScaleRow, kRows}, scaleCols_{imgScaleCol, kCols};
  ScopedValue<int> searchRows_{gray_pointdownscal_row, kRows / 2};
  ScopedValue<int> searchCols_{gray_pointdownscal_col, kCols / 2};
  ScopedValue<int> factor_{pointdownscal, 2};
  ScopedValue<int> wanted_{numpoint, 60}, cap_{num5000, 420};
};
