// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "features/harris.h"
#include "tests/opencl/kernel_planes.h"

namespace {

TEST(GradientKernels, GiveTheProductsOfTheHostAndAZeroRing) {
  forEachBytePlane(1, [](int rows, int cols, const Bytes& gray) {
    Bytes src = gray;
    Floats gx2(gray.size(), 0.0F), gy2 = gx2, gxy = gx2;
    findGradSquareCrossTerms(src.data(), rows, cols, gx2.data(), gy2.data(), gxy.data());
    for (const char* name : {"findGradSquareCrossTermsKernel", "findGradSquareCrossTermsKernel2"}) {
      const DeviceFloats x2(gray.size()), y2(gray.size()), xy(gray.size());
      runKernel(name, gridOver(rows, cols), DeviceBytes(gray), rows, cols, x2, y2, xy);
      EXPECT_TRUE(sameBits(gx2, x2.values())) << name;
      EXPECT_TRUE(sameBits(gy2, y2.values())) << name;
      EXPECT_TRUE(sameBits(gxy, xy.values())) << name;
    }
  });
}

}  // namespace
