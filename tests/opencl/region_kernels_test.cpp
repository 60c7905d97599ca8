// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <limits>

#include "imaging/region.h"
#include "tests/opencl/kernel_planes.h"

namespace {

constexpr const char* kNames[] = {"getRowRange", "getRowRange2"};

struct Cut {
  int row, col, rows, cols;
};

Bytes deviceCut(const char* name, const Bytes& gray, int rows, int cols, Cut cut,
                const Bytes& before) {
  const DeviceBytes source(gray), out(before);
  runKernel(name, gridOver(cut.rows, cut.cols), source, rows, cols, cut.row, cut.col, cut.rows,
            cut.cols, out);
  EXPECT_TRUE(sameBits(gray, source.values()));
  return out.values();
}

TEST(RegionKernels, CutWhatTheHostCuts) {
  Random random(7);
  forEachBytePlane(1, [&](int rows, int cols, const Bytes& gray) {
    Bytes src = gray;
    const int row = random.between(0, rows - 1);
    const int col = random.between(0, cols - 1);
    // All of it, a strip at each edge, a block inside.
    for (const Cut cut :
         {Cut{0, 0, rows, cols}, Cut{row, 0, rows - row, cols}, Cut{0, col, rows, cols - col},
          Cut{0, 0, rows - row, cols - col},
          Cut{row, col, random.between(1, rows - row), random.between(1, cols - col)}}) {
      Bytes expected(area(cut.rows, cut.cols), 99);
      const Bytes before = expected;
      imgInfo info = {};
      ASSERT_TRUE(willBigImgAssignRowColToSmallImg(src.data(), cut.row, cut.row + cut.rows, cut.col,
                                                   cut.col + cut.cols, rows, cols, 1, info,
                                                   expected.data()));
      for (const char* name : kNames) {
        EXPECT_TRUE(sameBits(expected, deviceCut(name, gray, rows, cols, cut, before))) << name;
      }
    }
  });
}

TEST(RegionKernels, LeaveOutWhatLiesOutsideTheImage) {
  const Bytes gray = {1, 2, 3, 4, 5, 6};
  constexpr int kMost = std::numeric_limits<int>::max();
  for (const char* name : kNames) {
    EXPECT_EQ(deviceCut(name, gray, 2, 3, {-1, -1, 4, 5}, Bytes(20, 0)),
              (Bytes{0, 0, 0, 0, 0, 0, 1, 2, 3, 0, 0, 4, 5, 6, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(deviceCut(name, gray, 2, 3, {1, 2, 2, 2}, Bytes(4, 9)), (Bytes{6, 9, 9, 9}));
    for (const Cut far : {Cut{2, 0, 1, 1}, Cut{0, 3, 1, 1}, Cut{-1, 0, 1, 1}, Cut{kMost, 0, 2, 1},
                          Cut{0, kMost, 1, 2}, Cut{-kMost, -kMost, 2, 2}}) {
      const Bytes before(area(far.rows, far.cols), 9);
      EXPECT_EQ(deviceCut(name, gray, 2, 3, far, before), before);
    }
  }
}

}  // namespace
