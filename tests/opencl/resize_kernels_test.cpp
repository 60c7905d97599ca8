// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "imaging/resize.h"
#include "tests/opencl/kernel_planes.h"

namespace {

int roundedUpQuotient(int side, int scale) { return (side + scale - 1) / scale; }

void expectReduced(const char* name, int rows, int cols, int channels, const Bytes& image) {
  for (const int scale : {1, 2, 3, 4, 5, 6, 7, 8, 9, 62, 64, 66, 2147483647}) {
    if (isEmulated() && scale > 4) continue;
    const int outRows = scale > rows ? 1 : roundedUpQuotient(rows, scale);
    const int outCols = scale > cols ? 1 : roundedUpQuotient(cols, scale);
    Bytes src = image;
    Bytes expected(area(outRows, outCols, channels), 99);
    const DeviceBytes reduced(expected);
    framequilt::resizeWithinFrame(src.data(), rows, cols, scale, channels, expected.data(),
                                  expected.size());
    runKernel(name, gridOver(outRows, outCols), DeviceBytes(image), rows, cols, scale, reduced);
    EXPECT_TRUE(sameBits(expected, reduced.values())) << name << ' ' << scale;
  }
}

TEST(ResizeKernels, TakeThePixelsOfTheHost) {
  for (const char* name :
       {"opencvInterLineARResizeDownCh1Kernel", "opencvInterLineARResizeDownCh1Kernel2"}) {
    forEachBytePlane(1, [=](int rows, int cols, const Bytes& image) {
      expectReduced(name, rows, cols, 1, image);
    });
  }
  forEachBytePlane(3, [](int rows, int cols, const Bytes& image) {
    expectReduced("opencvInterLineARResizeDownCh3Kernel", rows, cols, 3, image);
  });
}

TEST(ResizeKernels, WriteNothingForAFactorBelowOne) {
  const Bytes before(12 * 3, 99);
  for (const char* name :
       {"opencvInterLineARResizeDownCh1Kernel", "opencvInterLineARResizeDownCh1Kernel2",
        "opencvInterLineARResizeDownCh3Kernel"}) {
    for (const int scale : {0, -1, -2, -2147483647 - 1}) {
      const DeviceBytes reduced(before);
      runKernel(name, gridOver(3, 4), DeviceBytes(before), 3, 4, scale, reduced);
      EXPECT_TRUE(sameBits(before, reduced.values())) << name << ' ' << scale;
    }
  }
}

}  // namespace
