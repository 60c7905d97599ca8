// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdlib>

#include "imaging/motion.h"
#include "tests/opencl/kernel_planes.h"

namespace {

TEST(MotionKernels, LeaveNoByteZero) {
  for (const int channels : {3, 1}) {
    const char* name = channels == 3 ? "pretJudgeImageCh3Kernel" : "pretJudgeImageCh1Kernel";
    forEachBytePlane(channels, [=](int rows, int cols, const Bytes& image) {
      Bytes expected = image;
      pretJudgeImageCh(expected.data(), rows, cols, channels);
      const DeviceBytes judged(image);
      runKernel(name, gridOver(rows, cols), judged, rows, cols);
      EXPECT_TRUE(sameBits(expected, judged.values())) << name;
    });
  }
}

TEST(MotionKernels, LeaveTheAbsoluteDifferenceInTheFirstImage) {
  forEachBytePlane(1, [](int rows, int cols, const Bytes& image) {
    const Bytes other(image.rbegin(), image.rend());
    Bytes expected(image.size());
    for (std::size_t i = 0; i < image.size(); ++i) {
      expected[i] = static_cast<unsigned char>(std::abs(image[i] - other[i]));
    }
    const DeviceBytes a(image), b(other);
    runKernel("absCalcKernel", gridOver(rows, cols), a, b, rows, cols);
    EXPECT_TRUE(sameBits(expected, a.values()));
    EXPECT_TRUE(sameBits(other, b.values()));
  });
}

TEST(MotionKernels, TakeTheDifferenceOfAnImageAndItself) {
  const DeviceBytes image(Bytes{0, 1, 128, 255});
  runKernel("absCalcKernel", gridOver(2, 2), image, image, 2, 2);
  EXPECT_EQ(image.values(), Bytes(4, 0));
}

}  // namespace
