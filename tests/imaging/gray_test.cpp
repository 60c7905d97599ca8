// SPDX-License-Identifier: Apache-2.0
#include "imaging/gray.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/imaging/reference.h"
#include "tests/support/captured_output.h"
#include "tests/support/each_level.h"
#include "tests/support/guarded.h"
#include "tests/support/random_images.h"

namespace {

using framequilt::fillGrayTables;

const char kRefusal[] = "rgb2gray ptr invailed\n";

unsigned char integerGray(int blue, int green, int red) {
  unsigned char bgr[3] = {static_cast<unsigned char>(blue), static_cast<unsigned char>(green),
                          static_cast<unsigned char>(red)};
  unsigned char gray = 77;
  EXPECT_TRUE(rgb2Gray(bgr, 1, 1, &gray));
  return gray;
}

float tableGray(int blue, int green, int red) {
  fillGrayTables();
  unsigned char bgr[3] = {static_cast<unsigned char>(blue), static_cast<unsigned char>(green),
                          static_cast<unsigned char>(red)};
  float gray = -1.0F;
  EXPECT_TRUE(rgb2GrayFloat(bgr, 1, 1, 3, &gray));
  return gray;
}

float mask(int blue, int green, int red) {
  unsigned char bgr[3] = {static_cast<unsigned char>(blue), static_cast<unsigned char>(green),
                          static_cast<unsigned char>(red)};
  float value = -1.0F;
  EXPECT_TRUE(rgb2GrayFloat1(bgr, 1, 1, 3, &value));
  return value;
}

Bytes graysOf(const Bytes& bgr) {
  Bytes grays(bgr.size() / 3);
  for (std::size_t i = 0; i < grays.size(); ++i) grays[i] = grayOf(&bgr[3 * i]);
  return grays;
}

/// 1224/4096 of red and so on, each part rounded down by itself.
Floats tableGraysOf(const Bytes& bgr) {
  Floats grays(bgr.size() / 3);
  for (std::size_t i = 0; i < grays.size(); ++i) {
    const int gray =
        bgr[3 * i] * 467 / 4096 + bgr[3 * i + 1] * 2404 / 4096 + bgr[3 * i + 2] * 1224 / 4096;
    grays[i] = static_cast<float>(gray);
  }
  return grays;
}

TEST(GrayTables, EveryEntryIsTheTruncatedProduct) {
  fillGrayTables();
  for (unsigned i = 0; i < 256; ++i) {
    EXPECT_EQ(R1[i], i * 1224 / 4096) << i;
    EXPECT_EQ(G1[i], i * 2404 / 4096) << i;
    EXPECT_EQ(B1[i], i * 467 / 4096) << i;
  }
}

TEST(GrayTables, TopEntriesAddUpTo254) {
  fillGrayTables();
  EXPECT_EQ(R1[255], 76U);
  EXPECT_EQ(G1[255], 149U);
  EXPECT_EQ(B1[255], 29U);
}

TEST(GrayTables, FillingReplacesWhatAHostWrote) {
  R1[7] = G1[7] = B1[7] = 9999;
  fillGrayTables();
  EXPECT_EQ(R1[7], 2U);
  EXPECT_EQ(G1[7], 4U);
  EXPECT_EQ(B1[7], 0U);
}

TEST(IntegerGray, WhiteIs255AndBlackIs0) {
  EXPECT_EQ(integerGray(255, 255, 255), 255);
  EXPECT_EQ(integerGray(0, 0, 0), 0);
}

TEST(IntegerGray, BytesAreBlueGreenRed) {
  EXPECT_EQ(integerGray(255, 0, 0), 29);
  EXPECT_EQ(integerGray(0, 255, 0), 150);
  EXPECT_EQ(integerGray(0, 0, 255), 76);
}

TEST(IntegerGray, RoundsHalfUp) {
  EXPECT_EQ(integerGray(0, 0, 1), 0);     // 299
  EXPECT_EQ(integerGray(0, 0, 2), 1);     // 598
  EXPECT_EQ(integerGray(11, 5, 1), 4);    // 4488
  EXPECT_EQ(integerGray(2, 4, 8), 5);     // 4968
  EXPECT_EQ(integerGray(50, 0, 96), 34);  // 34404
  EXPECT_EQ(integerGray(250, 0, 0), 29);  // 28500, just a half
}

TEST(IntegerGray, FollowsTheFormulaOverTheColourCube) {
  Bytes bgr;
  for (int b = 0; b < 256; b += 5) {
    for (int g = 0; g < 256; g += 5) {
      for (int r = 0; r < 256; r += 5) {
        for (int byte : {b, g, r}) bgr.push_back(static_cast<unsigned char>(byte));
      }
    }
  }
  const int pixels = static_cast<int>(bgr.size() / 3);
  Bytes grays(bgr.size() / 3);
  EXPECT_TRUE(rgb2Gray(bgr.data(), 1, pixels, grays.data()));
  EXPECT_EQ(grays, graysOf(bgr));
}

/// What the vectors compute in 16 bits is exact for each colour, not only for most.
TEST(IntegerGray, EveryRedAndGreenIsExactAtEachLevel) {
  std::size_t compared = 0;
  for (int b = 0; b < 256; b += 3) {
    Bytes bgr;
    bgr.reserve(std::size_t{3} * 256 * 256);
    for (int g = 0; g < 256; ++g) {
      for (int r = 0; r < 256; ++r) {
        for (int byte : {b, g, r}) bgr.push_back(static_cast<unsigned char>(byte));
      }
    }
    const Bytes expected = graysOf(bgr);
    atEachLevel([&] {
      Bytes grays(expected.size());
      EXPECT_TRUE(rgb2Gray(bgr.data(), 256, 256, grays.data()));
      EXPECT_TRUE(grays == expected) << "blue " << b;
      compared += grays.size();
    });
  }
  EXPECT_GE(compared, std::size_t{86} * 256 * 256);
}

TEST(GrayOfACopy, IsTheSameAndSoIsTheCopy) {
  Random random(43);
  for (const int pixels : {0, 1, 63, 64, 65, 4095, 4096, 4097, 9000}) {
    SCOPED_TRACE(pixels);
    const Bytes bgr = random.bytes(area(1, pixels, 3));
    const Bytes expected = graysOf(bgr);
    atEachLevel([&] {
      GuardedBytes copy(bgr.size()), gray(expected.size());
      framequilt::copyAndToGray(bgr.data(), expected.size(), copy.data(), gray.data());
      EXPECT_EQ(copy.values(), bgr);
      EXPECT_EQ(gray.values(), expected);
      EXPECT_TRUE(copy.intact());
      EXPECT_TRUE(gray.intact());
    });
  }
}

TEST(IntegerGray, AgreesWithTheFormulaAtEveryWidth) {
  Random random(41);
  for (int cols = 0; cols <= 70; ++cols) {
    SCOPED_TRACE(testing::Message() << "seed 41, cols " << cols);
    const int rows = random.between(1, 4);
    Bytes one = random.bytes(area(rows, cols, 3));
    Bytes two = random.bytes(area(rows, cols, 3));
    GuardedBytes alone(area(rows, cols)), first(area(rows, cols)), second(area(rows, cols));
    // One byte of space, so that an empty source is a pointer too.
    one.push_back(0);
    two.push_back(0);

    EXPECT_TRUE(rgb2Gray(one.data(), rows, cols, alone.data()));
    EXPECT_TRUE(rgb2GrayTwo(one.data(), two.data(), rows, cols, first.data(), second.data()));

    EXPECT_EQ(alone.values(), graysOf(one));
    EXPECT_EQ(first.values(), graysOf(one));
    EXPECT_EQ(second.values(), graysOf(two));
    EXPECT_TRUE(alone.intact() && first.intact() && second.intact());
  }
}

TEST(IntegerGray, MayReplaceItsSource) {
  Random random(42);
  const Bytes bgr = random.bytes(area(3, 67, 3));
  Bytes inPlace = bgr;
  EXPECT_TRUE(rgb2Gray(inPlace.data(), 3, 67, inPlace.data()));
  inPlace.resize(area(3, 67));
  EXPECT_EQ(inPlace, graysOf(bgr));
}

TEST(TableGray, WhiteIs254) {
  EXPECT_EQ(tableGray(255, 255, 255), 254.0F);
  EXPECT_EQ(tableGray(255, 0, 0), 29.0F);
  EXPECT_EQ(tableGray(0, 255, 0), 149.0F);
  EXPECT_EQ(tableGray(0, 0, 255), 76.0F);
}

TEST(TableGray, EachTermIsTruncatedByItself) {
  // 0.912 + 0.587 + 0.897 would make 2.
  EXPECT_EQ(tableGray(8, 1, 3), 0.0F);
}

TEST(TableGray, AgreesWithTheFormulaAtEveryWidth) {
  fillGrayTables();
  Random random(43);
  for (int cols = 1; cols <= 70; ++cols) {
    SCOPED_TRACE(testing::Message() << "seed 43, cols " << cols);
    const int rows = random.between(1, 4);
    Bytes one = random.bytes(area(rows, cols, 3));
    Bytes two = random.bytes(area(rows, cols, 3));
    GuardedFloats alone(area(rows, cols)), first(area(rows, cols)), second(area(rows, cols));

    EXPECT_TRUE(rgb2GrayFloat(one.data(), rows, cols, 3, alone.data()));
    EXPECT_TRUE(
        rgb2GrayFloatTwo(one.data(), two.data(), rows, cols, 3, first.data(), second.data()));

    EXPECT_EQ(alone.values(), tableGraysOf(one));
    EXPECT_EQ(first.values(), tableGraysOf(one));
    EXPECT_EQ(second.values(), tableGraysOf(two));
    EXPECT_TRUE(alone.intact() && first.intact() && second.intact());
  }
}

TEST(TableGray, TakesTheBytesThemselvesForOtherChannelCounts) {
  Bytes bytes = {0, 1, 128, 255};
  for (int channels : {0, 1, 2, 4}) {
    SCOPED_TRACE(channels);
    GuardedFloats grays(4);
    EXPECT_TRUE(rgb2GrayFloat(bytes.data(), 2, 2, channels, grays.data()));
    EXPECT_EQ(grays.values(), (Floats{0.0F, 1.0F, 128.0F, 255.0F}));
    EXPECT_TRUE(grays.intact());
  }
}

TEST(TableGray, PairTakesEveryThirdByteForOtherChannelCounts) {
  Bytes one = {10, 99, 99, 20, 99, 99, 30, 99, 99};
  Bytes two = {40, 77, 77, 50, 77, 77, 60, 77, 77};
  for (int channels : {1, 2, 4}) {
    SCOPED_TRACE(channels);
    GuardedFloats first(3), second(3);
    EXPECT_TRUE(
        rgb2GrayFloatTwo(one.data(), two.data(), 1, 3, channels, first.data(), second.data()));
    EXPECT_EQ(first.values(), (Floats{10.0F, 20.0F, 30.0F}));
    EXPECT_EQ(second.values(), (Floats{40.0F, 50.0F, 60.0F}));
    EXPECT_TRUE(first.intact() && second.intact());
  }
}

TEST(ContentMask, StartsWhereTheRoundedGrayIs1) {
  EXPECT_EQ(mask(0, 0, 0), 0.0F);
  EXPECT_EQ(mask(0, 0, 1), 0.0F);    // 299
  EXPECT_EQ(mask(0, 0, 2), 255.0F);  // 598
  EXPECT_EQ(mask(4, 0, 0), 0.0F);    // 456
  EXPECT_EQ(mask(5, 0, 0), 255.0F);  // 570
  EXPECT_EQ(mask(0, 1, 0), 255.0F);  // 587
  EXPECT_EQ(mask(1, 0, 1), 0.0F);    // 413
  EXPECT_EQ(mask(2, 0, 1), 255.0F);  // 527
  EXPECT_EQ(mask(255, 255, 255), 255.0F);
}

TEST(ContentMask, AgreesWithTheGrayValueAtEveryWidth) {
  Random random(44);
  for (int cols = 1; cols <= 70; ++cols) {
    SCOPED_TRACE(testing::Message() << "seed 44, cols " << cols);
    const int rows = random.between(1, 4);
    Bytes bgr = random.bytes(area(rows, cols, 3), 0, 3);
    Floats expected;
    for (unsigned char gray : graysOf(bgr)) expected.push_back(gray >= 1 ? 255.0F : 0.0F);
    GuardedFloats values(area(rows, cols));
    EXPECT_TRUE(rgb2GrayFloat1(bgr.data(), rows, cols, 3, values.data()));
    EXPECT_EQ(values.values(), expected);
    EXPECT_TRUE(values.intact());
  }
}

TEST(ContentMask, LooksAtSingleBytesForOtherChannelCounts) {
  Bytes bytes = {0, 1, 0, 255};
  for (int channels : {0, 1, 2, 4}) {
    SCOPED_TRACE(channels);
    GuardedFloats values(4);
    EXPECT_TRUE(rgb2GrayFloat1(bytes.data(), 1, 4, channels, values.data()));
    EXPECT_EQ(values.values(), (Floats{0.0F, 255.0F, 0.0F, 255.0F}));
    EXPECT_TRUE(values.intact());
  }
}

/// All five on one pair of sizes, with room for a single pixel.
struct OnePixel {
  unsigned char bgr[3] = {9, 9, 9};
  unsigned char gray[2] = {171, 171};
  float value[2] = {171.0F, 171.0F};

  bool convert(int rows, int cols, int channels) {
    return rgb2GrayFloat(bgr, rows, cols, channels, value) &&
           rgb2GrayFloat1(bgr, rows, cols, channels, value) &&
           rgb2GrayFloatTwo(bgr, bgr, rows, cols, channels, value, value + 1);
  }
  bool convertToBytes(int rows, int cols) {
    return rgb2Gray(bgr, rows, cols, gray) && rgb2GrayTwo(bgr, bgr, rows, cols, gray, gray + 1);
  }
  bool untouched() const {
    return gray[0] == 171 && gray[1] == 171 && value[0] == 171.0F && value[1] == 171.0F;
  }
};

TEST(GrayConversion, WithoutRowsOrColumnsWritesNothingAndSucceeds) {
  for (const auto& [rows, cols] : {std::pair(0, 4), {4, 0}, {-1, 4}, {4, -1}, {-2, -3}, {0, 0}}) {
    SCOPED_TRACE(testing::Message() << rows << " x " << cols);
    OnePixel pixel;
    const std::string output = standardOutputOf([&, rows = rows, cols = cols] {
      EXPECT_TRUE(pixel.convertToBytes(rows, cols));
      for (int channels : {1, 3}) EXPECT_TRUE(pixel.convert(rows, cols, channels));
    });
    EXPECT_TRUE(pixel.untouched());
    EXPECT_EQ(output, "");
  }
}

TEST(GrayConversion, FloatVariantsCountPixelsIn32Bits) {
  OnePixel pixel;
  EXPECT_TRUE(pixel.convert(65536, 65536, 3));  // 2^32, that is 0
  EXPECT_TRUE(pixel.convert(46341, 46341, 1));  // just above 2^31, that is negative
  EXPECT_TRUE(pixel.untouched());

  // 65536 * 65537 is 2^32 and 65536 more.
  fillGrayTables();
  Bytes src(65536 * 3, 255);
  GuardedFloats gray(65536), mask(65536), first(65536), second(65536);
  EXPECT_TRUE(rgb2GrayFloat(src.data(), 65536, 65537, 3, gray.data()));
  EXPECT_TRUE(rgb2GrayFloat1(src.data(), 65536, 65537, 1, mask.data()));
  EXPECT_TRUE(
      rgb2GrayFloatTwo(src.data(), src.data(), 65536, 65537, 3, first.data(), second.data()));
  EXPECT_EQ(gray.values(), Floats(65536, 254.0F));
  EXPECT_EQ(mask.values(), Floats(65536, 255.0F));
  EXPECT_EQ(first.values(), Floats(65536, 254.0F));
  EXPECT_EQ(second.values(), Floats(65536, 254.0F));
  EXPECT_TRUE(gray.intact() && mask.intact() && first.intact() && second.intact());
}

TEST(GrayConversion, NullPointersAreRefusedWithOneLine) {
  unsigned char src[3] = {255, 255, 255};
  unsigned char gray = 171;
  float value = 171.0F;
  const std::vector<std::function<bool()>> calls = {
      [&] { return rgb2Gray(nullptr, 1, 1, &gray); },
      [&] { return rgb2Gray(src, 1, 1, nullptr); },
      [&] { return rgb2Gray(src, 0, 0, nullptr); },
      [&] { return rgb2GrayTwo(nullptr, src, 1, 1, &gray, &gray); },
      [&] { return rgb2GrayTwo(src, src, 1, 1, nullptr, &gray); },
      [&] { return rgb2GrayFloat(nullptr, 1, 1, 3, &value); },
      [&] { return rgb2GrayFloat(src, 1, 1, 3, nullptr); },
      [&] { return rgb2GrayFloat1(nullptr, 1, 1, 1, &value); },
      [&] { return rgb2GrayFloat1(src, 1, 1, 1, nullptr); },
      [&] { return rgb2GrayFloatTwo(nullptr, src, 1, 1, 3, &value, &value); },
      [&] { return rgb2GrayFloatTwo(src, src, 1, 1, 1, nullptr, &value); },
  };
  for (std::size_t i = 0; i < calls.size(); ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(standardOutputOf([&] { EXPECT_FALSE(calls[i]()); }), kRefusal);
  }
  EXPECT_EQ(gray, 171);
  EXPECT_EQ(value, 171.0F);
}

TEST(GrayConversion, SecondPairIsNotLookedAt) {
  unsigned char src[3] = {};
  unsigned char gray = 171;
  float value = 171.0F;
  const std::string output = standardOutputOf([&] {
    EXPECT_TRUE(rgb2GrayTwo(src, nullptr, 0, 5, &gray, nullptr));
    EXPECT_TRUE(rgb2GrayFloatTwo(src, nullptr, 0, 5, 3, &value, nullptr));
  });
  EXPECT_EQ(output, "");
}

}  // namespace
