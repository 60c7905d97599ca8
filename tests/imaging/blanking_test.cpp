// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>

#include "imaging/overlap.h"
#include "tests/imaging/reference.h"
#include "tests/support/captured_output.h"
#include "tests/support/guarded.h"

namespace {

/// A 3 x 8 image of nines and an equal float image that are blanked side by side.
struct Image {
  GuardedBytes bytes{Bytes(24, 9)};
  GuardedFloats floats{Floats(24, 9.0F)};

  void blankRows(int start, int end) {
    EXPECT_TRUE(corresRowAllColZero(bytes.data(), 3, 8, start, end));
    EXPECT_TRUE(corresRowAllColZeroFloat(floats.data(), 3, 8, start, end));
  }
  void blankCols(int start, int end) {
    EXPECT_TRUE(corresColAllRowZero(bytes.data(), 3, 8, start, end));
    EXPECT_TRUE(corresColAllRowZeroFloat(floats.data(), 3, 8, start, end));
  }
  void expect(const Bytes& expected) const {
    EXPECT_EQ(bytes.values(), expected);
    EXPECT_EQ(floats.values(), Floats(expected.begin(), expected.end()));
    EXPECT_TRUE(bytes.intact() && floats.intact());
  }
};

TEST(Blanking, ColumnsOfEveryRow) {
  Image image;
  image.blankCols(2, 5);
  image.expect({9, 9, 0, 0, 0, 9, 9, 9,  //
                9, 9, 0, 0, 0, 9, 9, 9,  //
                9, 9, 0, 0, 0, 9, 9, 9});
}

TEST(Blanking, WholeRows) {
  Image image;
  image.blankRows(1, 2);
  image.expect({9, 9, 9, 9, 9, 9, 9, 9,  //
                0, 0, 0, 0, 0, 0, 0, 0,  //
                9, 9, 9, 9, 9, 9, 9, 9});
}

TEST(Blanking, SeveralRows) {
  Image image;
  image.blankRows(0, 2);
  image.expect({0, 0, 0, 0, 0, 0, 0, 0,  //
                0, 0, 0, 0, 0, 0, 0, 0,  //
                9, 9, 9, 9, 9, 9, 9, 9});
}

TEST(Blanking, WholeImage) {
  Image byRows, byCols;
  byRows.blankRows(0, 3);
  byRows.expect(Bytes(24, 0));
  byCols.blankCols(0, 8);
  byCols.expect(Bytes(24, 0));
}

TEST(Blanking, StartFromTheEndOnDoesNothing) {
  Image image;
  for (const auto& [start, end] : {std::pair(1, 1), {2, 1}, {3, 3}, {0, 0}, {0, -1}, {7, 2}}) {
    image.blankRows(start, end);
    image.blankCols(start, end);
  }
  image.expect(Bytes(24, 9));
}

TEST(Blanking, ColumnsBehindTheRowRunOverIntoTheNext) {
  // Bounds are not checked: columns 6 to 9 of the first two rows.
  Image image;
  EXPECT_TRUE(corresColAllRowZero(image.bytes.data(), 2, 8, 6, 10));
  EXPECT_TRUE(corresColAllRowZeroFloat(image.floats.data(), 2, 8, 6, 10));
  image.expect({9, 9, 9, 9, 9, 9, 0, 0,  //
                0, 0, 9, 9, 9, 9, 0, 0,  //
                0, 0, 9, 9, 9, 9, 9, 9});
}

TEST(Blanking, ImageWithoutRowsOrColumnsStays) {
  Image image;
  EXPECT_TRUE(corresColAllRowZero(image.bytes.data(), 0, 8, 0, 8));
  EXPECT_TRUE(corresColAllRowZeroFloat(image.floats.data(), 0, 8, 0, 8));
  EXPECT_TRUE(corresRowAllColZero(image.bytes.data(), 3, 0, 0, 3));
  EXPECT_TRUE(corresRowAllColZeroFloat(image.floats.data(), 3, 0, 0, 3));
  image.expect(Bytes(24, 9));
}

TEST(Blanking, AllFourNameTheRowFunctionForANullImage) {
  const std::string line = "corresRowAllColZero ptr is null\n";
  EXPECT_EQ(standardOutputOf([] { EXPECT_FALSE(corresRowAllColZero(nullptr, 3, 8, 0, 1)); }), line);
  EXPECT_EQ(standardOutputOf([] { EXPECT_FALSE(corresRowAllColZeroFloat(nullptr, 3, 8, 0, 1)); }),
            line);
  EXPECT_EQ(standardOutputOf([] { EXPECT_FALSE(corresColAllRowZero(nullptr, 3, 8, 0, 1)); }), line);
  EXPECT_EQ(standardOutputOf([] { EXPECT_FALSE(corresColAllRowZeroFloat(nullptr, 3, 8, 0, 1)); }),
            line);
}

}  // namespace
