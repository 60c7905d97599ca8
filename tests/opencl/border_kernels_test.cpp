// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "imaging/filter.h"
#include "tests/opencl/kernel_planes.h"

namespace {

/// Half-widths: those of the filters and one that is mirrored more than once in small images.
constexpr int kBorders[] = {1, 2, 5};

std::size_t paddedArea(int rows, int cols, int border) {
  return area(rows + 2 * border, cols + 2 * border);
}

template <class T>
std::vector<T> hostPadded(std::vector<T> image, int rows, int cols, int border) {
  std::vector<T> padded(paddedArea(rows, cols, border));
  opencvcopyFilter2DBorderCh1(image.data(), rows, cols, border, static_cast<T*>(nullptr),
                              padded.data());
  return padded;
}

/// `padded` with the border columns as they are in `before`.
template <class T>
std::vector<T> withColumnsOf(const std::vector<T>& before, std::vector<T> padded, int cols,
                             int border) {
  const int paddedCols = cols + 2 * border;
  for (std::size_t i = 0; i < padded.size(); ++i) {
    const int c = static_cast<int>(i % static_cast<std::size_t>(paddedCols));
    if (c < border || c >= border + cols) padded[i] = before[i];
  }
  return padded;
}

TEST(BorderKernels, OfTheMotionCheckFillBothPlanes) {
  forEachBytePlane(1, [](int rows, int cols, const Bytes& image) {
    for (const int border : kBorders) {
      const Bytes expected = hostPadded(image, rows, cols, border);
      const Bytes before(expected.size(), 99);
      const DeviceBytes source(image), tmpA(before), tmpB(before);
      const int paddedRows = rows + 2 * border;
      runKernel("opencvcopyFilter2DBorderRowUhcarMode", gridOver(paddedRows, cols + 2 * border),
                source, rows, cols, border, tmpA, tmpB);
      const Bytes afterRows = withColumnsOf(before, expected, cols, border);
      EXPECT_TRUE(sameBits(afterRows, tmpA.values())) << border;
      EXPECT_TRUE(sameBits(afterRows, tmpB.values())) << border;
      EXPECT_TRUE(sameBits(image, source.values())) << border;

      runKernel("opencvcopyFilter2DBorderColUcharMode", borderGrid(paddedRows, border), tmpB,
                paddedRows, cols, border, tmpA, tmpB);
      EXPECT_TRUE(sameBits(expected, tmpA.values())) << border;
      EXPECT_TRUE(sameBits(expected, tmpB.values())) << border;
    }
  });
}

TEST(BorderKernels, OfTheMotionCheckReadTheirFirstArgument) {
  const Bytes image = {1, 2, 3, 4, 5, 6};
  const Bytes expected = hostPadded(image, 2, 3, 2);
  const Bytes before(expected.size(), 99);
  const Bytes onlyColumns = withColumnsOf(expected, before, 3, 2);
  const DeviceBytes padded(withColumnsOf(before, expected, 3, 2)), tmpA(before), tmpB(before);
  runKernel("opencvcopyFilter2DBorderColUcharMode", borderGrid(6, 2), padded, 6, 3, 2, tmpA, tmpB);
  EXPECT_TRUE(sameBits(onlyColumns, tmpA.values()));
  EXPECT_TRUE(sameBits(onlyColumns, tmpB.values()));
}

TEST(BorderKernels, OfBytesPadOnePlane) {
  forEachBytePlane(1, [](int rows, int cols, const Bytes& image) {
    for (const int border : kBorders) {
      const Bytes expected = hostPadded(image, rows, cols, border);
      const Bytes before(expected.size(), 99);
      const DeviceBytes padded(before);
      const int paddedRows = rows + 2 * border;
      runKernel("opencvcopyFilter2DBorderRowUchar", gridOver(paddedRows, cols + 2 * border),
                DeviceBytes(image), rows, cols, border, padded);
      EXPECT_TRUE(sameBits(withColumnsOf(before, expected, cols, border), padded.values()))
          << border;
      runKernel("opencvcopyFilter2DBorderColUchar", borderGrid(paddedRows, border), padded,
                paddedRows, cols, border);
      EXPECT_TRUE(sameBits(expected, padded.values())) << border;
    }
  });
}

TEST(BorderKernels, OfFloatsLeaveTheScratchPlaneAlone) {
  struct Twin {
    const char *row, *col;
  };
  for (const Twin name :
       {Twin{"opencvcopyFilter2DBorderRowFloat", "opencvcopyFilter2DBorderColFloat"},
        Twin{"opencvcopyFilter2DBorderRowFloat2", "opencvcopyFilter2DBorderColFloat2"}}) {
    forEachFloatPlane([=](int rows, int cols, const Floats& image) {
      for (const int border : kBorders) {
        const Floats expected = hostPadded(image, rows, cols, border);
        const Floats before(expected.size(), 99.5F);
        const Floats untouched(image.size(), 77.25F);
        const DeviceFloats scratch(untouched), padded(before);
        const int paddedRows = rows + 2 * border;
        runKernel(name.row, gridOver(paddedRows, cols + 2 * border), DeviceFloats(image), rows,
                  cols, border, scratch, padded);
        EXPECT_TRUE(sameBits(withColumnsOf(before, expected, cols, border), padded.values()))
            << name.row << ' ' << border;
        runKernel(name.col, borderGrid(paddedRows, border), padded, paddedRows, cols, border,
                  scratch, padded);
        EXPECT_TRUE(sameBits(expected, padded.values())) << name.col << ' ' << border;
        EXPECT_TRUE(sameBits(untouched, scratch.values())) << name.col << ' ' << border;
      }
    });
  }
}

template <class T>
std::vector<T> hostInner(std::vector<T> padded, int paddedRows, int paddedCols, int border) {
  std::vector<T> image(area(paddedRows - 2 * border, paddedCols - 2 * border));
  opencvcopyFilter2DTakeOutBoundCh1(padded.data(), paddedRows, paddedCols, border, image.data());
  return image;
}

/// Takes planes that leave an inner part as padded ones.
template <class T>
void expectInnerPart(const char* name, int paddedRows, int paddedCols,
                     const std::vector<T>& padded) {
  for (const int border : kBorders) {
    const int rows = paddedRows - 2 * border;
    const int cols = paddedCols - 2 * border;
    if (rows < 1 || cols < 1) continue;
    const DeviceBuffer<T> source(padded), image(area(rows, cols));
    runKernel(name, gridOver(rows, cols), source, rows, cols, border, image);
    EXPECT_TRUE(sameBits(hostInner(padded, paddedRows, paddedCols, border), image.values()))
        << name << ' ' << border;
    EXPECT_TRUE(sameBits(padded, source.values())) << name << ' ' << border;
  }
}

TEST(BorderKernels, TakeTheInnerPartOut) {
  forEachBytePlane(1, [](int rows, int cols, const Bytes& padded) {
    expectInnerPart("opencvcopyFilter2DTakeOutBoundUchar", rows, cols, padded);
  });
  for (const char* name :
       {"opencvcopyFilter2DTakeOutBoundFloat", "opencvcopyFilter2DTakeOutBoundFloat2"}) {
    forEachFloatPlane([=](int rows, int cols, const Floats& padded) {
      expectInnerPart(name, rows, cols, padded);
    });
  }
}

}  // namespace
