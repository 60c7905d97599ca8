// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "cpu/corner_worker.h"
#include "features/harris.h"
#include "tests/cpu/run_fixture.h"
#include "tests/support/recorded_reports.h"

namespace {

struct Strip {
  int row0, row1, col0, col1;
  int shiftX, shiftY;
};

/// What of an image of R x C pixels a hint leaves to search, for each of the two images.
Strip stripOne(int dx, int dy, int R, int C) {
  if (dx >= 0 && dy >= 0) return {dy, R, dx, C, dx, dy};
  if (dx >= 0 && dy < 0) return {0, R + dy, dx, C, dx, 0};
  if (dx < 0 && dy >= 0) return {0, R - dy, 0, C + dx, 0, 0};
  return {-dy, R, 0, C + dx, 0, -dy};
}

Strip stripTwo(int dx, int dy, int R, int C) {
  if (dx >= 0 && dy >= 0) return {0, R - dy, 0, C - dx, 0, 0};
  if (dx >= 0 && dy < 0) return {-dy, R, 0, C - dx, 0, -dy};
  if (dx < 0 && dy >= 0) return {dy, R, -dx, C, -dx, dy};
  return {0, R + dy, -dx, C, -dx, 0};
}

/// One of the two images of a pair, and the routines that search it.
struct Side {
  bool (*range)(int, int, unsigned char*, int, int, Points&);
  bool (*harris)(unsigned char*, imgInfo, Points&);
  Strip (*strip)(int, int, int, int);
  unsigned char*& buffer;
};

const Side kSides[] = {
    {getRangeCpuOne, findHarrisCornerCoordianteFun1, stripOne, SorTempGrayImage},
    {getRangeCpuTwo, findHarrisCornerCoordianteFun2, stripTwo, DestTempGrayImage},
};

class CornerStrip : public RunForPairs {
 protected:
  void SetUp() override {
    RunForPairs::SetUp();
    for (const Side& side : kSides) side.buffer = fresh<unsigned char>(area(kRows, kCols), 99);
  }

  void TearDown() override {
    for (const Side& side : kSides) {
      delete[] side.buffer;
      side.buffer = nullptr;
    }
    RunForPairs::TearDown();
  }

  Points hinted(const Side& side, int dx, int dy) {
    Points corners;
    EXPECT_TRUE(side.range(dx, dy, gray_.data(), kRows, kCols, corners));
    return corners;
  }

  Points cutByHand(const Side& side, const Strip& strip) {
    Bytes cut;
    for (int r = strip.row0; r < strip.row1; ++r) {
      for (int c = strip.col0; c < strip.col1; ++c)
        cut.push_back(gray_[area(r, kCols) + area(1, c)]);
    }
    Points corners;
    side.harris(cut.data(), {0, 1, strip.row1 - strip.row0, strip.col1 - strip.col0}, corners);
    for (SPoint& corner : corners) corner = {corner.x + strip.shiftX, corner.y + strip.shiftY};
    return corners;
  }

  Bytes gray_ = texture(kRows, kCols, 1);
};

TEST_F(CornerStrip, EachSignPairSearchesItsOwnStrip) {
  for (const auto& [dx, dy] : std::vector<SPoint>{{24, 16},
                                                  {24, -16},
                                                  {-24, 16},
                                                  {-24, -16},
                                                  {0, 30},
                                                  {0, -30},
                                                  {30, 0},
                                                  {-30, 0},
                                                  {13, 7},
                                                  {13, -7},
                                                  {-13, 7},
                                                  {-13, -7},
                                                  {1, 1},
                                                  {-1, -1}}) {
    for (const Side& side : kSides) {
      SCOPED_TRACE(testing::Message() << "hint " << dx << ", " << dy << " side " << &side - kSides);
      const Points expected = cutByHand(side, side.strip(dx, dy, kRows, kCols));
      ASSERT_GE(expected.size(), 20U);
      EXPECT_EQ(hinted(side, dx, dy), expected);
    }
  }
}

TEST_F(CornerStrip, ZeroHintSearchesTheWholeImage) {
  for (const Side& side : kSides) {
    Points whole;
    ASSERT_TRUE(side.harris(gray_.data(), {0, 1, kRows, kCols}, whole));
    EXPECT_EQ(hinted(side, 0, 0), whole);
  }
}

/// Corners of a strip of full width lie where the corners of the image are.
TEST_F(CornerStrip, CornersAreInPixelsOfTheWholeImage) {
  std::fill(gray_.begin(), gray_.end(), static_cast<unsigned char>(20));
  for (int r = 90; r < 102; ++r) {
    for (int c = 80; c < 92; ++c) gray_[area(r, kCols) + area(1, c)] = 220;
  }
  const auto expectAround = [](const Points& corners) {
    EXPECT_FALSE(corners.empty());
    for (const SPoint corner : corners) {
      EXPECT_NEAR(corner.x, 86, 12);
      EXPECT_NEAR(corner.y, 96, 12);
    }
  };
  expectAround(hinted(kSides[0], 0, 0));
  expectAround(hinted(kSides[0], 0, 30));
  expectAround(hinted(kSides[1], 0, -30));
}

const std::vector<SPoint> kBeyond = {
    {180, 0},     {-180, 0},          {0, 150},           {0, -150},          {181, 4},
    {-500, 151},  {0, 10000},         {INT_MAX, 0},       {INT_MIN, 0},       {0, INT_MAX},
    {0, INT_MIN}, {INT_MIN, INT_MIN}, {INT_MAX, INT_MIN}, {INT_MIN, INT_MAX}, {-3, INT_MIN},
};

TEST_F(CornerStrip, HintBeyondTheFrameLeavesNothingToSearch) {
  const Lines nothing = {"goToGetRidOfSomeSPoints CornervalueIn size is 0",
                         "goToGetRidOfSomeSPoints CornervalueIn size is 0",
                         "HarrissCornerSPoint size is 0"};
  for (const auto& [dx, dy] : kBeyond) {
    for (const Side& side : kSides) {
      SCOPED_TRACE(testing::Message() << "hint " << dx << ", " << dy << " side " << &side - kSides);
      const RecordedReports reports;
      EXPECT_EQ(hinted(side, dx, dy), Points{});
      EXPECT_EQ(reports.ofCaller(), nothing);
    }
  }
}

TEST_F(CornerStrip, FailedCutIsNotCheckedButSeenByTheSearch) {
  for (const Side& side : kSides) {
    delete[] side.buffer;
    side.buffer = nullptr;
    const RecordedReports reports;
    EXPECT_EQ(hinted(side, 10, 10), Points{});
    EXPECT_EQ(reports.ofCaller(), (Lines{"ptr is null or endBigRow \xA1\xA2"
                                         "endBigCol overSize",
                                         "findHarrisCornerCoordianteFun ptr is null"}));
  }
}

}  // namespace
