// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <functional>
#include <numeric>
#include <string>
#include <vector>

#include "imaging/filter.h"
#include "tests/imaging/reference.h"
#include "tests/support/captured_output.h"
#include "tests/support/guarded.h"
#include "tests/support/random_images.h"

namespace {

const char kRefusal[] = "ptr is NULL\n";

Bytes countedUp(std::size_t count) {
  Bytes bytes(count);
  std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
  return bytes;
}

/// What padding leaves in its second destination; the first has to hold the same.
Bytes padded(Bytes src, int rows, int cols, int border) {
  GuardedBytes a(area(rows + 2 * border, cols + 2 * border)), b(a.size());
  EXPECT_TRUE(opencvcopyFilter2DBorderCh1(src.data(), rows, cols, border, a.data(), b.data()));
  EXPECT_EQ(a.values(), b.values());
  EXPECT_TRUE(a.intact() && b.intact());
  return b.values();
}

Bytes paddedInColumns(Bytes src, int rows, int cols, int border) {
  GuardedBytes out(area(rows, cols + 2 * border));
  EXPECT_TRUE(opencvcopyFilter2DBorderColCh1(src.data(), rows, cols, border, out.data()));
  EXPECT_TRUE(out.intact());
  return out.values();
}

template <class T>
std::vector<T> mirroredImage(const std::vector<T>& src, int rows, int cols, int border) {
  std::vector<T> image;
  for (int r = -border; r < rows + border; ++r) {
    for (int c = -border; c < cols + border; ++c) {
      image.push_back(src[at(mirrored(r, rows), mirrored(c, cols), cols)]);
    }
  }
  return image;
}

TEST(Padding, ThreeByThreeByTwoMirrorsWithoutTheEdge) {
  const Bytes expected = {
      9, 8, 7, 8, 9, 8, 7,  //
      6, 5, 4, 5, 6, 5, 4,  //
      3, 2, 1, 2, 3, 2, 1,  //
      6, 5, 4, 5, 6, 5, 4,  //
      9, 8, 7, 8, 9, 8, 7,  //
      6, 5, 4, 5, 6, 5, 4,  //
      3, 2, 1, 2, 3, 2, 1,  //
  };
  EXPECT_EQ(padded(countedUp(9), 3, 3, 2), expected);
}

TEST(Padding, BorderOfZeroCopies) { EXPECT_EQ(padded(countedUp(12), 3, 4, 0), countedUp(12)); }

TEST(Padding, SinglePixelFillsItsSurroundings) {
  EXPECT_EQ(padded({7}, 1, 1, 2), Bytes(25, 7));
  EXPECT_EQ(padded({7}, 1, 1, 1), Bytes(9, 7));
}

TEST(Padding, TwoByTwoIsFoldedBackAndForth) {
  const Bytes expected = {
      1, 2, 1, 2, 1, 2,  //
      3, 4, 3, 4, 3, 4,  //
      1, 2, 1, 2, 1, 2,  //
      3, 4, 3, 4, 3, 4,  //
      1, 2, 1, 2, 1, 2,  //
      3, 4, 3, 4, 3, 4,  //
  };
  EXPECT_EQ(padded(countedUp(4), 2, 2, 2), expected);
}

TEST(Padding, EmptyImageWritesNothing) {
  unsigned char src = 1;
  GuardedBytes a(50), b(50);
  for (const auto& [rows, cols] : {std::pair(0, 5), {5, 0}, {0, 0}, {-1, 3}}) {
    EXPECT_TRUE(opencvcopyFilter2DBorderCh1(&src, rows, cols, 2, a.data(), b.data()));
  }
  EXPECT_EQ(a.values(), Bytes(50, GuardedBytes::kUntouched));
  EXPECT_EQ(b.values(), Bytes(50, GuardedBytes::kUntouched));
}

TEST(Padding, FirstDestinationMayBeMissing) {
  Bytes src = countedUp(9);
  Floats floats(src.begin(), src.end());
  GuardedBytes bytesOut(49);
  GuardedFloats floatsOut(49);
  const std::string output = standardOutputOf([&] {
    EXPECT_TRUE(
        opencvcopyFilter2DBorderCh1<unsigned char>(src.data(), 3, 3, 2, nullptr, bytesOut.data()));
    EXPECT_TRUE(
        opencvcopyFilter2DBorderCh1<float>(floats.data(), 3, 3, 2, nullptr, floatsOut.data()));
  });
  EXPECT_EQ(bytesOut.values(), mirroredImage(src, 3, 3, 2));
  EXPECT_EQ(floatsOut.values(), mirroredImage(floats, 3, 3, 2));
  EXPECT_EQ(output, "");
}

TEST(Padding, MirrorsRandomImagesOfEveryWidth) {
  Random random(51);
  for (int cols = 1; cols <= 70; ++cols) {
    const int rows = random.between(1, 8);
    const int border = random.between(0, 5);
    SCOPED_TRACE(testing::Message()
                 << "seed 51: " << rows << " x " << cols << ", border " << border);
    const Bytes src = random.bytes(area(rows, cols));
    EXPECT_EQ(padded(src, rows, cols, border), mirroredImage(src, rows, cols, border));

    Floats floats(src.begin(), src.end());
    for (float& value : floats) value = value * 0.37F - 20.0F;
    GuardedFloats a(area(rows + 2 * border, cols + 2 * border)), b(a.size());
    EXPECT_TRUE(opencvcopyFilter2DBorderCh1(floats.data(), rows, cols, border, a.data(), b.data()));
    EXPECT_EQ(a.values(), mirroredImage(floats, rows, cols, border));
    EXPECT_EQ(b.values(), a.values());
    EXPECT_TRUE(a.intact() && b.intact());
  }
}

TEST(ColumnPadding, RightBorderRepeatsColumnsForward) {
  EXPECT_EQ(paddedInColumns({0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, 1, 10, 4),
            (Bytes{4, 3, 2, 1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 5, 6, 7, 8}));
}

TEST(ColumnPadding, ColumnsLeftOfANarrowImageCountAsTheFirst) {
  // Left: columns 4, 3, 2, 1 mirrored into three. Right: columns -2, -1, 0, 1.
  EXPECT_EQ(paddedInColumns({10, 20, 30}, 1, 3, 4),
            (Bytes{10, 20, 30, 20, 10, 20, 30, 10, 10, 10, 20}));
  EXPECT_EQ(paddedInColumns({10, 20}, 2, 1, 2), (Bytes{10, 10, 10, 10, 10, 20, 20, 20, 20, 20}));
}

TEST(ColumnPadding, EmptyImageWritesNothing) {
  unsigned char src = 1;
  GuardedBytes out(20);
  EXPECT_TRUE(opencvcopyFilter2DBorderColCh1(&src, 0, 5, 4, out.data()));
  EXPECT_TRUE(opencvcopyFilter2DBorderColCh1(&src, 2, 0, 4, out.data()));
  EXPECT_EQ(out.values(), Bytes(20, GuardedBytes::kUntouched));
}

TEST(ColumnPadding, FollowsItsRuleAtEveryWidth) {
  Random random(52);
  for (int cols = 1; cols <= 70; ++cols) {
    const int rows = random.between(1, 5);
    const int border = random.between(0, std::min(5, cols - 1));
    SCOPED_TRACE(testing::Message()
                 << "seed 52: " << rows << " x " << cols << ", border " << border);
    const Bytes src = random.bytes(area(rows, cols));
    Bytes expected;
    for (int r = 0; r < rows; ++r) {
      for (int t = border; t >= 1; --t) expected.push_back(src[at(r, t, cols)]);
      for (int c = 0; c < cols; ++c) expected.push_back(src[at(r, c, cols)]);
      for (int t = border; t >= 1; --t) expected.push_back(src[at(r, cols - 1 - t, cols)]);
    }
    EXPECT_EQ(paddedInColumns(src, rows, cols, border), expected);
  }
}

TEST(TakingOut, InnerBlockIsPacked) {
  Bytes src = countedUp(30);  // 5 x 6
  GuardedBytes out(12);
  EXPECT_TRUE(opencvcopyFilter2DTakeOutBoundCh1(src.data(), 5, 6, 1, out.data()));
  EXPECT_EQ(out.values(), (Bytes{8, 9, 10, 11, 14, 15, 16, 17, 20, 21, 22, 23}));
  EXPECT_TRUE(out.intact());
}

TEST(TakingOut, ColumnsOfEveryRowArePacked) {
  Bytes src = countedUp(14);  // 2 x 7
  GuardedBytes out(6);
  EXPECT_TRUE(opencvcopyFilter2DTakeOutBoundColCh1(src.data(), 2, 7, 2, out.data()));
  EXPECT_EQ(out.values(), (Bytes{3, 4, 5, 10, 11, 12}));
  EXPECT_TRUE(out.intact());
}

TEST(TakingOut, NothingIsLeftOfAnImageAsWideAsItsBorders) {
  Bytes src = countedUp(64);
  Floats floats(64, 1.0F);
  GuardedBytes bytesOut(64);
  GuardedFloats floatsOut(64);
  for (const auto& [rows, cols] : {std::pair(4, 8), {8, 4}, {3, 3}, {0, 0}}) {
    EXPECT_TRUE(opencvcopyFilter2DTakeOutBoundCh1(src.data(), rows, cols, 2, bytesOut.data()));
    EXPECT_TRUE(opencvcopyFilter2DTakeOutBoundCh1(floats.data(), rows, cols, 2, floatsOut.data()));
  }
  EXPECT_TRUE(opencvcopyFilter2DTakeOutBoundColCh1(src.data(), 8, 4, 2, bytesOut.data()));
  EXPECT_TRUE(opencvcopyFilter2DTakeOutBoundColCh1(src.data(), 8, 3, 2, bytesOut.data()));
  EXPECT_EQ(bytesOut.values(), Bytes(64, GuardedBytes::kUntouched));
  EXPECT_EQ(floatsOut.values(), Floats(64, GuardedFloats::kUntouched));
}

TEST(TakingOut, UndoesThePaddingAtEveryWidth) {
  Random random(53);
  for (int cols = 1; cols <= 70; ++cols) {
    const int rows = random.between(1, 6);
    const int border = random.between(0, 5);
    SCOPED_TRACE(testing::Message()
                 << "seed 53: " << rows << " x " << cols << ", border " << border);
    const Bytes src = random.bytes(area(rows, cols));
    const Floats floats(src.begin(), src.end());
    Bytes whole = mirroredImage(src, rows, cols, border);
    Floats wholeFloats(whole.begin(), whole.end());
    Bytes wide = paddedInColumns(src, rows, cols, border);
    GuardedBytes out(src.size()), columnsOut(src.size());
    GuardedFloats floatsOut(src.size());
    EXPECT_TRUE(opencvcopyFilter2DTakeOutBoundCh1(whole.data(), rows + 2 * border,
                                                  cols + 2 * border, border, out.data()));
    EXPECT_TRUE(opencvcopyFilter2DTakeOutBoundCh1(wholeFloats.data(), rows + 2 * border,
                                                  cols + 2 * border, border, floatsOut.data()));
    EXPECT_TRUE(opencvcopyFilter2DTakeOutBoundColCh1(wide.data(), rows, cols + 2 * border, border,
                                                     columnsOut.data()));
    EXPECT_EQ(out.values(), src);
    EXPECT_EQ(floatsOut.values(), floats);
    EXPECT_EQ(columnsOut.values(), src);
    EXPECT_TRUE(out.intact() && floatsOut.intact() && columnsOut.intact());
  }
}

TEST(Padding, NullPointersAreRefusedWithOneLine) {
  unsigned char in = 1, out = 171;
  float fin = 1.0F, fout = 171.0F;
  const std::vector<std::function<bool()>> calls = {
      [&] { return opencvcopyFilter2DBorderCh1<unsigned char>(nullptr, 1, 1, 0, &out, &out); },
      [&] { return opencvcopyFilter2DBorderCh1<unsigned char>(&in, 1, 1, 0, &out, nullptr); },
      [&] { return opencvcopyFilter2DBorderCh1<float>(nullptr, 1, 1, 0, &fout, &fout); },
      [&] { return opencvcopyFilter2DBorderCh1<float>(&fin, 1, 1, 0, &fout, nullptr); },
      [&] { return opencvcopyFilter2DTakeOutBoundCh1<unsigned char>(nullptr, 1, 1, 0, &out); },
      [&] { return opencvcopyFilter2DTakeOutBoundCh1<unsigned char>(&in, 1, 1, 0, nullptr); },
      [&] { return opencvcopyFilter2DTakeOutBoundCh1<float>(nullptr, 1, 1, 0, &fout); },
      [&] { return opencvcopyFilter2DTakeOutBoundCh1<float>(&fin, 1, 1, 0, nullptr); },
      [&] { return opencvcopyFilter2DBorderColCh1(nullptr, 1, 1, 0, &out); },
      [&] { return opencvcopyFilter2DBorderColCh1(&in, 1, 1, 0, nullptr); },
      [&] { return opencvcopyFilter2DTakeOutBoundColCh1(nullptr, 1, 1, 0, &out); },
      [&] { return opencvcopyFilter2DTakeOutBoundColCh1(&in, 1, 1, 0, nullptr); },
  };
  for (std::size_t i = 0; i < calls.size(); ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(standardOutputOf([&] { EXPECT_FALSE(calls[i]()); }), kRefusal);
  }
  EXPECT_EQ(out, 171);
  EXPECT_EQ(fout, 171.0F);
}

}  // namespace
