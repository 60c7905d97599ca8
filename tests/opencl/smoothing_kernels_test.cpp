// SPDX-License-Identifier: Apache-2.0
// The kernels one after another, on planes that start unwritten.
#include <gtest/gtest.h>

#include "framequilt/tuning.h"
#include "imaging/filter.h"
#include "tests/opencl/kernel_planes.h"

namespace {

/// Pads by 2, both 5-tap passes, and the inner part.
template <class T>
std::vector<T> hostSmoothed(std::vector<T> image, float* kernel, int rows, int cols) {
  const int paddedRows = rows + 4;
  const int paddedCols = cols + 4;
  std::vector<T> a(area(paddedRows, paddedCols)), b = a;
  opencvcopyFilter2DBorderCh1(image.data(), rows, cols, 2, b.data(), a.data());
  opencvFilter2DRowCalcCh1(a.data(), kernel, paddedRows, paddedCols, 5, b.data());
  opencvFilter2DColCalcCh1(b.data(), kernel, paddedRows, paddedCols, 5, a.data());
  opencvcopyFilter2DTakeOutBoundCh1(a.data(), paddedRows, paddedCols, 2, image.data());
  return image;
}

TEST(SmoothingKernels, OfTheMotionCheckSmoothInPlace) {
  forEachBytePlane(1, [](int rows, int cols, const Bytes& image) {
    const int paddedRows = rows + 4;
    const int paddedCols = cols + 4;
    const DeviceBytes plane(image);
    const DeviceBytes a(area(paddedRows, paddedCols)), b(area(paddedRows, paddedCols));
    const Grid padded = gridOver(paddedRows, paddedCols);
    runKernel("opencvcopyFilter2DBorderRowUhcarMode", padded, plane, rows, cols, 2, a, b);
    runKernel("opencvcopyFilter2DBorderColUcharMode", borderGrid(paddedRows, 2), b, paddedRows,
              cols, 2, a, b);
    runKernel("opencvFilter2DRowCalcUcharWin5Mode", padded, a, paddedRows, paddedCols, b);
    runKernel("opencvFilter2DColCalcUcharWin5Mode", padded, b, paddedRows, paddedCols, a);
    runKernel("opencvcopyFilter2DTakeOutBoundUchar", gridOver(rows, cols), a, rows, cols, 2, plane);
    EXPECT_TRUE(sameBits(hostSmoothed(image, filter2DKerModel, rows, cols), plane.values()));
  });
}

TEST(SmoothingKernels, OfFloatsSmoothInPlace) {
  forEachFloatPlane([](int rows, int cols, const Floats& image) {
    const int paddedRows = rows + 4;
    const int paddedCols = cols + 4;
    for (const std::string twin : {"", "2"}) {
      const auto name = [&](const char* kernel) { return kernel + twin; };
      const DeviceFloats plane(image);
      const DeviceFloats a(area(paddedRows, paddedCols)), b(area(paddedRows, paddedCols));
      const Grid padded = gridOver(paddedRows, paddedCols);
      runKernel(name("opencvcopyFilter2DBorderRowFloat"), padded, plane, rows, cols, 2, b, a);
      runKernel(name("opencvcopyFilter2DBorderColFloat"), borderGrid(paddedRows, 2), a, paddedRows,
                cols, 2, b, a);
      runKernel(name("opencvFilter2DRowCalcFloatWin5"), padded, a, paddedRows, paddedCols, b);
      runKernel(name("opencvFilter2DColCalcFloatWin5"), padded, b, paddedRows, paddedCols, a);
      runKernel(name("opencvcopyFilter2DTakeOutBoundFloat"), gridOver(rows, cols), a, rows, cols, 2,
                plane);
      EXPECT_TRUE(sameBits(hostSmoothed(image, filter2DKer, rows, cols), plane.values())) << twin;
    }
  });
}

TEST(SmoothingKernels, OfThreeTapsSmooth) {
  forEachBytePlane(1, [](int rows, int cols, const Bytes& image) {
    const int paddedRows = rows + 2;
    const int paddedCols = cols + 2;
    Bytes expected = image, a(area(paddedRows, paddedCols)), b = a;
    opencvcopyFilter2DBorderCh1(expected.data(), rows, cols, 1, b.data(), a.data());
    opencvfilter2DCalcCh1(a.data(), filterH2Dker, paddedRows, paddedCols, 3, b.data());
    opencvcopyFilter2DTakeOutBoundCh1(b.data(), paddedRows, paddedCols, 1, expected.data());

    const DeviceBytes rowsPadded(a.size()), filtered(a.size()), smoothed(image.size());
    const Grid padded = gridOver(paddedRows, paddedCols);
    runKernel("opencvcopyFilter2DBorderRowUchar", padded, DeviceBytes(image), rows, cols, 1,
              rowsPadded);
    runKernel("opencvcopyFilter2DBorderColUchar", borderGrid(paddedRows, 1), rowsPadded, paddedRows,
              cols, 1);
    runKernel("opencvfilter2DCalcCharWin3Kernel", padded, rowsPadded, paddedRows, paddedCols,
              filtered);
    runKernel("opencvcopyFilter2DTakeOutBoundUchar", gridOver(rows, cols), filtered, rows, cols, 1,
              smoothed);
    EXPECT_TRUE(sameBits(expected, smoothed.values()));
  });
}

}  // namespace
