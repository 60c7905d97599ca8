// SPDX-License-Identifier: Apache-2.0
#include "features/descriptor_inside.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <vector>

#include "features/descriptor.h"
#include "features/gradient_bin.h"
#include "features/plain.h"
#include "tests/support/guarded.h"
#include "tests/support/points.h"
#include "tests/support/random_images.h"

namespace {

using Elements = std::vector<unsigned short>;
using GuardedElements = Guarded<unsigned short>;
using framequilt::GrayView;

/// An image in memory of its exact size, so that reads outside show under address checks.
struct Gray {
  Bytes pixels;
  int rows, cols;

  Gray(int r, int c, Random& random, bool onlyExtremes = false)
      : pixels(random.bytes(static_cast<std::size_t>(r * c))), rows(r), cols(c) {
    if (!onlyExtremes) return;
    for (auto& pixel : pixels) pixel = pixel < 128 ? 0 : 255;
  }

  GrayView view() const { return {pixels.data(), rows, cols}; }
};

int elementsOf(int patch) {
  const int cells = (2 * (patch / 2) + 3) / 4;
  return cells * cells * framequilt::kOrientationBins;
}

Elements plainly(const Gray& image, SPoint corner, int patch, int length) {
  Elements descriptor(static_cast<std::size_t>(length));
  framequilt::plain::describeCorner(image.view(), corner, patch, descriptor.data(), length);
  return descriptor;
}

/// Compares when the patch lies inside, and says whether it does.
bool insideAndLikePlain(const Gray& image, SPoint corner, int patch) {
  const int length = elementsOf(patch);
  if (!framequilt::liesInside(image.view(), corner, patch, length)) return false;
  GuardedElements descriptor(static_cast<std::size_t>(length));
  framequilt::describeInside(image.view(), corner, patch, descriptor.data());
  EXPECT_EQ(descriptor.values(), plainly(image, corner, patch, length));
  EXPECT_TRUE(descriptor.intact());
  return true;
}

TEST(GradientTable, HoldsTheBinOfEveryGradient) {
  const auto table = std::make_unique<framequilt::GradientTable>();
  for (int dy = -255; dy <= 255; ++dy) {
    for (int dx = -255; dx <= 255; ++dx) {
      const framequilt::GradientBin expected = framequilt::plain::gradientBin(dx, dy);
      const framequilt::GradientBin found = (*table)(dx, dy);
      ASSERT_EQ(found.bin, expected.bin) << dx << ", " << dy;
      ASSERT_EQ(found.magnitude, expected.magnitude) << dx << ", " << dy;
    }
  }
}

TEST(DescriptorInside, EveryPlaceAndPatchIsLikeThePlainOne) {
  for (int patch = 0; patch <= 27; ++patch) {
    SCOPED_TRACE(patch);
    Random random(static_cast<unsigned>(patch) + 1);
    const Gray image(36, 41, random, patch % 3 == 0);
    int inside = 0;
    for (int y = -3; y < image.rows + 3; ++y) {
      for (int x = -3; x < image.cols + 3; ++x) inside += insideAndLikePlain(image, {x, y}, patch);
    }
    // The cells of a patch and two pixels on each side have to fit.
    const int side = (2 * (patch / 2) + 3) / 4 * 4;
    EXPECT_EQ(inside, patch < 2 ? 0 : (36 - side - 3) * (41 - side - 3));
  }
}

TEST(DescriptorInside, SmallestImagesAroundAPatch) {
  Random random(2);
  for (const int rows : {23, 24}) {
    for (const int cols : {23, 24}) {
      const Gray image(rows, cols, random);
      EXPECT_EQ(insideAndLikePlain(image, {12, 12}, 20), rows == 24 && cols == 24);
    }
  }
}

TEST(DescriptorInside, FarCornersAreNotInside) {
  Random random(3);
  const Gray image(60, 60, random);
  constexpr int kFar = 2147483647;
  for (const SPoint corner : {SPoint{kFar, 30}, SPoint{30, kFar}, SPoint{-kFar - 1, 30},
                              SPoint{30, -kFar - 1}, SPoint{kFar, kFar}}) {
    EXPECT_FALSE(framequilt::liesInside(image.view(), corner, 20, 200));
  }
  EXPECT_TRUE(framequilt::liesInside(image.view(), {30, 30}, 20, 200));
  EXPECT_FALSE(framequilt::liesInside(image.view(), {30, 30}, 20, 199)) << "cut short";
  EXPECT_FALSE(framequilt::liesInside(image.view(), {30, 30}, kFar, kFar));
  EXPECT_FALSE(framequilt::liesInside(image.view(), {30, 30}, -20, 200));
}

TEST(DescriptorInside, LibraryDescribesEveryCornerLikeThePlainOne) {
  Random random(4);
  Gray image(70, 90, random);
  Points corners;
  for (int k = 0; k < 300; ++k) corners.push_back({random.between(-5, 95), random.between(-5, 75)});
  for (const int length : {13, 199, 200, 230}) {
    SCOPED_TRACE(length);
    GuardedElements scratch(static_cast<std::size_t>(length));
    GuardedElements out(static_cast<std::size_t>(length) * corners.size());
    ASSERT_TRUE(noRotaFeatureDescriber(image.pixels.data(), image.rows, image.cols, length, 20,
                                       corners, scratch.data(), out.data()));
    Elements expected;
    for (const SPoint corner : corners) {
      const Elements one = plainly(image, corner, 20, length);
      expected.insert(expected.end(), one.begin(), one.end());
    }
    EXPECT_EQ(out.values(), expected);
    EXPECT_TRUE(out.intact());
    EXPECT_EQ(scratch.values(), plainly(image, corners.back(), 20, length));
    EXPECT_TRUE(scratch.intact());
  }
}

}  // namespace
