// SPDX-License-Identifier: Apache-2.0
#include "features/harris.h"

#include <cmath>
#include <string>
#include <thread>

#include "features/selection.h"
#include "tests/features/harris_fixture.h"
#include "tests/support/captured_output.h"

namespace {

using Search = bool (*)(unsigned char*, imgInfo, std::vector<SPoint>&);
using Bytes = std::vector<unsigned char>;
using Floats = std::vector<float>;

constexpr imgInfo kInfo = {0, 1, 180, 240};

/// Reflects an index once at either end, without repeating the edge.
int mirrored(int i, int n) { return i < 0 ? -i : i >= n ? 2 * n - 2 - i : i; }

/// One pass of a smoothing along one axis, borders mirrored.
Floats smoothedAlong(const Floats& plane, int rows, int cols, bool down, const float* kernel,
                     int taps) {
  Floats out(plane.size());
  for (int r = 0; r < rows; ++r) {
    for (int c = 0; c < cols; ++c) {
      float sum = 0.0F;
      for (int j = 0; j < taps; ++j) {
        const int y = down ? mirrored(r - taps / 2 + j, rows) : r;
        const int x = down ? c : mirrored(c - taps / 2 + j, cols);
        sum = sum + kernel[j] * plane[static_cast<std::size_t>(y * cols + x)];
      }
      out[static_cast<std::size_t>(r * cols + c)] = sum;
    }
  }
  return out;
}

/// What the detector works out before it selects.
struct SlowPlanes {
  Floats gx2, gy2, gxy, response;
  float mean;
};

/// The detector from its formulas: every `step`th pixel, gradients, smoothing, response.
SlowPlanes slowPlanes(const Bytes& gray, int rows, int cols, int step, const float* kernel,
                      int taps) {
  const int h = rows / step;
  const int w = cols / step;
  const auto pixel = [&](int r, int c) {
    return int{gray[static_cast<std::size_t>(step * r * cols + step * c)]};
  };
  const auto count = static_cast<std::size_t>(h * w);
  Floats planes[3] = {Floats(count), Floats(count), Floats(count)};
  for (int r = 1; r < h - 1; ++r) {
    for (int c = 1; c < w - 1; ++c) {
      const int sx = pixel(r - 1, c + 1) - pixel(r - 1, c - 1) +
                     2 * (pixel(r, c + 1) - pixel(r, c - 1)) + pixel(r + 1, c + 1) -
                     pixel(r + 1, c - 1);
      const int sy = pixel(r + 1, c - 1) - pixel(r - 1, c - 1) +
                     2 * (pixel(r + 1, c) - pixel(r - 1, c)) + pixel(r + 1, c + 1) -
                     pixel(r - 1, c + 1);
      const int gx = std::abs(sx) / 4;
      const int gy = std::abs(sy) / 4;
      const auto i = static_cast<std::size_t>(r * w + c);
      planes[0][i] = static_cast<float>(gx * gx);
      planes[1][i] = static_cast<float>(gy * gy);
      planes[2][i] = static_cast<float>(gx * gy);
    }
  }
  for (Floats& plane : planes) {
    plane = smoothedAlong(plane, h, w, true, kernel, taps);
    plane = smoothedAlong(plane, h, w, false, kernel, taps);
  }
  Floats response(count);
  float sum = 0.0F;
  for (int r = 20; r < h - 20; ++r) {
    for (int c = 20; c < w - 20; ++c) {
      const auto i = static_cast<std::size_t>(r * w + c);
      const float a = planes[0][i];
      const float b = planes[1][i];
      const float x = planes[2][i];
      const float value = (a * b - x * x) - ((a + b) * 0.007F) * (a + b);
      if (value > 0.0F) {
        response[i] = value;
        sum += value;
      }
    }
  }
  return {planes[0], planes[1], planes[2], response, sum / static_cast<float>(h * w)};
}

/// And with the selection.
Points slowCorners(const Bytes& gray, int rows, int cols, const float* kernel, int taps,
                   int step = 2) {
  SlowPlanes planes = slowPlanes(gray, rows, cols, step, kernel, taps);
  Floats values;
  Points points;
  Points corners;
  int wanted = 0;
  responseValueMaxSuppression(planes.response.data(), planes.mean, rows / step, cols / step, values,
                              points);
  goToFirstGetRidOfSomeSPoints(values, points, numpoint, num5000, 1, 1, wanted);
  goToSecondGetRidOfSomeSPoints(values, points, wanted, step, 0.5F, corners);
  return corners;
}

Floats firstOf(const float* plane, std::size_t count) { return {plane, plane + count}; }

Points cornersOf(Search search, Bytes gray, imgInfo info = kInfo) {
  Points corners;
  const bool found = search(gray.data(), info, corners);
  EXPECT_EQ(found, !corners.empty());
  return corners;
}

TEST_F(HarrisRun, BothSearchesEqualTheFormulas) {
  for (unsigned seed = 1; seed <= 5; ++seed) {
    SCOPED_TRACE(seed);
    Bytes gray = patchwork(seed, kRows, kCols);
    Random random(seed);
    for (auto& value : gray) value = static_cast<unsigned char>(value / 2 + random.between(0, 9));
    const Points expected = slowCorners(gray, kRows, kCols, filter2DKer, 5);
    ASSERT_EQ(expected.size(), 60U);
    EXPECT_EQ(cornersOf(findHarrisCornerCoordianteFun1, gray), expected);
    EXPECT_EQ(cornersOf(findHarrisCornerCoordianteFun2, gray), expected);
  }
}

TEST_F(HarrisRun, PlanesHoldTheSmoothedProductsAndTheResponse) {
  // Nothing is wanted, so that nothing is found and the planes stay.
  const ScopedValue<int> nothing(numpoint, 0);
  Random random(13);
  Bytes gray = patchwork(13, kRows, kCols);
  for (auto& value : gray) value = static_cast<unsigned char>(value / 2 + random.between(0, 99));
  // Five taps are smoothed row by row: only the response has a plane then.
  for (const int taps : {2, 3, 4, 5}) {
    SCOPED_TRACE(taps);
    const ScopedValue<int> tapCount(filter2DKerSize[0], taps);
    const SlowPlanes expected = slowPlanes(gray, kRows, kCols, 2, filter2DKer, taps);
    ASSERT_GT(expected.mean, 0.0F);
    EXPECT_TRUE(cornersOf(findHarrisCornerCoordianteFun1, gray).empty());
    EXPECT_EQ(firstOf(grad_bound, kSearchPixels), expected.response);
    EXPECT_TRUE(cornersOf(findHarrisCornerCoordianteFun2, gray).empty());
    EXPECT_EQ(firstOf(grad_bound1, kSearchPixels), expected.response);
    if (taps == 5) continue;
    EXPECT_EQ(firstOf(grad_x2, kSearchPixels), expected.gx2);
    EXPECT_EQ(firstOf(grad_y2, kSearchPixels), expected.gy2);
    EXPECT_EQ(firstOf(grad_xy, kSearchPixels), expected.gxy);
    EXPECT_EQ(firstOf(grad_x21, kSearchPixels), expected.gx2);
    EXPECT_EQ(firstOf(grad_y21, kSearchPixels), expected.gy2);
    EXPECT_EQ(firstOf(grad_xy1, kSearchPixels), expected.gxy);
  }
}

TEST_F(HarrisRun, WhatThePlanesHeldBeforeDoesNotShow) {
  for (float** plane : {&grad_x2, &grad_y2, &grad_xy, &grad_bound, &grad_bound_temp}) {
    *plane = new float[kSearchPixels * 4];
    std::fill_n(*plane, kSearchPixels * 4, 1e6F);
  }
  for (const int taps : {3, 5}) {
    const ScopedValue<int> tapCount(filter2DKerSize[0], taps);
    EXPECT_TRUE(cornersOf(findHarrisCornerCoordianteFun1, Bytes(kSearchPixels * 4, 90)).empty());
    EXPECT_EQ(firstOf(grad_bound, kSearchPixels), Floats(kSearchPixels));
  }
}

TEST_F(HarrisRun, SearchMayBeAsLargeAsTheFrame) {
  // The padded planes are then larger than the frame; the address checks see when they are not.
  const ScopedValue<int> factor(pointdownscal, 1);
  const ScopedValue<int> rows(gray_pointdownscal_row, kRows), cols(gray_pointdownscal_col, kCols);
  const Bytes gray = patchwork(14, kRows, kCols);
  EXPECT_EQ(cornersOf(findHarrisCornerCoordianteFun1, gray),
            slowCorners(gray, kRows, kCols, filter2DKer, 5, 1));
}

TEST_F(HarrisRun, CornersComeBackInPixelsOfTheImageForAnyFactor) {
  constexpr int kTall = 3 * kRows / 2;
  constexpr int kWide = 3 * kCols / 2;
  const ScopedValue<int> factor(pointdownscal, 3);
  const Bytes gray = patchwork(15, kTall, kWide, 12);
  const Points corners = cornersOf(findHarrisCornerCoordianteFun1, gray, {0, 1, kTall, kWide});
  EXPECT_EQ(corners.size(), 60U);
  EXPECT_EQ(corners, slowCorners(gray, kTall, kWide, filter2DKer, 5, 3));
}

TEST_F(HarrisRun, BothSearchesRunAtTheSameTime) {
  const Bytes one = patchwork(11, kRows, kCols);
  const Bytes two = patchwork(12, kRows, kCols);
  const Points expectedOne = cornersOf(findHarrisCornerCoordianteFun1, one);
  const Points expectedTwo = cornersOf(findHarrisCornerCoordianteFun2, two);
  for (int round = 0; round < 5; ++round) {
    Points cornersOne;
    std::thread other([&] { cornersOne = cornersOf(findHarrisCornerCoordianteFun1, one); });
    const Points cornersTwo = cornersOf(findHarrisCornerCoordianteFun2, two);
    other.join();
    EXPECT_EQ(cornersOne, expectedOne);
    EXPECT_EQ(cornersTwo, expectedTwo);
  }
}

TEST_F(HarrisRun, CornersAreEvenAndFarFromTheEdges) {
  for (const SPoint corner :
       cornersOf(findHarrisCornerCoordianteFun1, patchwork(3, kRows, kCols))) {
    EXPECT_EQ(corner.x % 2, 0);
    EXPECT_EQ(corner.y % 2, 0);
    EXPECT_TRUE(corner.x >= 40 && corner.x < kCols - 40) << corner.x;
    EXPECT_TRUE(corner.y >= 40 && corner.y < kRows - 40) << corner.y;
  }
}

TEST_F(HarrisRun, PlanesGoWithCornersAndStayWithout) {
  const Bytes flat(kSearchPixels * 4, 90);
  EXPECT_TRUE(cornersOf(findHarrisCornerCoordianteFun1, flat).empty());
  for (const float* plane : {grad_x2, grad_y2, grad_xy, grad_bound, grad_bound_temp}) {
    EXPECT_NE(plane, nullptr);
  }
  EXPECT_FALSE(cornersOf(findHarrisCornerCoordianteFun1, patchwork(1, kRows, kCols)).empty());
  for (const float* plane : {grad_x2, grad_y2, grad_xy, grad_bound, grad_bound_temp, grad_x21,
                             grad_y21, grad_xy1, grad_bound1, grad_bound_temp1}) {
    EXPECT_EQ(plane, nullptr);
  }
}

TEST_F(HarrisRun, EachSearchHasItsOwnPlanes) {
  const Bytes flat(kSearchPixels * 4, 90);
  EXPECT_TRUE(cornersOf(findHarrisCornerCoordianteFun2, flat).empty());
  for (const float* plane : {grad_x21, grad_y21, grad_xy1, grad_bound1, grad_bound_temp1}) {
    EXPECT_NE(plane, nullptr);
  }
  for (const float* plane : {grad_x2, grad_y2, grad_xy, grad_bound, grad_bound_temp}) {
    EXPECT_EQ(plane, nullptr);
  }
}

TEST_F(HarrisRun, FlatImageSaysThatThereAreNone) {
  Bytes flat(kSearchPixels * 4, 90);
  Points corners;
  for (const Search search : {findHarrisCornerCoordianteFun1, findHarrisCornerCoordianteFun2}) {
    EXPECT_EQ(standardOutputOf([&] { EXPECT_FALSE(search(flat.data(), kInfo, corners)); }),
              "goToGetRidOfSomeSPoints CornervalueIn size is 0\n"
              "goToGetRidOfSomeSPoints CornervalueIn size is 0\n"
              "HarrissCornerSPoint size is 0\n");
  }
}

TEST_F(HarrisRun, SearchSizeBelow41HasNone) {
  for (const bool rows : {true, false}) {
    const ScopedValue<int> small(rows ? gray_pointdownscal_row : gray_pointdownscal_col, 40);
    EXPECT_TRUE(cornersOf(findHarrisCornerCoordianteFun1, patchwork(1, kRows, kCols)).empty());
  }
}

TEST_F(HarrisRun, NullImageIsRefusedWithTheLine) {
  Points corners;
  for (const Search search : {findHarrisCornerCoordianteFun1, findHarrisCornerCoordianteFun2}) {
    EXPECT_EQ(standardOutputOf([&] { EXPECT_FALSE(search(nullptr, kInfo, corners)); }),
              "findHarrisCornerCoordianteFun ptr is null\n");
  }
  EXPECT_EQ(grad_x2, nullptr) << "nothing was allocated";
}

TEST_F(HarrisRun, MissingReducedPlaneIsRefusedByTheStages) {
  Bytes gray = patchwork(1, kRows, kCols);
  Points corners;
  unsigned char* const plane = resiz_OneBound;
  resiz_OneBound = nullptr;
  EXPECT_EQ(standardOutputOf(
                [&] { EXPECT_FALSE(findHarrisCornerCoordianteFun1(gray.data(), kInfo, corners)); }),
            "src is null || scale is 0\nptr is null\nfindGradSquareCrossTerms failed\n");
  const ScopedValue<int> factor(pointdownscal, 1);
  EXPECT_EQ(standardOutputOf(
                [&] { EXPECT_FALSE(findHarrisCornerCoordianteFun1(gray.data(), kInfo, corners)); }),
            "ptr is null\nfindGradSquareCrossTerms failed\n");
  EXPECT_TRUE(corners.empty());
  resiz_OneBound = plane;
}

TEST_F(HarrisRun, FactorOneSearchesTheImageItself) {
  const ScopedValue<int> factor(pointdownscal, 1);
  Bytes gray = patchwork(5, kRows / 2, kCols / 2);
  Points corners;
  EXPECT_TRUE(findHarrisCornerCoordianteFun1(gray.data(), {0, 1, kRows / 2, kCols / 2}, corners));
  EXPECT_TRUE(std::equal(gray.begin(), gray.end(), resiz_OneBound));
  bool anyOdd = false;
  for (const SPoint corner : corners) anyOdd = anyOdd || corner.x % 2 != 0 || corner.y % 2 != 0;
  EXPECT_TRUE(anyOdd) << "coordinates are not multiplied";
}

TEST_F(HarrisRun, FactorOneCopiesAsManyBytesAsTheSearchHasWhateverTheImage) {
  const ScopedValue<int> factor(pointdownscal, 1);
  const Bytes gray = patchwork(18, kRows / 2, kCols / 2, 3);
  std::fill_n(resiz_OneBound, kSearchPixels * 4, static_cast<unsigned char>(77));
  cornersOf(findHarrisCornerCoordianteFun1, gray, {0, 1, 10, 10});
  Bytes expected = gray;
  expected.resize(kSearchPixels * 4, 77);
  EXPECT_EQ(Bytes(resiz_OneBound, resiz_OneBound + kSearchPixels * 4), expected);
}

TEST_F(HarrisRun, ReducedImageIsEverySecondPixel) {
  const Bytes gray = patchwork(5, kRows, kCols, 3);
  cornersOf(findHarrisCornerCoordianteFun2, gray);
  for (const auto& [r, c] : {std::pair{0, 0}, std::pair{7, 31}, std::pair{89, 119}}) {
    EXPECT_EQ(resiz_TwoBound[r * (kCols / 2) + c],
              gray[static_cast<std::size_t>(2 * r * kCols + 2 * c)]);
  }
}

TEST_F(HarrisRun, StripFillsTheBeginningOfTheReducedPlaneAndZerosFollow) {
  constexpr int kStripRows = 100;
  constexpr int kStripCols = 200;
  const Bytes strip = patchwork(16, kStripRows, kStripCols, 3);
  std::fill_n(resiz_OneBound, kSearchPixels * 4, static_cast<unsigned char>(77));
  cornersOf(findHarrisCornerCoordianteFun1, strip, {0, 1, kStripRows, kStripCols});
  Bytes expected;
  for (int r = 0; r < kStripRows; r += 2) {
    for (int c = 0; c < kStripCols; c += 2) {
      expected.push_back(strip[static_cast<std::size_t>(r * kStripCols + c)]);
    }
  }
  expected.resize(kSearchPixels, 0);
  expected.resize(kSearchPixels * 4, 77);
  EXPECT_EQ(Bytes(resiz_OneBound, resiz_OneBound + kSearchPixels * 4), expected);
}

TEST_F(HarrisRun, ChannelsOfTheImageReachTheReduction) {
  const Bytes colour = patchwork(17, 90, 120 * 3, 1);
  cornersOf(findHarrisCornerCoordianteFun1, colour, {0, 3, 90, 120});
  for (std::size_t k = 0; k < 60; ++k) {
    // Every second pixel of the first row, three bytes each.
    ASSERT_TRUE(std::equal(resiz_OneBound + 3 * k, resiz_OneBound + 3 * k + 3,
                           colour.begin() + static_cast<std::ptrdiff_t>(6 * k)))
        << k;
  }
}

TEST_F(HarrisRun, EachSearchReadsItsOwnKernel) {
  const Bytes gray = patchwork(6, kRows, kCols);
  const Points usual = cornersOf(findHarrisCornerCoordianteFun1, gray);
  const float steep[5] = {0.0F, 0.1F, 0.8F, 0.1F, 0.0F};
  float saved[5];
  std::copy(filter2DKer1, filter2DKer1 + 5, saved);
  std::copy(steep, steep + 5, filter2DKer1);
  EXPECT_EQ(cornersOf(findHarrisCornerCoordianteFun1, gray), usual);
  EXPECT_EQ(cornersOf(findHarrisCornerCoordianteFun2, gray),
            slowCorners(gray, kRows, kCols, steep, 5));
  EXPECT_NE(cornersOf(findHarrisCornerCoordianteFun2, gray), usual);
  std::copy(saved, saved + 5, filter2DKer1);
}

TEST_F(HarrisRun, TapCountIsATuningParameter) {
  const Bytes gray = patchwork(7, kRows, kCols);
  const Points usual = cornersOf(findHarrisCornerCoordianteFun1, gray);
  for (const int taps : {1, 3, 4}) {
    const ScopedValue<int> size(filter2DKerSize[0], taps);
    const Points corners = cornersOf(findHarrisCornerCoordianteFun1, gray);
    EXPECT_EQ(corners, slowCorners(gray, kRows, kCols, filter2DKer, taps)) << taps;
  }
  // More taps than the kernel has are not read.
  const ScopedValue<int> size(filter2DKerSize[0], 9);
  EXPECT_EQ(cornersOf(findHarrisCornerCoordianteFun1, gray), usual);
}

/// The limit is the mean of the responses alone, however weak they are.
TEST_F(HarrisRun, WeakResponsesHaveCornersWithAnyTapCount) {
  const Bytes gray = patchwork(8, kRows, kCols);
  float saved[5];
  std::copy(filter2DKer, filter2DKer + 5, saved);
  for (float& weight : filter2DKer) weight *= 1e-4F;
  for (const int taps : {3, 5}) {
    const ScopedValue<int> size(filter2DKerSize[0], taps);
    const Points corners = cornersOf(findHarrisCornerCoordianteFun1, gray);
    EXPECT_FALSE(corners.empty()) << taps;
    EXPECT_EQ(corners, slowCorners(gray, kRows, kCols, filter2DKer, taps)) << taps;
  }
  std::copy(saved, saved + 5, filter2DKer);
}

TEST_F(HarrisRun, BudgetsOfTheRunBoundTheCorners) {
  const Bytes gray = patchwork(8, kRows, kCols);
  for (const int wanted : {1, 25}) {
    const ScopedValue<int> budget(numpoint, wanted);
    EXPECT_EQ(cornersOf(findHarrisCornerCoordianteFun1, gray).size(),
              static_cast<std::size_t>(wanted));
  }
  const ScopedValue<int> negative(numpoint, -100);
  const ScopedValue<int> negativeCap(num5000, -700);
  EXPECT_TRUE(cornersOf(findHarrisCornerCoordianteFun1, gray).empty());
}

TEST_F(HarrisRun, CapOfTheRunBelowItsBudgetLeavesCornersInPixelsOfTheSearch) {
  const Bytes gray = patchwork(10, kRows, kCols);
  const ScopedValue<int> cap(num5000, 30);
  const Points corners = cornersOf(findHarrisCornerCoordianteFun1, gray);
  EXPECT_EQ(corners.size(), 30U);
  EXPECT_EQ(corners, slowCorners(gray, kRows, kCols, filter2DKer, 5));
  for (const SPoint corner : corners) {
    EXPECT_TRUE(corner.x < kCols / 2 - 20 && corner.y < kRows / 2 - 20) << "not multiplied";
  }
}

TEST_F(HarrisRun, MirroredImageHasTheMirroredResponse) {
  constexpr int kWide = 241;
  const Bytes gray = patchwork(9, kRows, kWide);
  Bytes mirror = gray;
  for (int r = 0; r < kRows; ++r) {
    std::reverse(mirror.begin() + r * kWide, mirror.begin() + (r + 1) * kWide);
  }
  const auto responseOf = [](Bytes image) {
    Floats planes[3] = {Floats(image.size()), Floats(image.size()), Floats(image.size())};
    Floats response(image.size());
    float mean = 0.0F;
    float sum = 0.0F;
    findGradSquareCrossTerms(image.data(), kRows, kWide, planes[0].data(), planes[1].data(),
                             planes[2].data());
    calcResponseValue(planes[0].data(), planes[1].data(), planes[2].data(), 0.007F, kRows, kWide,
                      response.data(), mean, sum);
    return response;
  };
  const Floats straight = responseOf(gray);
  Floats mirrored = responseOf(mirror);
  for (int r = 0; r < kRows; ++r) {
    std::reverse(mirrored.begin() + r * kWide, mirrored.begin() + (r + 1) * kWide);
  }
  EXPECT_EQ(straight, mirrored);
}

}  // namespace
