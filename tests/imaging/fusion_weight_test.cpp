// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>

#include "imaging/fusion.h"
#include "imaging/imaging_state.h"
#include "tests/imaging/host_state.h"
#include "tests/imaging/slow_fusion.h"
#include "tests/support/captured_output.h"
#include "tests/support/guarded.h"
#include "tests/support/random_images.h"

namespace {

Bytes weights(Bytes image1, Bytes image2, int rows, int cols, int channels) {
  GuardedBytes weight(area(rows, cols));
  EXPECT_TRUE(
      weightofTwoAreaFun(image1.data(), image2.data(), rows, cols, channels, 12345, weight.data()));
  EXPECT_TRUE(weight.intact());
  EXPECT_TRUE(planesAreReleased());
  return weight.values();
}

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

}  // namespace
