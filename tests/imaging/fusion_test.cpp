// SPDX-License-Identifier: Apache-2.0
#include "imaging/fusion.h"

#include <framequilt/tuning.h>
#include <gtest/gtest.h>

#include <limits>
#include <new>
#include <string>

#include "imaging/imaging_state.h"
#include "tests/imaging/host_state.h"
#include "tests/imaging/slow_fusion.h"
#include "tests/support/captured_output.h"
#include "tests/support/guarded.h"
#include "tests/support/random_images.h"
#include "tests/support/scoped_value.h"

namespace {

/// Both images after the fusion.
struct Fused {
  GuardedBytes one, two;

  Fused(const Bytes& image1, const Bytes& image2, int rows, int cols, int channels)
      : one(image1), two(image2) {
    EXPECT_TRUE(twoImageFusion(one.data(), two.data(), channels, 12345, rows, cols));
    EXPECT_TRUE(one.intact() && two.intact());
    EXPECT_TRUE(planesAreReleased());
  }
};

TEST(Fusion, ColourWhiteStaysWhite) {
  const Fused fused(Bytes(27, 255), Bytes(27, 255), 3, 3, 3);
  EXPECT_EQ(fused.two.values(), Bytes(27, 255));
  EXPECT_EQ(fused.one.values(), Bytes(27, 255));
}

TEST(Fusion, GrayWhiteLosesOneStep) {
  const Fused fused(Bytes(9, 255), Bytes(9, 255), 3, 3, 1);
  EXPECT_EQ(fused.two.values(), Bytes(9, 254));
  EXPECT_EQ(fused.one.values(), Bytes(9, 254));
}

TEST(Fusion, FullWeightOfOneGrayImageGives254) {
  const Fused fused({255}, {0}, 1, 1, 1);
  EXPECT_EQ(fused.one.values(), Bytes{254});
  EXPECT_EQ(fused.two.values(), Bytes{254});
}

TEST(Fusion, FullWeightOfOneColourImageKeepsIt) {
  const Fused fused({255, 100, 7}, {0, 0, 0}, 1, 1, 3);
  EXPECT_EQ(fused.one.values(), (Bytes{255, 100, 7}));
  EXPECT_EQ(fused.two.values(), (Bytes{255, 100, 7}));
}

TEST(Fusion, WhereTheFirstImageIsBlackTheSecondStays) {
  // Red 1 is black to the mask, so that both of these have weight 0.
  const Fused colour({0, 0, 1, 0, 0, 0}, {1, 0, 1, 40, 50, 60}, 1, 2, 3);
  EXPECT_EQ(colour.one.values(), (Bytes{1, 0, 1, 40, 50, 60}));
  const Fused gray({0, 0}, {0, 200}, 1, 2, 1);
  EXPECT_EQ(gray.one.values(), (Bytes{0, 199}));  // 255 * 200 / 256
}

TEST(Fusion, MiddleOfASmallOverlapIsMixed) {
  // Weight 254 in the middle, 255 around: (200 + 254 * 100) / 255 is 100.4.
  Bytes expected(27, 100);
  EXPECT_EQ(Fused(Bytes(27, 100), Bytes(27, 200), 3, 3, 3).one.values(), expected);
  // ... and (255 + 254 * 1) / 255 is 1.99, truncated.
  EXPECT_EQ(Fused(Bytes(27, 1), Bytes(27, 255), 3, 3, 3).one.values(), Bytes(27, 1));
}

TEST(Fusion, TwoChannelsMixThreeBytesAPixelAndCopyTwo) {
  Bytes one = {10, 20, 30, 40, 50, 60, 70, 80, 90};
  Bytes two = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  const Fused fused(one, two, 1, 3, 2);
  EXPECT_EQ(fused.two.values(), one);  // weight 255 everywhere
  EXPECT_EQ(fused.one.values(), one);

  // Image 1 is black in its first byte: the first pixel is image 2's.
  one[0] = 0;
  const Fused partly(one, two, 1, 3, 2);
  EXPECT_EQ(partly.two.values(), (Bytes{1, 2, 3, 40, 50, 60, 70, 80, 90}));
  EXPECT_EQ(partly.one.values(), (Bytes{1, 2, 3, 40, 50, 60, 70, 80, 90}));

  // With the last pixel image 2's, only 6 of the 9 bytes go back.
  one = {10, 20, 0, 40, 50, 60, 70, 80, 90};
  const Fused last(one, two, 1, 3, 2);
  EXPECT_EQ(last.two.values(), (Bytes{10, 20, 0, 40, 50, 60, 7, 8, 9}));
  EXPECT_EQ(last.one.values(), (Bytes{10, 20, 0, 40, 50, 60, 70, 80, 90}));
}

TEST(Fusion, WithoutChannelsNothingIsCopiedBack) {
  const Fused fused({100, 100}, {0, 0}, 1, 2, 0);
  EXPECT_EQ(fused.two.values(), (Bytes{99, 99}));  // 255 * 100 / 256
  EXPECT_EQ(fused.one.values(), (Bytes{100, 100}));
}

TEST(Fusion, ImagesWithoutRowsOrColumnsStay) {
  for (const auto& [rows, cols] : {std::pair(0, 0), {0, 3}, {3, 0}, {-1, 3}}) {
    const Fused fused(Bytes(9, 100), Bytes(9, 50), rows, cols, 1);
    EXPECT_EQ(fused.one.values(), Bytes(9, 100));
    EXPECT_EQ(fused.two.values(), Bytes(9, 50));
  }
}

TEST(Fusion, AgreesWithTheSlowMixAtEveryWidth) {
  Random random(96);
  for (int cols = 1; cols <= 70; ++cols) {
    const int rows = random.between(1, 14);
    const int channels = random.between(0, 1) == 0 ? 1 : 3;
    SCOPED_TRACE(testing::Message() << "seed 96: " << rows << " x " << cols << " x " << channels);
    const ScopedValue realRows(RealImgRow, rows + random.between(-1, 1));
    const ScopedValue realCols(RealImgCol, cols + random.between(-1, 1));
    const Bytes one = patchy(random, rows, cols, channels);
    const Bytes two = patchy(random, rows, cols, channels);
    const Bytes expected = slowMix(one, two, slowWeights(one, two, rows, cols, channels), channels);
    const Fused fused(one, two, rows, cols, channels);
    EXPECT_EQ(fused.two.values(), expected);
    EXPECT_EQ(fused.one.values(), expected);
  }
}

TEST(Fusion, PlanesThatAHostHasSetAreUsedAndReleased) {
  AreaImageOneGaryFloat = new float[9];
  AreaImageTwoGaryFloat = new float[9];
  AreaImageOneWeight = new unsigned char[9];
  AreaImageOneGary = new unsigned char[1];
  AreaImageTwoGary = new unsigned char[1];
  const ScopedValue realRows(RealImgRow, 3), realCols(RealImgCol, 3);
  const Fused fused(Bytes(9, 255), Bytes(9, 255), 3, 3, 1);
  EXPECT_EQ(fused.one.values(), Bytes(9, 254));
}

TEST(Fusion, FailedAllocationGoesToTheCallerAndLeavesNothing) {
  constexpr int kHuge = std::numeric_limits<int>::max();
  const ScopedValue realRows(RealImgRow, kHuge), realCols(RealImgCol, kHuge);
  Bytes one(6, 255), two(6, 50);
  EXPECT_THROW(twoImageFusion(one.data(), two.data(), 1, 0, 3, 2), std::bad_alloc);
  EXPECT_EQ(two, Bytes(6, 50));
  EXPECT_TRUE(planesAreReleased());
}

TEST(Fusion, NullImagesAreRefusedWithOneLineAndAllocateNothing) {
  Bytes image(9, 255);
  const std::string output = standardOutputOf([&] {
    EXPECT_FALSE(twoImageFusion(nullptr, image.data(), 1, 0, 3, 3));
    EXPECT_FALSE(twoImageFusion(image.data(), nullptr, 1, 0, 3, 3));
  });
  EXPECT_EQ(output, "ptr is null\nptr is null\n");
  EXPECT_EQ(image, Bytes(9, 255));
  EXPECT_TRUE(planesAreReleased());
}

}  // namespace
