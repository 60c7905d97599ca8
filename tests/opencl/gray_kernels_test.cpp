// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "imaging/gray.h"
#include "tests/opencl/kernel_planes.h"

namespace {

Bytes hostGray(Bytes bgr, int rows, int cols) {
  Bytes gray(area(rows, cols));
  rgb2Gray(bgr.data(), rows, cols, gray.data());
  return gray;
}

Floats hostMask(Bytes image, int rows, int cols, int channels) {
  Floats mask(area(rows, cols));
  rgb2GrayFloat1(image.data(), rows, cols, channels, mask.data());
  return mask;
}

TEST(GrayKernels, GiveTheGrayOfTheHost) {
  forEachBytePlane(3, [](int rows, int cols, const Bytes& bgr) {
    for (const char* name : {"rgb2GaryKernel", "rgb2GaryKernel2"}) {
      const DeviceBytes source(bgr), gray(area(rows, cols));
      runKernel(name, gridOver(rows, cols), source, rows, cols, gray);
      EXPECT_TRUE(sameBits(hostGray(bgr, rows, cols), gray.values())) << name;
      EXPECT_TRUE(sameBits(bgr, source.values())) << name;
    }
  });
}

TEST(GrayKernels, GiveTheGrayOfTwoImages) {
  forEachBytePlane(3, [](int rows, int cols, const Bytes& bgr) {
    const Bytes other(bgr.rbegin(), bgr.rend());
    const DeviceBytes grayA(area(rows, cols)), grayB(area(rows, cols));
    runKernel("rgb2GaryTwoKernel", gridOver(rows, cols), DeviceBytes(bgr), DeviceBytes(other), rows,
              cols, grayA, grayB);
    EXPECT_TRUE(sameBits(hostGray(bgr, rows, cols), grayA.values()));
    EXPECT_TRUE(sameBits(hostGray(other, rows, cols), grayB.values()));
  });
}

TEST(GrayKernels, MaskWhatIsNotBlack) {
  for (const int channels : {3, 1}) {
    const char* name = channels == 3 ? "rgb2GaryFloatTwoCh3Kernel" : "rgb2GaryFloatTwoCh1Kernel";
    forEachBytePlane(channels, [=](int rows, int cols, const Bytes& image) {
      const Bytes other(image.rbegin(), image.rend());
      const DeviceFloats maskA(area(rows, cols)), maskB(area(rows, cols));
      runKernel(name, gridOver(rows, cols), DeviceBytes(image), DeviceBytes(other), rows, cols,
                maskA, maskB);
      EXPECT_TRUE(sameBits(hostMask(image, rows, cols, channels), maskA.values())) << name;
      EXPECT_TRUE(sameBits(hostMask(other, rows, cols, channels), maskB.values())) << name;
    });
  }
}

}  // namespace
