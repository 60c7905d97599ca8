// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "framequilt/tuning.h"
#include "imaging/filter.h"
#include "tests/opencl/kernel_planes.h"

namespace {

constexpr int kTaps = 5;

/// Elements that the host's pass does not write keep the source's value.
template <class T>
std::vector<T> hostVertical(std::vector<T> src, float* kernel, int rows, int cols) {
  std::vector<T> dst = src;
  opencvFilter2DRowCalcCh1(src.data(), kernel, rows, cols, kTaps, dst.data());
  return dst;
}

template <class T>
std::vector<T> hostHorizontal(std::vector<T> src, float* kernel, int rows, int cols) {
  std::vector<T> dst = src;
  opencvFilter2DColCalcCh1(src.data(), kernel, rows, cols, kTaps, dst.data());
  return dst;
}

/// Runs a pass on `src`, which must stay as it is.
template <class T>
std::vector<T> devicePass(const char* name, const std::vector<T>& src, int rows, int cols) {
  const DeviceBuffer<T> source(src), destination(src.size());
  runKernel(name, gridOver(rows, cols), source, rows, cols, destination);
  EXPECT_TRUE(sameBits(src, source.values())) << name;
  return destination.values();
}

TEST(FilterKernels, OfTheMotionCheckSmoothAsTheHost) {
  forEachBytePlane(1, [](int rows, int cols, const Bytes& plane) {
    EXPECT_TRUE(sameBits(hostVertical(plane, filter2DKerModel, rows, cols),
                         devicePass("opencvFilter2DRowCalcUcharWin5Mode", plane, rows, cols)));
    EXPECT_TRUE(sameBits(hostHorizontal(plane, filter2DKerModel, rows, cols),
                         devicePass("opencvFilter2DColCalcUcharWin5Mode", plane, rows, cols)));
  });
}

TEST(FilterKernels, OfFloatsSmoothAsTheHost) {
  forEachFloatPlane([](int rows, int cols, const Floats& plane) {
    const Floats vertical = hostVertical(plane, filter2DKer, rows, cols);
    const Floats horizontal = hostHorizontal(plane, filter2DKer, rows, cols);
    for (const char* name : {"opencvFilter2DRowCalcFloatWin5", "opencvFilter2DRowCalcFloatWin52"}) {
      EXPECT_TRUE(sameBits(vertical, devicePass(name, plane, rows, cols))) << name;
    }
    for (const char* name : {"opencvFilter2DColCalcFloatWin5", "opencvFilter2DColCalcFloatWin52"}) {
      EXPECT_TRUE(sameBits(horizontal, devicePass(name, plane, rows, cols))) << name;
    }
  });
}

TEST(FilterKernels, OfThreeTapsLeaveABlackFrame) {
  forEachBytePlane(1, [](int rows, int cols, const Bytes& plane) {
    Bytes src = plane;
    Bytes expected(plane.size(), 0);
    opencvfilter2DCalcCh1(src.data(), filterH2Dker, rows, cols, 3, expected.data());
    EXPECT_TRUE(
        sameBits(expected, devicePass("opencvfilter2DCalcCharWin3Kernel", plane, rows, cols)));
  });
}

}  // namespace
