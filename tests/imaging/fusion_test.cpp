// SPDX-License-Identifier: Apache-2.0
#include "imaging/fusion.h"

#include <framequilt/tuning.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "imaging/imaging_state.h"
#include "tests/imaging/guarded.h"
#include "tests/imaging/host_state.h"
#include "tests/imaging/reference.h"
#include "tests/support/captured_output.h"
#include "tests/support/random_images.h"

namespace {

bool planesAreReleased() {
  return AreaImageOneGaryFloat == nullptr && AreaImageTwoGaryFloat == nullptr &&
         AreaImageOneWeight == nullptr && AreaImageOneGary == nullptr &&
         AreaImageTwoGary == nullptr;
}

Bytes weights(Bytes image1, Bytes image2, int rows, int cols, int channels) {
  GuardedBytes weight(area(rows, cols));
  EXPECT_TRUE(
      weightofTwoAreaFun(image1.data(), image2.data(), rows, cols, channels, 12345, weight.data()));
  EXPECT_TRUE(weight.intact());
  EXPECT_TRUE(planesAreReleased());
  return weight.values();
}

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

// --- A slow formulation -----------------------------------------------------------------------

Floats contentMask(const Bytes& image, std::size_t pixels, int channels) {
  Floats map(pixels);
  for (std::size_t i = 0; i < pixels; ++i) {
    const bool content = channels == 3 ? grayOf(&image[3 * i]) > 0 : image[i] > 0;
    map[i] = content ? 255.0F : 0.0F;
  }
  return map;
}

/// One raster pass over the columns between the outermost ones: `step` is -1 on the way down and 1
/// on the way up, where the neighbours lie.
void spread(Floats& map, int cols, std::vector<int> rowOrder, int step) {
  for (int r : rowOrder) {
    for (int i = 1; i < cols - 1; ++i) {
      const int c = step < 0 ? i : cols - 1 - i;
      float& here = map[at(r, c, cols)];
      if (here == 0.0F) continue;
      here = std::min({here, map[at(r, c + step, cols)] + 0.2F, map[at(r + step, c, cols)] + 0.2F,
                       map[at(r + step, c + step, cols)] + 0.3F});
    }
  }
}

void toDistances(Floats& map, int rows, int cols) {
  if (rows < 2 || cols < 3) return;
  std::vector<int> downward, upward;
  for (int r = 1; r < rows; ++r) downward.push_back(r);
  for (int r = rows - 2; r >= 0; --r) upward.push_back(r);
  spread(map, cols, downward, -1);
  spread(map, cols, upward, 1);
}

void clearFrame(Floats& map, int rows, int cols) {
  for (int r = 0; r < rows; ++r) {
    for (int c = 0; c < cols; ++c) {
      if (r == 0 || c == 0 || r == rows - 1 || c == cols - 1) map[at(r, c, cols)] = 0.0F;
    }
  }
}

Bytes slowWeights(const Bytes& image1, const Bytes& image2, int rows, int cols, int channels) {
  Floats a = contentMask(image1, area(rows, cols), channels);
  Floats b = contentMask(image2, area(rows, cols), channels);
  clearFrame(b, rows, cols);
  toDistances(a, rows, cols);
  toDistances(b, rows, cols);
  Bytes weight(a.size(), 0);
  for (std::size_t i = 0; i < a.size(); ++i) {
    const float sum = a[i] + b[i];
    if (sum == 0.0F) continue;
    const float scaled = a[i] * 255.0F;
    weight[i] = static_cast<unsigned char>(scaled / sum);
  }
  return weight;
}

Bytes slowMix(const Bytes& image1, Bytes image2, const Bytes& weight, int channels) {
  const std::size_t bytesPerPixel = channels >= 2 ? 3 : 1;
  for (std::size_t i = 0; i < weight.size() * bytesPerPixel; ++i) {
    const int w = weight[i / bytesPerPixel];
    const int sum = (255 - w) * image2[i] + w * image1[i];
    image2[i] = static_cast<unsigned char>(sum / (channels >= 2 ? 255 : 256));
  }
  return image2;
}

/// About a third of the pixels is black, in runs.
Bytes patchy(Random& random, int rows, int cols, int channels) {
  Bytes image = random.bytes(area(rows, cols, channels));
  const int pixels = rows * cols;
  for (int i = 0; i < pixels;) {
    const int run = random.between(1, 12);
    const bool black = random.between(0, 2) == 0;
    for (int end = std::min(pixels, i + run); i < end; ++i) {
      if (black) std::fill_n(image.begin() + i * channels, channels, static_cast<unsigned char>(0));
    }
  }
  return image;
}

// --- Weights ----------------------------------------------------------------------------------

TEST(FusionWeight, SecondImageCountsLittleNearItsFrame) {
  EXPECT_EQ(weights(Bytes(27, 255), Bytes(27, 255), 3, 3, 3),
            (Bytes{255, 255, 255, 255, 254, 255, 255, 255, 255}));
}

TEST(FusionWeight, BlackInBothGivesZero) {
  Bytes one(25, 255), two(25, 255);
  one[at(2, 2, 5)] = two[at(2, 2, 5)] = 0;
  one[0] = two[0] = 0;
  const Bytes weight = weights(one, two, 5, 5, 1);
  EXPECT_EQ(weight[at(2, 2, 5)], 0);
  EXPECT_EQ(weight[0], 0);
  EXPECT_EQ(weights(Bytes(12, 0), Bytes(12, 0), 2, 2, 3), Bytes(4, 0));
}

TEST(FusionWeight, OneImageAloneGetsAllOfIt) {
  EXPECT_EQ(weights(Bytes(25, 9), Bytes(25, 0), 5, 5, 1), Bytes(25, 255));
  EXPECT_EQ(weights(Bytes(25, 0), Bytes(25, 9), 5, 5, 1), Bytes(25, 0));
}

TEST(FusionWeight, MasksAloneDecideInASingleRowOrTwoColumns) {
  const Bytes one = {255, 0, 255, 0, 255};
  const Bytes expected = {255, 0, 255, 0, 255};
  EXPECT_EQ(weights(one, Bytes(5, 255), 1, 5, 1), expected);
  EXPECT_EQ(weights(one, Bytes(5, 255), 5, 1, 1), expected);
  const Bytes columns = {255, 0, 0, 255, 255, 255};
  EXPECT_EQ(weights(columns, Bytes(6, 255), 3, 2, 1), columns);
}

TEST(FusionWeight, NearlyBlackColourCountsAsBlack) {
  // Red 1 has gray 0, red 2 has gray 1.
  EXPECT_EQ(weights({0, 0, 1, 0, 0, 2}, Bytes(6, 0), 1, 2, 3), (Bytes{0, 255}));
}

TEST(FusionWeight, DistancesGrowFromTheBlankedFrameOfTheSecondImageOnly) {
  const HostPlane<float> a(AreaImageOneGaryFloat, Floats(25, -1.0F));
  const HostPlane<float> b(AreaImageTwoGaryFloat, Floats(25, -1.0F));
  Bytes one(25, 255), two(25, 255), weight(25);
  EXPECT_TRUE(weightofTwoAreaFun(one.data(), two.data(), 5, 5, 1, 0, weight.data()));
  EXPECT_EQ(a.values(), Floats(25, 255.0F));
  const float middle = 0.2F + 0.2F;
  EXPECT_EQ(b.values(), (Floats{0.0F, 0.0F, 0.0F,   0.0F, 0.0F,  //
                                0.0F, 0.2F, 0.2F,   0.2F, 0.0F,  //
                                0.0F, 0.2F, middle, 0.2F, 0.0F,  //
                                0.0F, 0.2F, 0.2F,   0.2F, 0.0F,  //
                                0.0F, 0.0F, 0.0F,   0.0F, 0.0F}));
}

TEST(FusionWeight, OneDiagonalIsAShortcutAndTheOtherIsNot) {
  const HostPlane<float> a(AreaImageOneGaryFloat, Floats(49));
  const HostPlane<float> b(AreaImageTwoGaryFloat, Floats(49));
  Bytes one(49, 255), two(49, 0), weight(49);
  one[at(3, 3, 7)] = 0;
  EXPECT_TRUE(weightofTwoAreaFun(one.data(), two.data(), 7, 7, 1, 0, weight.data()));
  const Floats map = a.values();
  EXPECT_EQ(map[at(3, 3, 7)], 0.0F);
  for (std::size_t beside : {at(2, 3, 7), at(4, 3, 7), at(3, 2, 7), at(3, 4, 7)}) {
    EXPECT_EQ(map[beside], 0.2F);
  }
  EXPECT_EQ(map[at(2, 2, 7)], 0.3F);
  EXPECT_EQ(map[at(4, 4, 7)], 0.3F);
  EXPECT_EQ(map[at(2, 4, 7)], 0.2F + 0.2F);
  EXPECT_EQ(map[at(4, 2, 7)], 0.2F + 0.2F);
}

TEST(FusionWeight, OutermostColumnsAreNeverUpdatedAndTheFirstRowOnlyOnTheWayUp) {
  const HostPlane<float> a(AreaImageOneGaryFloat, Floats(20));
  const HostPlane<float> b(AreaImageTwoGaryFloat, Floats(20));
  Bytes one(20, 255), two(20, 0), weight(20);
  one[at(1, 1, 5)] = 0;
  EXPECT_TRUE(weightofTwoAreaFun(one.data(), two.data(), 4, 5, 1, 0, weight.data()));
  const float two2 = 0.2F + 0.2F, three2 = two2 + 0.2F;
  const float diagonal = 0.3F + 0.2F;
  EXPECT_EQ(a.values(), (Floats{255.0F, 0.2F, two2,     three2,      255.0F,  //
                                255.0F, 0.0F, 0.2F,     two2,        255.0F,  //
                                255.0F, 0.2F, 0.3F,     diagonal,    255.0F,  //
                                255.0F, two2, diagonal, 0.3F + 0.3F, 255.0F}));
}

TEST(FusionWeight, PlanesOfTheHostAreUsedAndKept) {
  const HostPlane<float> a(AreaImageOneGaryFloat, Floats(9));
  const HostPlane<float> b(AreaImageTwoGaryFloat, Floats(9));
  float* const before = AreaImageOneGaryFloat;
  Bytes one(9, 255), two(9, 255), weight(9);
  EXPECT_TRUE(weightofTwoAreaFun(one.data(), two.data(), 3, 3, 1, 0, weight.data()));
  EXPECT_EQ(AreaImageOneGaryFloat, before);
  EXPECT_EQ(a.values(), Floats(9, 255.0F));
  EXPECT_EQ(b.values()[4], 0.2F);
}

TEST(FusionWeight, NullPointersAreRefusedWithOneLine) {
  Bytes image(9, 255), weight(9, 171);
  const std::string output = standardOutputOf([&] {
    EXPECT_FALSE(weightofTwoAreaFun(nullptr, image.data(), 3, 3, 1, 0, weight.data()));
    EXPECT_FALSE(weightofTwoAreaFun(image.data(), nullptr, 3, 3, 1, 0, weight.data()));
    EXPECT_FALSE(weightofTwoAreaFun(image.data(), image.data(), 3, 3, 1, 0, nullptr));
  });
  EXPECT_EQ(output, "ptr is null\nptr is null\nptr is null\n");
  EXPECT_EQ(weight, Bytes(9, 171));
  EXPECT_TRUE(planesAreReleased());
}

TEST(FusionWeight, AgreesWithTheSlowDistancesAtEveryWidth) {
  Random random(95);
  for (int cols = 1; cols <= 70; ++cols) {
    const int rows = random.between(1, 14);
    const int channels = random.between(0, 1) == 0 ? 1 : 3;
    SCOPED_TRACE(testing::Message() << "seed 95: " << rows << " x " << cols << " x " << channels);
    const Bytes one = patchy(random, rows, cols, channels);
    const Bytes two = patchy(random, rows, cols, channels);
    EXPECT_EQ(weights(one, two, rows, cols, channels), slowWeights(one, two, rows, cols, channels));
  }
}

// --- Fusion -----------------------------------------------------------------------------------

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
