// SPDX-License-Identifier: Apache-2.0
#include "imaging/resize.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <string>
#include <utility>

#include "tests/imaging/reference.h"
#include "tests/support/captured_output.h"
#include "tests/support/guarded.h"
#include "tests/support/random_images.h"

namespace {

using framequilt::resizeWithinFrame;

constexpr unsigned char kUntouched = GuardedBytes::kUntouched;

/// Bytes that tell where they come from.
Bytes numbered(std::size_t count) {
  Bytes bytes(count);
  for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<unsigned char>(i % 167);
  return bytes;
}

/// A destination of `capacity` bytes after the reduction of a source that ends with its last byte.
Bytes reduced(Bytes src, int rows, int cols, int scale, int channels, std::size_t capacity) {
  GuardedBytes out(capacity);
  EXPECT_TRUE(opencvInterLineARResize(src.data(), rows, cols, scale, channels, out.data()));
  EXPECT_TRUE(out.intact());
  return out.values();
}

Bytes reducedWithin(Bytes src, int rows, int cols, int scale, int channels, std::size_t capacity) {
  GuardedBytes out(capacity);
  EXPECT_TRUE(resizeWithinFrame(src.data(), rows, cols, scale, channels, out.data(), capacity));
  EXPECT_TRUE(out.intact());
  return out.values();
}

/// Side of the reduced image: half a factor more or less decides.
int reducedSide(int side, int scale) {
  return scale % 2 == 0 ? side / scale : (2 * side + scale) / (2 * scale);
}

/// Pixel (scale * i, scale * j) of every reduced pixel.
Bytes sampled(const Bytes& src, int rows, int cols, int scale, int channels) {
  Bytes out;
  for (int i = 0; i < reducedSide(rows, scale); ++i) {
    for (int j = 0; j < reducedSide(cols, scale); ++j) {
      const auto pixel = src.begin() + (scale * i * cols + scale * j) * channels;
      out.insert(out.end(), pixel, pixel + channels);
    }
  }
  return out;
}

TEST(Resize, FactorOneCopiesEveryChannelCount) {
  for (int channels = 1; channels <= 4; ++channels) {
    SCOPED_TRACE(channels);
    const Bytes src = numbered(area(5, 7, channels));
    EXPECT_EQ(reduced(src, 5, 7, 1, channels, src.size()), src);
  }
}

TEST(Resize, FactorThreeOfTenIsThree) {
  const Bytes out = reduced(numbered(100), 10, 10, 3, 1, 9);
  EXPECT_EQ(out, (Bytes{0, 3, 6, 30, 33, 36, 60, 63, 66}));
}

TEST(Resize, OddFactorsRoundTheSizeHalfUp) {
  // 11 / 3 rounds to 4, 8 / 3 to 3: rows are packed at 3.
  EXPECT_EQ(reduced(numbered(88), 11, 8, 3, 1, 12),
            (Bytes{0, 3, 6, 24, 27, 30, 48, 51, 54, 72, 75, 78}));
  // 12 / 5 rounds to 2, 13 / 5 to 3.
  EXPECT_EQ(reduced(numbered(156), 12, 13, 5, 1, 6), (Bytes{0, 5, 10, 65, 70, 75}));
}

TEST(Resize, FactorTwoOfFiveIsTwo) {
  EXPECT_EQ(reduced(numbered(25), 5, 5, 2, 1, 4), (Bytes{0, 2, 10, 12}));
}

TEST(Resize, ColourPixelsStayTogether) {
  const Bytes src = numbered(area(4, 4, 3));
  const Bytes expected = {0, 1, 2, 6, 7, 8, 24, 25, 26, 30, 31, 32};
  EXPECT_EQ(reduced(src, 4, 4, 2, 3, 12), expected);
}

TEST(Resize, SmallFactorsSampleRandomImagesOfEveryWidth) {
  Random random(71);
  for (int cols = 0; cols <= 70; ++cols) {
    for (int scale : {2, 3, 4, 5, 7}) {
      const int rows = random.between(0, 16);
      const int channels = random.between(0, 1) == 0 ? 1 : 3;
      SCOPED_TRACE(testing::Message()
                   << "seed 71: " << rows << " x " << cols << " x " << channels << " by " << scale);
      Bytes src = random.bytes(area(rows, cols, channels));
      const Bytes expected = sampled(src, rows, cols, scale, channels);
      if (src.empty()) src.push_back(0);
      EXPECT_EQ(reduced(src, rows, cols, scale, channels, expected.size()), expected);
      EXPECT_EQ(reducedWithin(src, rows, cols, scale, channels, expected.size()), expected);
    }
  }
}

TEST(Resize, FactorSixMultipliesThePixelNumberByEight) {
  // The last pixel, 9 * 60 + 9 = 549, is read at 4392: far behind the 3600 of the image.
  const Bytes src = numbered(4393);
  Bytes expected;
  for (int i = 0; i < 10; ++i) {
    for (int j = 0; j < 10; ++j) {
      expected.push_back(src[static_cast<std::size_t>((i * 60 + j) * 8)]);
    }
  }
  ASSERT_EQ(expected[1], 8);
  EXPECT_EQ(reduced(src, 60, 60, 6, 1, 100), expected);
}

TEST(Resize, FactorEightMultipliesThePixelNumberBySixteen) {
  const Bytes src = numbered(area(17, 16, 3) * 16);  // 2 x 2 reduced pixels
  Bytes expected;
  for (int pixel : {0, 1, 16, 17}) {
    for (int k = 0; k < 3; ++k) {
      expected.push_back(src[static_cast<std::size_t>(pixel * 16 * 3 + k)]);
    }
  }
  EXPECT_EQ(reduced(src, 16, 16, 8, 3, 12), expected);
}

TEST(Resize, FactorSixtyFourShiftsByNothing) {
  const Bytes src = numbered(area(128, 192));
  EXPECT_EQ(reduced(src, 128, 192, 64, 1, 6),
            (Bytes{src[0], src[1], src[2], src[192], src[193], src[194]}));
}

TEST(Resize, OtherChannelCountsWriteNothingAndSucceed) {
  const Bytes src = numbered(area(8, 8, 4));
  for (int channels : {-1, 0, 2, 4}) {
    for (int scale : {2, 3, 6}) {
      SCOPED_TRACE(testing::Message() << channels << " channels by " << scale);
      EXPECT_EQ(reduced(src, 8, 8, scale, channels, src.size()), Bytes(src.size(), kUntouched));
    }
  }
}

TEST(Resize, ImagesSmallerThanTheFactor) {
  EXPECT_EQ(reduced(numbered(1), 1, 1, 2, 1, 2), Bytes(2, kUntouched));
  EXPECT_EQ(reduced(numbered(1), 1, 1, 3, 1, 2), Bytes(2, kUntouched));
  EXPECT_EQ(reduced(numbered(4), 2, 2, 3, 1, 2), (Bytes{0, kUntouched}));  // 0.67 rounds to 1
  EXPECT_EQ(reduced(numbered(9), 3, 3, 5, 1, 2), (Bytes{0, kUntouched}));
  EXPECT_EQ(reduced(numbered(1), 0, 0, 1, 3, 2), Bytes(2, kUntouched));
}

TEST(Resize, WithoutRowsOrColumnsWritesNothing) {
  for (const auto& [rows, cols] : {std::pair(0, 12), {12, 0}, {-12, 12}, {12, -12}, {12, -1}}) {
    for (const int scale : {2, 3, 4}) {
      SCOPED_TRACE(testing::Message() << rows << " x " << cols << " by " << scale);
      EXPECT_EQ(reduced(numbered(144), rows, cols, scale, 1, 9), Bytes(9, kUntouched));
      EXPECT_EQ(reducedWithin(numbered(144), rows, cols, scale, 1, 9), Bytes(9, kUntouched));
    }
  }
}

TEST(Resize, NullPointersAndFactorZeroAreRefusedWithOneLine) {
  unsigned char in = 1, out = 171;
  const std::string output = standardOutputOf([&] {
    EXPECT_FALSE(opencvInterLineARResize<unsigned char>(nullptr, 1, 1, 1, 1, &out));
    EXPECT_FALSE(opencvInterLineARResize<unsigned char>(&in, 1, 1, 1, 1, nullptr));
    EXPECT_FALSE(opencvInterLineARResize<unsigned char>(&in, 1, 1, 0, 1, &out));
    EXPECT_FALSE(resizeWithinFrame(nullptr, 1, 1, 1, 1, &out, 1));
    EXPECT_FALSE(resizeWithinFrame(&in, 1, 1, 1, 1, nullptr, 1));
    EXPECT_FALSE(resizeWithinFrame(&in, 1, 1, 0, 1, &out, 1));
  });
  const std::string line = "src is null || scale is 0\n";
  EXPECT_EQ(output, line + line + line + line + line + line);
  EXPECT_EQ(out, 171);
}

TEST(ResizeWithinFrame, LeavesPixelsWhoseSourceIsOutside) {
  for (int channels : {1, 3}) {
    SCOPED_TRACE(channels);
    const Bytes src = numbered(area(60, 60, channels));
    Bytes expected(area(10, 10, channels), kUntouched);
    for (int i = 0; i < 10; ++i) {
      for (int j = 0; j < 10; ++j) {
        const int pixel = (i * 60 + j) * 8;
        if (pixel >= 3600) continue;
        std::copy_n(src.begin() + pixel * channels, channels,
                    expected.begin() + (i * 10 + j) * channels);
      }
    }
    EXPECT_EQ(reducedWithin(src, 60, 60, 6, channels, expected.size()), expected);
  }
}

TEST(ResizeWithinFrame, PixelJustBehindTheFrameIsOutside) {
  // Reduced pixel (6, 0) is number 288, read at 288 * 8 = 2304, the pixel count.
  Bytes src = numbered(48 * 48);
  src.push_back(99);
  const Bytes out = reducedWithin(src, 48, 48, 6, 1, 64);
  EXPECT_EQ(out[at(5, 7, 8)], src[(5 * 48 + 7) * 8]);
  EXPECT_EQ(Bytes(out.begin() + 48, out.end()), Bytes(16, kUntouched));
}

TEST(ResizeWithinFrame, KeepsToTheFrameForEveryEvenFactor) {
  for (int scale = 6; scale <= 132; scale += 2) {
    SCOPED_TRACE(scale);
    const int rows = 3 * scale + 1, cols = 2 * scale + 3;
    const std::int64_t factor = std::int64_t{1} << (scale / 2 % 32);
    const Bytes src = numbered(area(rows, cols));
    Bytes expected(6, kUntouched);
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 2; ++j) {
        const std::int64_t pixel = (std::int64_t{i} * cols + j) * factor;
        if (pixel < std::int64_t{rows} * cols) {
          expected[at(i, j, 2)] = src[static_cast<std::size_t>(pixel)];
        }
      }
    }
    EXPECT_EQ(reducedWithin(src, rows, cols, scale, 1, 6), expected);
  }
}

TEST(ResizeWithinFrame, StopsAtTheCapacity) {
  const Bytes src = numbered(area(9, 9, 3));
  for (int scale : {1, 2, 3, 4}) {
    const Bytes whole = scale == 1 ? src : sampled(src, 9, 9, scale, 3);
    for (std::size_t pixels = 0; 3 * pixels <= whole.size(); ++pixels) {
      SCOPED_TRACE(testing::Message() << "by " << scale << ", room for " << pixels);
      const Bytes begin(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(3 * pixels));
      EXPECT_EQ(reducedWithin(src, 9, 9, scale, 3, 3 * pixels), begin);
    }
  }
}

TEST(ResizeWithinFrame, CapacityMayCutAPixel) {
  const Bytes src = numbered(area(8, 8, 3));
  for (int scale : {1, 2, 3, 6}) {
    const Bytes out = reducedWithin(src, 8, 8, scale, 3, 2);  // the guards tell
    EXPECT_TRUE(out[0] == kUntouched || out[0] == src[0]);
  }
}

}  // namespace
