// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <vector>

#include "features/harris.h"
#include "tests/support/captured_output.h"
#include "tests/support/guarded.h"
#include "tests/support/random_images.h"

namespace {

constexpr float kK = 0.007F;

struct Products {
  GuardedFloats gx2, gy2, gxy;

  explicit Products(std::size_t pixels) : gx2(pixels), gy2(pixels), gxy(pixels) {}
  bool intact() const { return gx2.intact() && gy2.intact() && gxy.intact(); }
};

Products gradients(Bytes image, int rows, int cols) {
  Products products(image.size());
  EXPECT_TRUE(findGradSquareCrossTerms(image.data(), rows, cols, products.gx2.data(),
                                       products.gy2.data(), products.gxy.data()));
  EXPECT_TRUE(products.intact());
  return products;
}

TEST(Gradients, ByHand) {
  // Sx = (30 + 2 * 60 + 90) - (10 + 2 * 40 + 70) = 80, Sy = (70 + 160 + 90) - (10 + 40 + 30) = 240.
  const Products products = gradients({10, 20, 30, 40, 50, 60, 70, 80, 90}, 3, 3);
  EXPECT_EQ(products.gx2.values()[4], 400.0F);
  EXPECT_EQ(products.gy2.values()[4], 3600.0F);
  EXPECT_EQ(products.gxy.values()[4], 1200.0F);
}

TEST(Gradients, AreQuarteredAsMagnitudes) {
  // Sx = -7: a magnitude of 7 / 4 = 1; a shift of the signed value would give 2.
  const Products products = gradients({7, 0, 0, 0, 0, 0, 0, 0, 0}, 3, 3);
  EXPECT_EQ(products.gx2.values()[4], 1.0F);
  EXPECT_EQ(products.gxy.values()[4], 1.0F);
}

TEST(Gradients, BothDiagonalsHaveTheSameCrossTerm) {
  const Products falling = gradients({200, 0, 0, 0, 100, 0, 0, 0, 0}, 3, 3);
  const Products rising = gradients({0, 0, 200, 0, 100, 0, 0, 0, 0}, 3, 3);
  EXPECT_GT(falling.gxy.values()[4], 0.0F);
  EXPECT_EQ(falling.gxy.values()[4], rising.gxy.values()[4]);
}

TEST(Gradients, UniformImageHasNone) {
  const Products products = gradients(Bytes(7 * 8, 200), 7, 8);
  for (int r = 1; r < 6; ++r) {
    for (int c = 1; c < 7; ++c) {
      const auto i = static_cast<std::size_t>(r * 8 + c);
      EXPECT_EQ(products.gx2.values()[i], 0.0F);
      EXPECT_EQ(products.gy2.values()[i], 0.0F);
      EXPECT_EQ(products.gxy.values()[i], 0.0F);
    }
  }
}

TEST(Gradients, SteepestStepsFit) {
  // Sx = 4 * 255 and Sy = 0; along the diagonal both are 3 * 255 / 4 = 191, truncated.
  const Products across = gradients({0, 0, 255, 0, 0, 255, 0, 0, 255}, 3, 3);
  EXPECT_EQ(across.gx2.values()[4], 65025.0F);
  EXPECT_EQ(across.gy2.values()[4], 0.0F);
  EXPECT_EQ(across.gxy.values()[4], 0.0F);
  const Products corner = gradients({0, 0, 0, 0, 0, 255, 0, 255, 255}, 3, 3);
  EXPECT_EQ(corner.gx2.values()[4], 36481.0F);
  EXPECT_EQ(corner.gy2.values()[4], 36481.0F);
  EXPECT_EQ(corner.gxy.values()[4], 36481.0F);
}

/// The plane of a mirrored image.
Floats mirroredRows(Floats plane, int rows, int cols) {
  for (int r = 0; r < rows; ++r) {
    std::reverse(plane.begin() + r * cols, plane.begin() + (r + 1) * cols);
  }
  return plane;
}

TEST(Gradients, MirroredImageHasTheMirroredProducts) {
  constexpr int kRows = 9;
  constexpr int kCols = 14;
  Random random(3);
  const Bytes image = random.bytes(kRows * kCols);
  Bytes mirror = image;
  for (int r = 0; r < kRows; ++r) {
    std::reverse(mirror.begin() + r * kCols, mirror.begin() + (r + 1) * kCols);
  }
  const Products straight = gradients(image, kRows, kCols);
  const Products reversed = gradients(mirror, kRows, kCols);
  EXPECT_EQ(mirroredRows(reversed.gx2.values(), kRows, kCols), straight.gx2.values());
  EXPECT_EQ(mirroredRows(reversed.gy2.values(), kRows, kCols), straight.gy2.values());
  EXPECT_EQ(mirroredRows(reversed.gxy.values(), kRows, kCols), straight.gxy.values());
}

TEST(Gradients, OutermostPixelsAreNotWritten) {
  Random random(1);
  const Products products = gradients(random.bytes(5 * 6), 5, 6);
  const Floats gx2 = products.gx2.values();
  for (int i = 0; i < 30; ++i) {
    const bool outer = i / 6 == 0 || i / 6 == 4 || i % 6 == 0 || i % 6 == 5;
    EXPECT_EQ(gx2[static_cast<std::size_t>(i)] == GuardedFloats::kUntouched, outer) << i;
  }
}

TEST(Gradients, TooSmallImagesSucceedUntouched) {
  for (const auto& [rows, cols] : {std::pair{2, 9}, std::pair{9, 2}, std::pair{0, 0}}) {
    Bytes image(static_cast<std::size_t>(rows * cols) + 1, 50);
    const Products products = gradients(image, rows, cols);
    EXPECT_EQ(products.gx2.values(), Floats(image.size(), GuardedFloats::kUntouched));
  }
}

TEST(Gradients, NullPointersAreRefusedWithTheLine) {
  unsigned char image[9] = {};
  float plane[9];
  for (int null = 0; null < 4; ++null) {
    EXPECT_EQ(standardOutputOf([&] {
                EXPECT_FALSE(findGradSquareCrossTerms(
                    null == 0 ? nullptr : image, 3, 3, null == 1 ? nullptr : plane,
                    null == 2 ? nullptr : plane, null == 3 ? nullptr : plane));
              }),
              "ptr is null\n");
  }
}

TEST(Gradients, OfTwoImagesAreThoseOfEach) {
  Random random(2);
  Bytes a = random.bytes(12 * 17);
  Bytes b = random.bytes(12 * 17);
  Products both[] = {Products(a.size()), Products(b.size())};
  EXPECT_TRUE(findGradSquareCrossTermsTwo(
      a.data(), b.data(), 12, 17, both[0].gx2.data(), both[1].gx2.data(), both[0].gy2.data(),
      both[1].gy2.data(), both[0].gxy.data(), both[1].gxy.data()));
  const Products single[] = {gradients(a, 12, 17), gradients(b, 12, 17)};
  for (int k = 0; k < 2; ++k) {
    EXPECT_TRUE(both[k].intact());
    EXPECT_EQ(both[k].gx2.values(), single[k].gx2.values());
    EXPECT_EQ(both[k].gy2.values(), single[k].gy2.values());
    EXPECT_EQ(both[k].gxy.values(), single[k].gxy.values());
  }
}

TEST(Gradients, OfTwoImagesCheckOnlyTheFirst) {
  unsigned char image[9] = {};
  float plane[9];
  for (int null = 0; null < 4; ++null) {
    EXPECT_EQ(standardOutputOf([&] {
                EXPECT_FALSE(findGradSquareCrossTermsTwo(
                    null == 0 ? nullptr : image, image, 3, 3, null == 1 ? nullptr : plane, plane,
                    null == 2 ? nullptr : plane, plane, null == 3 ? nullptr : plane, plane));
              }),
              "ptr is null\n");
  }
  // Nothing to do for two rows, so the second image's null pointers are never followed.
  EXPECT_TRUE(findGradSquareCrossTermsTwo(image, nullptr, 2, 3, plane, nullptr, plane, nullptr,
                                          plane, nullptr));
}

TEST(Gradients, EqualASlowSobelOnRandomImages) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    const int rows = random.between(3, 30);
    const int cols = random.between(3, 70);
    const Bytes image = random.bytes(static_cast<std::size_t>(rows * cols));
    const Products products = gradients(image, rows, cols);
    const int weights[] = {1, 2, 1};
    for (int r = 1; r < rows - 1; ++r) {
      for (int c = 1; c < cols - 1; ++c) {
        int sx = 0;
        int sy = 0;
        for (int k = -1; k <= 1; ++k) {
          const auto pixel = [&](int y, int x) {
            return int{image[static_cast<std::size_t>(y * cols + x)]};
          };
          sx += weights[k + 1] * (pixel(r + k, c + 1) - pixel(r + k, c - 1));
          sy += weights[k + 1] * (pixel(r + 1, c + k) - pixel(r - 1, c + k));
        }
        const int gx = std::abs(sx) / 4;
        const int gy = std::abs(sy) / 4;
        const auto i = static_cast<std::size_t>(r * cols + c);
        ASSERT_EQ(products.gx2.values()[i], static_cast<float>(gx * gx));
        ASSERT_EQ(products.gy2.values()[i], static_cast<float>(gy * gy));
        ASSERT_EQ(products.gxy.values()[i], static_cast<float>(gx * gy));
      }
    }
  }
}

struct Response {
  Floats plane;
  float mean = -1.0F;
  float sum = 0.0F;
};

Response respond(Floats gx2, Floats gy2, Floats gxy, int rows, int cols, float sum = 0.0F) {
  Response response = {Floats(gx2.size(), -7.0F), -1.0F, sum};
  EXPECT_TRUE(calcResponseValue(gx2.data(), gy2.data(), gxy.data(), kK, rows, cols,
                                response.plane.data(), response.mean, response.sum));
  return response;
}

TEST(HarrisResponse, ByHand) {
  constexpr int kSide = 41;
  Floats a(kSide * kSide);
  Floats b(kSide * kSide);
  Floats x(kSide * kSide);
  constexpr std::size_t kCentre = 20 * kSide + 20;
  a[kCentre] = 30.0F;
  b[kCentre] = 20.0F;
  x[kCentre] = 10.0F;
  const Response response = respond(a, b, x, kSide, kSide, 2.0F);
  const float expected = (30.0F * 20.0F - 10.0F * 10.0F) - (50.0F * kK) * 50.0F;
  EXPECT_EQ(response.plane[kCentre], expected);
  EXPECT_EQ(response.sum, 2.0F + expected) << "the sum is added to";
  EXPECT_EQ(response.mean, (2.0F + expected) / (kSide * kSide)) << "over every pixel of the plane";
}

TEST(HarrisResponse, OnlyPositiveOnesAreStored) {
  const std::size_t pixels = std::size_t{41} * 41;
  // A flat plane of a = 1, b = 0 responds with -k: an edge.
  const Response response = respond(Floats(pixels, 1.0F), Floats(pixels), Floats(pixels), 41, 41);
  EXPECT_EQ(response.plane, Floats(pixels, -7.0F));
  EXPECT_EQ(response.mean, 0.0F);
}

TEST(HarrisResponse, ZeroIsNotStored) {
  const Floats zeros(std::size_t{45} * 45);
  const Response response = respond(zeros, zeros, zeros, 45, 45);
  EXPECT_EQ(response.plane, Floats(zeros.size(), -7.0F));
  EXPECT_EQ(response.mean, 0.0F);
  EXPECT_EQ(response.sum, 0.0F);
}

TEST(HarrisResponse, KeepsTwentyPixelsFromEachEdge) {
  constexpr int kRows = 43;
  constexpr int kCols = 50;
  const Floats ones(kRows * kCols, 1.0F);
  const Response response = respond(ones, ones, Floats(ones.size()), kRows, kCols);
  for (int i = 0; i < kRows * kCols; ++i) {
    const int r = i / kCols;
    const int c = i % kCols;
    const bool inside = r >= 20 && r < kRows - 20 && c >= 20 && c < kCols - 20;
    EXPECT_EQ(response.plane[static_cast<std::size_t>(i)] != -7.0F, inside) << r << ", " << c;
  }
}

TEST(HarrisResponse, PlaneBelow41HasNoneButAMean) {
  const Floats ones(40 * 60, 1.0F);
  for (const auto& [rows, cols] : {std::pair{40, 60}, std::pair{60, 40}}) {
    const Response response = respond(ones, ones, Floats(ones.size()), rows, cols, 12.0F);
    EXPECT_EQ(response.plane, Floats(ones.size(), -7.0F));
    EXPECT_EQ(response.mean, 12.0F / 2400.0F);
    EXPECT_EQ(response.sum, 12.0F);
  }
}

TEST(HarrisResponse, PixelsAreCountedIn32Bits) {
  // 40 * 107374183 is 2^32 + 24. Such a plane has no pixel far enough from its edges to be read.
  EXPECT_EQ(respond({0.0F}, {0.0F}, {0.0F}, 40, 107374183, 48.0F).mean, 2.0F);
}

TEST(HarrisResponse, MeanOfAnEmptyPlaneIsNotANumber) {
  EXPECT_TRUE(std::isnan(respond({0.0F}, {0.0F}, {0.0F}, 0, 60).mean));
}

TEST(HarrisResponse, NullPointersAreRefusedWithTheLine) {
  float plane[4] = {};
  for (int null = 0; null < 4; ++null) {
    float mean = 5.0F;
    float sum = 6.0F;
    EXPECT_EQ(standardOutputOf([&] {
                EXPECT_FALSE(calcResponseValue(
                    null == 0 ? nullptr : plane, null == 1 ? nullptr : plane,
                    null == 2 ? nullptr : plane, kK, 2, 2, null == 3 ? nullptr : plane, mean, sum));
              }),
              "calcResponseValue ptr null\n");
    EXPECT_EQ(mean, 5.0F);
    EXPECT_EQ(sum, 6.0F);
  }
}

}  // namespace
