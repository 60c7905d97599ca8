// SPDX-License-Identifier: Apache-2.0
#include "imaging/overlap.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "tests/imaging/overlap_planes.h"
#include "tests/imaging/slow_overlap.h"
#include "tests/support/captured_output.h"
#include "tests/support/random_images.h"

namespace {

/// A pair of results, preset so that an untouched one shows.
struct Pair {
  float one = -5.0F, two = -5.0F;
};

Pair brightOf(Bytes image1, Bytes image2, int rows, int cols, int channels = 1) {
  const OverlapPlanes planes(rows, cols);
  Pair bright;
  EXPECT_TRUE(calcOverLapImageBright(image1.data(), image2.data(), rows, cols, rows, cols, channels,
                                     bright.one, bright.two));
  return bright;
}

Pair definitionOf(int rows, int cols) {
  unsigned char unread = 0;
  Pair definition;
  EXPECT_TRUE(calcOverLapImageDefinition(&unread, &unread, rows, cols, rows, cols, 3,
                                         definition.one, definition.two));
  return definition;
}

void expectBothNaN(Pair pair) {
  EXPECT_TRUE(std::isnan(pair.one)) << pair.one;
  EXPECT_TRUE(std::isnan(pair.two)) << pair.two;
}

/// Equal, NaN included.
void expectSame(float actual, float expected) {
  if (std::isnan(expected)) {
    EXPECT_TRUE(std::isnan(actual)) << actual;
  } else {
    EXPECT_EQ(actual, expected);
  }
}

// --- Brightness -------------------------------------------------------------------------------

TEST(Brightness, OfFlatOverlapsIsTheirValue) {
  const Pair bright = brightOf(Bytes(120, 100), Bytes(120, 100), 10, 12);
  EXPECT_EQ(bright.one, 100.0F);
  EXPECT_EQ(bright.two, 100.0F);
}

TEST(Brightness, FiveByFiveIsTheSmoothedMiddle) {
  Bytes one(25, 0), two(25, 0);
  one[at(2, 2, 5)] = 15;  // 60 >> 4
  two[at(1, 2, 5)] = 30;  // a neighbour: also 60 >> 4
  two[at(1, 1, 5)] = 4;   // makes it 64 >> 4
  const Pair bright = brightOf(one, two, 5, 5);
  EXPECT_EQ(bright.one, 3.0F);
  EXPECT_EQ(bright.two, 4.0F);
}

TEST(Brightness, LooksAtEverySecondPixelTwoAwayFromTheEdges) {
  // 8 x 9: rows 2 and 4, columns 2, 4 and 6.
  Bytes inside(72, 0), between(72, 0);
  inside[at(4, 6, 9)] = 240;   // 60 there
  between[at(6, 7, 9)] = 255;  // too far from (4, 6)
  const Pair bright = brightOf(inside, between, 8, 9);
  EXPECT_EQ(bright.one, 10.0F);
  EXPECT_EQ(bright.two, 0.0F);
}

TEST(Brightness, ColourIsMeasuredInGray) {
  Bytes red, green;
  for (int i = 0; i < 36; ++i) {
    red.insert(red.end(), {0, 0, 255});      // 76
    green.insert(green.end(), {0, 255, 0});  // 150
  }
  for (int channels : {2, 3}) {
    const Pair bright = brightOf(red, green, 6, 6, channels);
    EXPECT_EQ(bright.one, 76.0F);
    EXPECT_EQ(bright.two, 150.0F);
  }
}

TEST(Brightness, OfFewerThanFiveRowsOrColumnsIsZeroByZero) {
  for (const auto& [rows, cols] : {std::pair(4, 9), {9, 4}, {1, 1}, {2, 2}, {2, 9}, {9, 1}}) {
    SCOPED_TRACE(testing::Message() << rows << " x " << cols);
    expectBothNaN(brightOf(Bytes(area(rows, cols), 100), Bytes(area(rows, cols), 100), rows, cols));
  }
  expectBothNaN(brightOf(Bytes(1), Bytes(1), 0, 0));
}

TEST(Brightness, LeavesTheSmoothedGrayAndZerosAroundIt) {
  const OverlapPlanes planes(6, 7, {Bytes(210, 1), Bytes(210, 2), Bytes(210, 3)},
                             {Bytes(210, 4), Bytes(210, 5), Bytes(210, 6)});
  Bytes image(42, 80);
  Pair bright;
  EXPECT_TRUE(
      calcOverLapImageBright(image.data(), image.data(), 6, 7, 6, 7, 1, bright.one, bright.two));
  Bytes expected(210, 0);
  std::fill_n(expected.begin(), 42, static_cast<unsigned char>(80));
  EXPECT_EQ(planes.one().bound, expected);
  EXPECT_EQ(planes.two().bound, expected);
}

TEST(Brightness, FilteredPlanesHaveAFrameOfZeros) {
  const Bytes stale(OverlapPlanes::bytes(5, 6), 9);
  const OverlapPlanes planes(5, 6, {stale, stale, stale}, {stale, stale, stale});
  Bytes image(30, 80);
  Pair bright;
  EXPECT_TRUE(
      calcOverLapImageBright(image.data(), image.data(), 5, 6, 5, 6, 1, bright.one, bright.two));
  Bytes expected = stale;  // stays behind the 7 x 8 of the padded image
  for (int r = 0; r < 7; ++r) {
    for (int c = 0; c < 8; ++c) {
      const bool frame = r == 0 || c == 0 || r == 6 || c == 7;
      expected[at(r, c, 8)] = frame ? 0 : 80;
    }
  }
  EXPECT_EQ(planes.one().filtered, expected);
  EXPECT_EQ(planes.two().filtered, expected);
}

TEST(Brightness, SecondImageIsConvertedWithTheSizeOfTheFirst) {
  // Part two has 5 x 9 pixels but only the first 25 are copied; the plane held 200 before.
  const Bytes plane(OverlapPlanes::bytes(5, 9), 200);
  const OverlapPlanes planes(5, 9, {plane, plane, plane}, {plane, plane, plane});
  Bytes one(25, 40), two(45, 40);
  Pair bright;
  EXPECT_TRUE(
      calcOverLapImageBright(one.data(), two.data(), 5, 5, 5, 9, 1, bright.one, bright.two));
  EXPECT_EQ(bright.one, 40.0F);
  // At (2, 2): all of row 1 is 40, so are columns 1 to 3 of row 2 and none of row 3.
  EXPECT_EQ(bright.two, 80.0F);
}

// --- Definition -------------------------------------------------------------------------------

/// Definition of an 8 x 120 pair whose planes are empty but for what `mark` puts into side one.
/// The grid is 4 x 60; its left half is sampled from `bound`, the right half is what was there.
template <class Mark>
Pair definitionOfMarked(Mark mark) {
  const std::size_t bytes = OverlapPlanes::bytes(8, 120);
  SidePlanes one = {Bytes(bytes, 0), Bytes(bytes, 0), Bytes(bytes, 0)};
  const SidePlanes two = one;
  mark(one);
  const OverlapPlanes planes(8, 120, one, two);
  return definitionOf(8, 120);
}

TEST(Definition, OfFlatOverlapsIsZeroByZero) {
  const OverlapPlanes planes(16, 120);
  Bytes flat(16 * 120, 100);
  Pair bright, definition;
  EXPECT_TRUE(calcOverLapImageBright(flat.data(), flat.data(), 16, 120, 16, 120, 1, bright.one,
                                     bright.two));
  EXPECT_TRUE(calcOverLapImageDefinition(flat.data(), flat.data(), 16, 120, 16, 120, 1,
                                         definition.one, definition.two));
  EXPECT_EQ(bright.one, 100.0F);
  EXPECT_EQ(bright.two, 100.0F);
  expectBothNaN(definition);
}

TEST(Definition, WrappedNegativeResponsesCountAsStrong) {
  // A line of ones around grid column 20: 255 254 255 2 4 2 255 254 255.
  const Pair definition =
      definitionOfMarked([](SidePlanes& one) { one.bound[at(2, 40, 120)] = 1; });
  EXPECT_EQ(definition.one, (255.0F + 254.0F + 255.0F) / 3.0F);
  EXPECT_TRUE(std::isnan(definition.two));
}

TEST(Definition, LeftStripIsTenColumns) {
  // Around grid column 12 the response reaches from 8 to 16; 8 and 9 are blank.
  const Pair definition =
      definitionOfMarked([](SidePlanes& one) { one.bound[at(2, 24, 120)] = 1; });
  EXPECT_EQ(definition.one, (255.0F + 255.0F + 254.0F + 255.0F) / 4.0F);
}

TEST(Definition, RightStripIsElevenColumns) {
  // Around grid column 46 it reaches from 42 to 50; 49 and 50 are blank.
  const Pair definition = definitionOfMarked([](SidePlanes& one) { one.plane[at(1, 46, 60)] = 1; });
  EXPECT_EQ(definition.one, (255.0F + 254.0F + 255.0F + 255.0F) / 4.0F);
}

TEST(Definition, FirstAndLastGridRowAreBlank) {
  for (int row : {0, 3}) {
    const Pair definition =
        definitionOfMarked([row](SidePlanes& one) { one.plane[at(row, 46, 60)] = 1; });
    EXPECT_TRUE(std::isnan(definition.one)) << row;
  }
}

TEST(Definition, OnlyTheTopLeftQuarterIsSampled) {
  for (const auto& [row, col] : {std::pair(4, 40), {2, 60}, {6, 80}, {3, 40}, {2, 41}}) {
    SCOPED_TRACE(testing::Message() << row << ", " << col);
    expectBothNaN(definitionOfMarked(
        [row = row, col = col](SidePlanes& one) { one.bound[at(row, col, 120)] = 200; }));
  }
}

TEST(Definition, SampledPartReplacesWhatThePlaneHeld) {
  expectBothNaN(definitionOfMarked([](SidePlanes& one) { one.plane[at(1, 20, 60)] = 200; }));
}

TEST(Definition, LeavesThePaddedGridAndZerosBehindIt) {
  const std::size_t bytes = OverlapPlanes::bytes(4, 44);
  const SidePlanes stale = {Bytes(bytes, 7), Bytes(bytes, 8), Bytes(bytes, 9)};
  const OverlapPlanes planes(4, 44, stale, stale);
  definitionOf(4, 44);
  // A grid of 2 x 22, 4 columns more on each side. Sampled are columns 0 to 10 of its first row.
  Bytes expected(bytes, 0);
  for (int r = 0; r < 2; ++r) {
    for (int c = 0; c < 30; ++c) {
      const int grid = c < 4 ? 4 - c : c < 26 ? c - 4 : c - 9;
      expected[at(r, c, 30)] = r == 0 && grid <= 10 ? 8 : 7;
    }
  }
  EXPECT_EQ(planes.one().bound, expected);
  EXPECT_EQ(planes.two().bound, expected);
}

TEST(Definition, OfFewerThanTwoRowsOrColumnsIsZeroByZero) {
  const OverlapPlanes planes(12, 12);
  for (const auto& [rows, cols] : {std::pair(1, 12), {12, 1}, {0, 0}, {1, 1}, {0, 12}}) {
    expectBothNaN(definitionOf(rows, cols));
  }
}

TEST(Definition, PartsNarrowerThanBothStripsHaveNone) {
  Random random(97);
  for (int cols = 2; cols <= 42; cols += 2) {  // up to 21 grid columns
    SCOPED_TRACE(testing::Message() << "seed 97, cols " << cols);
    const std::size_t bytes = OverlapPlanes::bytes(10, cols);
    const SidePlanes side = {random.bytes(bytes), random.bytes(bytes), random.bytes(bytes)};
    const OverlapPlanes planes(10, cols, side, side);
    expectBothNaN(definitionOf(10, cols));
  }
}

// --- Both, against the slow measures ------------------------------------------------------------

void compareMeasures(Random& random, int rows1, int cols1, int rows2, int cols2, int channels) {
  SCOPED_TRACE(testing::Message() << rows1 << " x " << cols1 << " and " << rows2 << " x " << cols2
                                  << ", channels " << channels);
  const int frameRows = std::max(rows1, rows2), frameCols = std::max(cols1, cols2);
  const std::size_t bytes = OverlapPlanes::bytes(frameRows, frameCols);
  const auto stale = [&] {
    return SidePlanes{random.bytes(bytes), random.bytes(bytes), random.bytes(bytes)};
  };
  SlowOverlap slow = {{rows1, rows2}, {cols1, cols2}, frameRows, frameCols, {stale(), stale()}};
  const OverlapPlanes planes(frameRows, frameCols, slow.side[0], slow.side[1]);

  const std::size_t perPixel = channels < 2 ? 1 : 3;
  const std::size_t imageBytes = area(frameRows, frameCols) * perPixel;
  Bytes image1 = random.bytes(imageBytes), image2 = random.bytes(imageBytes);
  const auto [bright1, bright2] = slow.bright(image1, image2, channels);
  Pair bright, definition;
  EXPECT_TRUE(calcOverLapImageBright(image1.data(), image2.data(), rows1, cols1, rows2, cols2,
                                     channels, bright.one, bright.two));
  expectSame(bright.one, bright1);
  expectSame(bright.two, bright2);
  EXPECT_EQ(planes.one().bound, slow.side[0].bound);
  EXPECT_EQ(planes.two().bound, slow.side[1].bound);

  const auto [definition1, definition2] = slow.definition();
  EXPECT_TRUE(calcOverLapImageDefinition(image1.data(), image2.data(), rows1, cols1, rows2, cols2,
                                         channels, definition.one, definition.two));
  expectSame(definition.one, definition1);
  expectSame(definition.two, definition2);
  EXPECT_EQ(planes.one().plane, slow.side[0].plane);
  EXPECT_EQ(planes.two().plane, slow.side[1].plane);
}

TEST(OverlapMeasures, AgreeWithTheSlowOnesAtEveryWidth) {
  Random random(98);
  SCOPED_TRACE("seed 98");
  for (int cols = 1; cols <= 90; ++cols) {
    const int rows = random.between(1, 16);
    compareMeasures(random, rows, cols, rows, cols, random.between(0, 3));
  }
}

TEST(OverlapMeasures, AgreeWithTheSlowOnesForPartsOfDifferentSizes) {
  Random random(99);
  SCOPED_TRACE("seed 99");
  for (int i = 0; i < 60; ++i) {
    const int rows = random.between(2, 16), cols = random.between(2, 80);
    compareMeasures(random, rows, cols, rows + random.between(-1, 1), cols + random.between(-1, 1),
                    random.between(1, 3));
  }
}

// --- Refusals -----------------------------------------------------------------------------------

/// Both measures refuse with one line each and leave the results alone.
void expectRefused(unsigned char* image1, unsigned char* image2) {
  Pair bright, definition;
  const std::string output = standardOutputOf([&] {
    EXPECT_FALSE(calcOverLapImageBright(image1, image2, 5, 5, 5, 5, 1, bright.one, bright.two));
    EXPECT_FALSE(
        calcOverLapImageDefinition(image1, image2, 5, 5, 5, 5, 1, definition.one, definition.two));
  });
  EXPECT_EQ(output, "ptr is null\nptr is null\n");
  for (float untouched : {bright.one, bright.two, definition.one, definition.two}) {
    EXPECT_EQ(untouched, -5.0F);
  }
}

TEST(OverlapMeasures, NullImagesAreRefused) {
  const OverlapPlanes planes(5, 5);
  Bytes image(25, 9);
  expectRefused(nullptr, image.data());
  expectRefused(image.data(), nullptr);
}

TEST(OverlapMeasures, MissingPlanesAreRefused) {
  Bytes image(25, 9);
  expectRefused(image.data(), image.data());
  const OverlapPlanes planes(5, 5);
  for (unsigned char** plane : {&resiz_One, &resiz_Two, &resiz_OneBound, &resiz_TwoBound,
                                &resiz_OneBoundFilter, &resiz_TwoBoundFilter}) {
    const ScopedValue<unsigned char*> missing(*plane, nullptr);
    expectRefused(image.data(), image.data());
  }
}

}  // namespace
