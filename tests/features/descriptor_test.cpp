// SPDX-License-Identifier: Apache-2.0
#include "features/descriptor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "tests/support/captured_output.h"
#include "tests/support/guarded.h"
#include "tests/support/points.h"
#include "tests/support/random_images.h"

namespace {

using Elements = std::vector<unsigned short>;

constexpr int kLength = 200;
constexpr int kPatch = 20;

struct Gray {
  int rows, cols;
  std::vector<unsigned char> pixels;

  Gray(int r, int c, unsigned char value = 0)
      : rows(r), cols(c), pixels(static_cast<std::size_t>(r * c), value) {}
  unsigned char& at(int r, int c) { return pixels[static_cast<std::size_t>(r * cols + c)]; }
};

Elements describe(Gray image, const Points& corners, int length = kLength, int patch = kPatch) {
  Guarded<unsigned short> scratch(static_cast<std::size_t>(length));
  Guarded<unsigned short> out(static_cast<std::size_t>(length) * corners.size());
  EXPECT_TRUE(noRotaFeatureDescriber(image.pixels.data(), image.rows, image.cols, length, patch,
                                     corners, scratch.data(), out.data()));
  EXPECT_TRUE(scratch.intact());
  EXPECT_TRUE(out.intact());
  return out.values();
}

/// Sum of each of the eight bins over all cells.
std::vector<int> binTotals(const Elements& descriptor) {
  std::vector<int> totals(8);
  for (std::size_t k = 0; k < descriptor.size(); ++k) totals[k % 8] += descriptor[k];
  return totals;
}

/// Bin and magnitude of a gradient, by quadrant and in double precision.
std::pair<int, int> gradientBin(int dx, int dy) {
  int angle = 0;
  if (dx == 0) {
    angle = dy > 0 ? 90 : dy < 0 ? 270 : 0;
  } else {
    const float quotient = std::fabs(static_cast<float>(dy) / static_cast<float>(dx));
    const double half = static_cast<double>(atanf(quotient)) * 0.5;
    const int d = static_cast<int>(static_cast<float>(half / 3.141592653589793 * 360.0));
    if (dx > 0 && dy > 0) angle = d;
    if (dx < 0 && dy > 0) angle = 180 - d;
    if (dx < 0 && dy <= 0) angle = 180 + d;
    if (dx > 0 && dy <= 0) angle = (360 - d) % 360;
  }
  const auto squared = static_cast<float>(dx * dx + dy * dy);
  return {angle / 45, static_cast<int>(std::sqrt(squared))};
}

/// One descriptor, written from the layout: cell column, cell row, bin.
Elements slowDescriptor(const Gray& image, SPoint corner) {
  // One row of zeros behind the image is what a tap past the last row finds.
  std::vector<unsigned char> packed = image.pixels;
  packed.resize(packed.size() + static_cast<std::size_t>(image.cols));
  Elements descriptor(kLength);
  for (int px = 0; px < kPatch; ++px) {
    for (int py = 0; py < kPatch; ++py) {
      const int c = corner.x - 10 + px;
      const int r = corner.y - 10 + py;
      if (c < 2 || r < 2 || c >= image.cols - 1 || r >= image.rows - 1) continue;
      const auto pixel = [&](int place) { return int{packed[static_cast<std::size_t>(place)]}; };
      const int here = r * image.cols + c;
      const auto [bin, magnitude] =
          gradientBin(pixel(here + 2) - pixel(here - 2),
                      pixel(here + 2 * image.cols) - pixel(here - 2 * image.cols));
      auto& element = descriptor[static_cast<std::size_t>((px / 4 * 5 + py / 4) * 8 + bin)];
      element = static_cast<unsigned short>(element + magnitude);
    }
  }
  return descriptor;
}

TEST(Descriptor, NullImageIsRefusedWithItsLine) {
  unsigned short scratch[kLength];
  unsigned short out[kLength];
  EXPECT_EQ(standardOutputOf([&] {
              EXPECT_FALSE(noRotaFeatureDescriber(nullptr, 50, 50, kLength, kPatch, {{25, 25}},
                                                  scratch, out));
            }),
            "src_in ptr is null\n");
}

TEST(Descriptor, NoCornerOnlyZeroesTheScratch) {
  Gray image(30, 30, 9);
  Guarded<unsigned short> scratch(kLength);
  Guarded<unsigned short> out(kLength);
  EXPECT_TRUE(noRotaFeatureDescriber(image.pixels.data(), 30, 30, kLength, kPatch, {},
                                     scratch.data(), out.data()));
  EXPECT_EQ(scratch.values(), Elements(kLength));
  EXPECT_TRUE(scratch.intact());
  EXPECT_EQ(out.values(), Elements(kLength, Guarded<unsigned short>::kUntouched));
}

TEST(Descriptor, FlatRegionIsAllZero) {
  EXPECT_EQ(describe(Gray(60, 60, 77), {{30, 30}}), Elements(kLength));
}

TEST(Descriptor, StepsFillTheBinOfTheirDirection) {
  struct Step {
    bool vertical, brighterAtTheEnd;
    std::size_t bin;
  };
  // Rows grow downwards: below is 90 degrees, bin 2.
  for (const Step step :
       {Step{true, true, 0}, Step{true, false, 4}, Step{false, true, 2}, Step{false, false, 6}}) {
    Gray image(60, 60);
    for (int r = 0; r < 60; ++r) {
      for (int c = 0; c < 60; ++c) {
        image.at(r, c) = ((step.vertical ? c : r) >= 30) == step.brighterAtTheEnd ? 200 : 0;
      }
    }
    const std::vector<int> totals = binTotals(describe(image, {{30, 30}}));
    // Four columns (or rows) of twenty pixels see the step, each 200 strong.
    for (std::size_t bin = 0; bin < 8; ++bin) EXPECT_EQ(totals[bin], bin == step.bin ? 16000 : 0);
  }
}

TEST(Descriptor, CellsAreStoredColumnBlockByColumnBlock) {
  // A single bright pixel gives its left neighbour at distance 2 a gradient to the right. With the
  // corner at (30, 30) the patch starts at (20, 20); that neighbour is at column 25, row 33: second
  // cell column, fourth cell of it.
  Gray image(60, 60);
  image.at(33, 27) = 100;
  const Elements descriptor = describe(image, {{30, 30}});
  EXPECT_EQ(descriptor[(1 * 5 + 3) * 8 + 0], 100);
  // The right neighbour, column 29, third cell column: to the left, bin 4.
  EXPECT_EQ(descriptor[(2 * 5 + 3) * 8 + 4], 100);
  // Above (row 31, third cell; downwards) and below (row 35; upwards), both in column 27.
  EXPECT_EQ(descriptor[(1 * 5 + 2) * 8 + 2], 100);
  EXPECT_EQ(descriptor[(1 * 5 + 3) * 8 + 6], 100);
}

TEST(Descriptor, CarriesRawMagnitudes) {
  Gray weak(60, 60, 10);
  Gray strong(60, 60, 10);
  for (int r = 0; r < 60; ++r) {
    for (int c = 30; c < 60; ++c) {
      weak.at(r, c) = 50;
      strong.at(r, c) = 90;
    }
  }
  EXPECT_EQ(2 * binTotals(describe(weak, {{30, 30}}))[0],
            binTotals(describe(strong, {{30, 30}}))[0]);
}

TEST(Descriptor, EveryGradientFallsIntoItsBin) {
  // The digest of the whole table is pinned, so that an atan or root of another library shows.
  std::uint64_t digest = 14695981039346656037ULL;
  for (int dx = -255; dx <= 255; ++dx) {
    for (int dy = -255; dy <= 255; ++dy) {
      const auto [bin, magnitude] = gradientBin(dx, dy);
      for (const int value : {bin, magnitude & 255, magnitude >> 8}) {
        digest = (digest ^ static_cast<std::uint64_t>(value)) * 1099511628211ULL;
      }
    }
  }
  EXPECT_EQ(digest, 3703616155901333695ULL);

  // An image of 5 x 5 pixels has gradients at rows and columns 2 and 3; of these only (2, 2) lies
  // in the cell.
  for (int dx = -255; dx <= 255; ++dx) {
    for (int dy = -255; dy <= 255; ++dy) {
      unsigned char pixels[25] = {};
      pixels[2 * 5 + 0] = static_cast<unsigned char>(std::max(0, -dx));
      pixels[2 * 5 + 4] = static_cast<unsigned char>(std::max(0, dx));
      pixels[0 * 5 + 2] = static_cast<unsigned char>(std::max(0, -dy));
      pixels[4 * 5 + 2] = static_cast<unsigned char>(std::max(0, dy));
      unsigned short scratch[8];
      unsigned short out[8];
      // A patch of 2 around (0, 0) is one cell: rows and columns -1 to 2.
      ASSERT_TRUE(noRotaFeatureDescriber(pixels, 5, 5, 8, 2, {{0, 0}}, scratch, out));
      const auto [bin, magnitude] = gradientBin(dx, dy);
      for (int k = 0; k < 8; ++k) {
        ASSERT_EQ(out[k], k == bin ? magnitude : 0) << "dx " << dx << ", dy " << dy;
      }
    }
  }
}

TEST(Descriptor, LongerOnesEndInZeros) {
  Random random(3);
  Gray image(50, 50);
  image.pixels = random.bytes(image.pixels.size());
  const Elements reference = describe(image, {{25, 25}});
  Elements longer = describe(image, {{25, 25}}, 230);
  EXPECT_EQ(Elements(longer.begin() + 200, longer.end()), Elements(30));
  longer.resize(200);
  EXPECT_EQ(longer, reference);
}

TEST(Descriptor, ShorterOnesAreCutWithinACell) {
  Random random(4);
  Gray image(50, 50);
  image.pixels = random.bytes(image.pixels.size());
  const Points corners = {{25, 25}, {20, 28}};
  const Elements reference = describe(image, corners);
  for (const int length : {1, 7, 8, 13, 100, 199}) {
    const Elements cut = describe(image, corners, length);
    for (std::size_t i = 0; i < corners.size(); ++i) {
      const auto from = reference.begin() + static_cast<std::ptrdiff_t>(i) * kLength;
      const auto begin = cut.begin() + static_cast<std::ptrdiff_t>(i) * length;
      EXPECT_TRUE(std::equal(begin, begin + length, from)) << length;
    }
  }
}

TEST(Descriptor, WithoutCellsTheScratchIsHandedOut) {
  for (const int patch : {0, 1}) {
    EXPECT_EQ(describe(Gray(20, 20, 5), {{10, 10}}, 16, patch), Elements(16));
  }
}

TEST(Descriptor, PatchDecidesHowManyCellsThereAre) {
  // Cells start half - 1 before the corner, and every fourth pixel from there up to half behind it.
  Random random(6);
  Gray image(64, 64);
  image.pixels = random.bytes(image.pixels.size());
  for (int patch = 2; patch <= 24; ++patch) {
    SCOPED_TRACE(patch);
    const int half = patch / 2;
    Elements expected;
    for (int dx = 1 - half; dx <= half; dx += 4) {
      for (int dy = 1 - half; dy <= half; dy += 4) {
        // The same cell is the first one of a patch of 20 whose corner lies 9 further on.
        const Elements whole = slowDescriptor(image, {32 + dx + 9, 30 + dy + 9});
        expected.insert(expected.end(), whole.begin(), whole.begin() + 8);
      }
    }
    EXPECT_EQ(describe(image, {{32, 30}}, static_cast<int>(expected.size()), patch), expected);
    // There is no further cell: room for one more stays 0.
    expected.resize(expected.size() + 8);
    EXPECT_EQ(describe(image, {{32, 30}}, static_cast<int>(expected.size()), patch), expected);
  }
}

TEST(Descriptor, CornersAnywhereAreAllowed) {
  Random random(5);
  Gray image(30, 40);
  image.pixels = random.bytes(image.pixels.size());
  const Points far = {{-100, 10}, {10, -100}, {1000, 1000}, {-2147483647, 2147483647}};
  EXPECT_EQ(describe(image, far), Elements(far.size() * kLength));
}

TEST(Descriptor, EqualsASlowOneEverywhereInRandomImages) {
  for (unsigned seed = 1; seed <= 12; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    Gray image(random.between(1, 45), random.between(1, 45));
    image.pixels = random.bytes(image.pixels.size());
    Points corners;
    for (int k = 0; k < 25; ++k) {
      corners.push_back(
          {random.between(-12, image.cols + 12), random.between(-12, image.rows + 12)});
    }
    // The far edges, whose taps read the next row and the row of zeros.
    corners.push_back({image.cols - 2, image.rows - 2});
    corners.push_back({image.cols - 1, 5});
    corners.push_back({5, image.rows - 1});
    const Elements all = describe(image, corners);
    for (std::size_t i = 0; i < corners.size(); ++i) {
      const auto from = all.begin() + static_cast<std::ptrdiff_t>(i) * kLength;
      EXPECT_EQ(Elements(from, from + kLength), slowDescriptor(image, corners[i])) << i;
    }
  }
}

TEST(Descriptor, TapsPastTheLastRowReadZeroWhateverLiesBehindTheImage) {
  Gray image(40, 40, 50);
  Guarded<unsigned char> framed(image.pixels);
  unsigned short scratch[kLength];
  Elements out(kLength);
  ASSERT_TRUE(noRotaFeatureDescriber(framed.data(), 40, 40, kLength, kPatch, {{20, 34}}, scratch,
                                     out.data()));
  EXPECT_EQ(out, slowDescriptor(image, {20, 34}));
  // Row 38 looks upwards: 0 - 50 in each of the twenty columns.
  EXPECT_EQ(binTotals(out)[6], 20 * 50);
}

}  // namespace
