// SPDX-License-Identifier: Apache-2.0
#include "cpu/hint_strip.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using framequilt::HintRange;
using framequilt::HintStrip;

void expectRange(const HintRange& range, int start, int length) {
  EXPECT_EQ(range.start, start);
  EXPECT_EQ(range.end, start + length);
  EXPECT_EQ(range.length(), length);
  EXPECT_EQ(range.shift, start) << "corners move to where the range begins";
}

TEST(HintStrip, IsAsLongInBothImagesAndAtOppositeEnds) {
  constexpr int kRows = 60, kCols = 80;
  for (const int dx : {-30, -1, 0, 1, 30}) {
    for (const int dy : {-20, -1, 0, 1, 20}) {
      SCOPED_TRACE(testing::Message() << dx << ", " << dy);
      const HintStrip one = framequilt::stripOfReference(dx, dy, kRows, kCols);
      const HintStrip two = framequilt::stripOfNewFrame(dx, dy, kRows, kCols);
      const int across = std::abs(dx), down = std::abs(dy);
      expectRange(one.cols, dx >= 0 ? across : 0, kCols - across);
      expectRange(two.cols, dx >= 0 ? 0 : across, kCols - across);
      const bool farRows = (dx >= 0) == (dy >= 0);
      expectRange(one.rows, farRows ? down : 0, kRows - down);
      expectRange(two.rows, farRows ? 0 : down, kRows - down);
    }
  }
}

TEST(HintStrip, BeyondTheImageIsEmpty) {
  for (const int hint : {81, 4000, -4000}) {
    EXPECT_EQ(framequilt::stripOfReference(hint, 0, 60, 80).cols.length(), 0);
    EXPECT_EQ(framequilt::stripOfNewFrame(0, hint, 60, 80).rows.length(), 0);
  }
}

}  // namespace
