// SPDX-License-Identifier: Apache-2.0
/// \file
/// What the kernels are tried on: sizes around those of a work-group, random and extreme planes.
#pragma once

#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "tests/imaging/reference.h"
#include "tests/opencl/kernel_runner.h"
#include "tests/support/guarded.h"
#include "tests/support/random_images.h"

struct PlaneSize {
  int rows, cols;
};

inline std::vector<PlaneSize> planeSizes() {
  if (isEmulated()) return {{1, 1}, {1, 5}, {6, 1}, {2, 3}, {7, 9}, {16, 16}, {17, 5}};

  std::vector<PlaneSize> sizes = {{480, 640}};
  for (int rows = 1; rows <= 6; ++rows) {
    for (int cols = 1; cols <= 6; ++cols) sizes.push_back({rows, cols});
  }
  for (int rows : {16, 32, 48}) {
    for (int cols : {1, 15, 16, 17, 32, 48}) {
      sizes.push_back({rows, cols});
      sizes.push_back({cols, rows});
    }
  }
  Random random(41);
  for (int i = 0; i < 30; ++i) sizes.push_back({random.between(1, 70), random.between(1, 70)});
  return sizes;
}

/// Random bytes, few of them extreme; bytes that are often 0; the extremes alone; a checkerboard.
inline std::vector<Bytes> bytePlanes(PlaneSize size, int channels = 1) {
  const std::size_t count = area(size.rows, size.cols, channels);
  Random random(count * 131 + static_cast<std::size_t>(size.rows));
  std::vector<Bytes> planes = {random.bytes(count)};
  if (isEmulated()) return planes;

  Bytes checkerboard(count);
  for (std::size_t i = 0; i < count; ++i) {
    const auto pixel = static_cast<int>(i) / channels;
    checkerboard[i] = (pixel / size.cols + pixel % size.cols) % 2 == 0 ? 0 : 255;
  }
  planes.insert(planes.end(),
                {random.bytes(count, 0, 2), Bytes(count, 0), Bytes(count, 255), checkerboard});
  return planes;
}

/// Gradient products as they come, and numbers of all magnitudes and both signs.
inline std::vector<Floats> floatPlanes(PlaneSize size) {
  const std::size_t count = area(size.rows, size.cols);
  Random random(count * 257 + static_cast<std::size_t>(size.cols));
  Floats products(count), fractions(count), mixed(count);
  for (std::size_t i = 0; i < count; ++i) {
    products[i] = static_cast<float>(random.between(0, 255) * random.between(0, 255));
    fractions[i] = static_cast<float>(random.between(0, 1 << 24)) * 0.00387F;
    const auto fraction = static_cast<float>(random.between(-(1 << 24), 1 << 24));
    mixed[i] = std::ldexp(fraction, random.between(-50, 20));
  }
  if (isEmulated()) return {mixed};
  return {products, fractions, mixed};
}

/// Calls `test(size, plane)` for every size and each of its planes, up to the first failure.
template <class Planes, class Test>
void forEachPlane(const Planes& planesOf, const Test& test) {
  for (const PlaneSize size : planeSizes()) {
    int number = 0;
    for (const auto& plane : planesOf(size)) {
      SCOPED_TRACE(std::to_string(size.rows) + " x " + std::to_string(size.cols) + ", plane " +
                   std::to_string(number++));
      test(size, plane);
      if (testing::Test::HasFailure()) return;
    }
  }
}

/// `test(rows, cols, plane)` on bytes.
template <class Test>
void forEachBytePlane(int channels, const Test& test) {
  forEachPlane([&](PlaneSize size) { return bytePlanes(size, channels); },
               [&](PlaneSize size, const Bytes& plane) { test(size.rows, size.cols, plane); });
}

/// `test(rows, cols, plane)` on floats.
template <class Test>
void forEachFloatPlane(const Test& test) {
  forEachPlane(floatPlanes,
               [&](PlaneSize size, const Floats& plane) { test(size.rows, size.cols, plane); });
}
