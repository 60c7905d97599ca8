// SPDX-License-Identifier: Apache-2.0
#include "features/selection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <stdexcept>
#include <vector>

#include "tests/support/captured_output.h"
#include "tests/support/points.h"
#include "tests/support/random_images.h"

namespace {

using Values = std::vector<float>;

constexpr char kEmptyLine[] = "goToGetRidOfSomeSPoints CornervalueIn size is 0\n";

struct Candidates {
  Values values;
  Points points;
};

struct Plane {
  int rows, cols;
  Values values;

  Plane(int r, int c) : rows(r), cols(c), values(static_cast<std::size_t>(r * c)) {}
  float& at(int r, int c) { return values[static_cast<std::size_t>(r * cols + c)]; }

  Candidates maximaAbove(float threshold) {
    Candidates found;
    EXPECT_TRUE(responseValueMaxSuppression(values.data(), threshold, rows, cols, found.values,
                                            found.points));
    return found;
  }
};

TEST(LocalMaxima, NullPlaneIsRefusedWithItsLine) {
  Candidates found;
  EXPECT_EQ(
      standardOutputOf([&] {
        EXPECT_FALSE(responseValueMaxSuppression(nullptr, 0, 50, 50, found.values, found.points));
      }),
      "responseValueMaxSuppression ptr is null\n");
}

TEST(LocalMaxima, PlaneBelow41RowsOrColumnsHasNone) {
  for (const auto& [rows, cols] : {std::pair{40, 60}, std::pair{60, 40}, std::pair{1, 1}}) {
    Plane plane(rows, cols);
    std::fill(plane.values.begin(), plane.values.end(), 5.0F);
    EXPECT_TRUE(plane.maximaAbove(1.0F).values.empty());
  }
  Plane plane(41, 41);
  plane.at(20, 20) = 5.0F;
  EXPECT_EQ(plane.maximaAbove(1.0F).points, (Points{{20, 20}}));
}

TEST(LocalMaxima, LieTwentyPixelsInside) {
  Plane plane(60, 70);
  for (const auto& [r, c] :
       {std::pair{19, 30}, std::pair{40, 30}, std::pair{30, 19}, std::pair{30, 50}}) {
    plane.at(r, c) = 9.0F;
  }
  EXPECT_TRUE(plane.maximaAbove(1.0F).points.empty());
  plane.at(20, 20) = 9.0F;
  plane.at(39, 49) = 8.0F;
  const Candidates found = plane.maximaAbove(1.0F);
  EXPECT_EQ(found.points, (Points{{20, 20}, {49, 39}}));
  EXPECT_EQ(found.values, (Values{9.0F, 8.0F}));
}

TEST(LocalMaxima, NeighboursOutsideTheBandStillCount) {
  Plane plane(60, 60);
  plane.at(20, 25) = 5.0F;
  plane.at(19, 26) = 6.0F;
  EXPECT_TRUE(plane.maximaAbove(1.0F).points.empty());
}

TEST(LocalMaxima, ThresholdIsStrict) {
  Plane plane(60, 60);
  plane.at(30, 30) = 5.0F;
  EXPECT_TRUE(plane.maximaAbove(5.0F).points.empty());
  EXPECT_EQ(plane.maximaAbove(4.999F).points.size(), 1U);
}

TEST(LocalMaxima, MayBeNegative) {
  Plane plane(60, 60);
  std::fill(plane.values.begin(), plane.values.end(), -9.0F);
  plane.at(30, 35) = -2.0F;
  EXPECT_EQ(plane.maximaAbove(-5.0F).points, (Points{{35, 30}}));
}

TEST(LocalMaxima, AreAppended) {
  Plane plane(41, 41);
  plane.at(20, 20) = 5.0F;
  Candidates found{{1.0F}, {{2, 3}}};
  EXPECT_TRUE(
      responseValueMaxSuppression(plane.values.data(), 0.0F, 41, 41, found.values, found.points));
  EXPECT_EQ(found.values, (Values{1.0F, 5.0F}));
  EXPECT_EQ(found.points, (Points{{2, 3}, {20, 20}}));
}

TEST(LocalMaxima, PlateauGivesEachOfItsPixels) {
  Plane plane(60, 60);
  plane.at(30, 30) = 5.0F;
  plane.at(30, 31) = 5.0F;
  EXPECT_EQ(plane.maximaAbove(1.0F).points, (Points{{30, 30}, {31, 30}}));
}

TEST(LocalMaxima, EqualASlowSearchOnRandomPlanes) {
  for (unsigned seed = 1; seed <= 10; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    Plane plane(random.between(41, 70), random.between(41, 70));
    for (float& value : plane.values) value = static_cast<float>(random.between(0, 12));
    Points expected;
    for (int r = 20; r <= plane.rows - 21; ++r) {
      for (int c = 20; c <= plane.cols - 21; ++c) {
        bool isMaximum = plane.at(r, c) > 6.0F;
        for (int n = 0; n < 9; ++n) {
          isMaximum = isMaximum && plane.at(r - 1 + n / 3, c - 1 + n % 3) <= plane.at(r, c);
        }
        if (isMaximum) expected.push_back({c, r});
      }
    }
    EXPECT_EQ(plane.maximaAbove(6.0F).points, expected);
  }
}

TEST(FirstCut, EmptyListIsRefusedWithItsLine) {
  Candidates none;
  int count = 77;
  EXPECT_EQ(
      standardOutputOf([&] {
        EXPECT_FALSE(goToFirstGetRidOfSomeSPoints(none.values, none.points, 5, 5, 1, 1, count));
      }),
      kEmptyLine);
  EXPECT_EQ(count, 77);
  Candidates noPoints{{1.0F}, {}};
  Candidates noValues{{}, {{1, 2}}};
  for (Candidates* half : {&noPoints, &noValues}) {
    EXPECT_EQ(
        standardOutputOf([&] {
          EXPECT_FALSE(goToFirstGetRidOfSomeSPoints(half->values, half->points, 5, 5, 1, 1, count));
        }),
        kEmptyLine);
  }
  EXPECT_EQ(count, 77);
  EXPECT_EQ(noPoints.values, (Values{1.0F}));
  EXPECT_EQ(noValues.points, (Points{{1, 2}}));
}

TEST(FirstCut, PlaneTooSmallForMaximaEndsWithTheLine) {
  Plane plane(40, 80);
  std::fill(plane.values.begin(), plane.values.end(), 3.0F);
  Candidates found = plane.maximaAbove(1.0F);
  int count = 0;
  EXPECT_EQ(
      standardOutputOf([&] {
        EXPECT_FALSE(goToFirstGetRidOfSomeSPoints(found.values, found.points, 5, 5, 1, 1, count));
      }),
      kEmptyLine);
}

TEST(FirstCut, UpToTheCapOnlyTheCountIsSet) {
  Candidates list{{1, 3, 2}, {{1, 1}, {3, 3}, {2, 2}}};
  int count = 0;
  EXPECT_TRUE(goToFirstGetRidOfSomeSPoints(list.values, list.points, 2, 3, 1, 1, count));
  EXPECT_EQ(count, 2);
  EXPECT_EQ(list.values, (Values{1, 3, 2}));
  EXPECT_TRUE(goToFirstGetRidOfSomeSPoints(list.values, list.points, 9, 3, 1, 1, count));
  EXPECT_EQ(count, 3);
}

TEST(FirstCut, KeepsTheStrongestStrongestFirst) {
  Candidates list{{1, 3, 2, 5}, {{1, 0}, {3, 0}, {2, 0}, {5, 0}}};
  int count = 0;
  EXPECT_TRUE(goToFirstGetRidOfSomeSPoints(list.values, list.points, 2, 3, 1, 1, count));
  EXPECT_EQ(list.values, (Values{5, 3, 2}));
  EXPECT_EQ(list.points, (Points{{5, 0}, {3, 0}, {2, 0}}));
}

TEST(FirstCut, EqualOnesComeInTheOrderOfTheQuicksort) {
  // The first key, the smallest, trades places with the last: a stable sort would keep (2, 0)
  // first.
  Candidates list{{1, 5, 5}, {{1, 0}, {2, 0}, {3, 0}}};
  int count = 0;
  EXPECT_TRUE(goToFirstGetRidOfSomeSPoints(list.values, list.points, 2, 2, 1, 1, count));
  EXPECT_EQ(list.points, (Points{{3, 0}, {2, 0}}));
}

TEST(FirstCut, ScaleAndBudgetParameterAreNotRead) {
  Candidates list{{1, 3, 2, 5}, {{1, 0}, {3, 0}, {2, 0}, {5, 0}}};
  int count = 0;
  EXPECT_TRUE(goToFirstGetRidOfSomeSPoints(list.values, list.points, 2, 3, 0, -9, count));
  EXPECT_EQ(count, 2);
  EXPECT_EQ(list.points, (Points{{5, 0}, {3, 0}, {2, 0}}));
}

TEST(FirstCut, CountIsTakenBeforeTheCut) {
  Candidates list{{1, 3, 2, 5}, {{1, 0}, {3, 0}, {2, 0}, {5, 0}}};
  int count = 0;
  EXPECT_TRUE(goToFirstGetRidOfSomeSPoints(list.values, list.points, 9, 2, 1, 1, count));
  EXPECT_EQ(count, 4) << "more than the two that are left";
  Points out;
  EXPECT_TRUE(goToSecondGetRidOfSomeSPoints(list.values, list.points, count, 2, 0.5F, out));
  EXPECT_EQ(out, (Points{{5, 0}, {3, 0}})) << "all of them, not scaled";
}

TEST(FirstCut, CapOfZeroOrLessEmptiesBothLists) {
  for (const int cap : {0, -700}) {
    Candidates list{{1, 3}, {{1, 0}, {3, 0}}};
    int count = 0;
    EXPECT_FALSE(goToFirstGetRidOfSomeSPoints(list.values, list.points, -100, cap, 1, 1, count));
    EXPECT_EQ(count, -100);
    EXPECT_TRUE(list.values.empty());
    EXPECT_TRUE(list.points.empty());
  }
}

TEST(SecondCut, EmptyListIsRefusedWithItsLine) {
  Points out = {{4, 4}};
  for (const Candidates& list : {Candidates{}, Candidates{{1.0F}, {}}, Candidates{{}, {{1, 2}}}}) {
    EXPECT_EQ(
        standardOutputOf([&] {
          EXPECT_FALSE(goToSecondGetRidOfSomeSPoints(list.values, list.points, 1, 2, 0.5F, out));
        }),
        kEmptyLine);
  }
  EXPECT_EQ(out, (Points{{4, 4}}));
}

TEST(SecondCut, FewerThanWantedAreCopiedUnscaled) {
  Points out = {{4, 4}};
  EXPECT_TRUE(goToSecondGetRidOfSomeSPoints({1, 2}, {{7, 9}, {11, 13}}, 3, 2, 0.5F, out));
  EXPECT_EQ(out, (Points{{7, 9}, {11, 13}}));
}

TEST(SecondCut, CoordinatesAreMultipliedByTheFactor) {
  Points out;
  EXPECT_TRUE(goToSecondGetRidOfSomeSPoints({1, 2}, {{7, 9}, {11, 13}}, 2, 2, 0.5F, out));
  EXPECT_EQ(out, (Points{{14, 18}, {22, 26}}));
  Points unscaled;
  EXPECT_TRUE(goToSecondGetRidOfSomeSPoints({1, 2}, {{7, 9}, {11, 13}}, 2, 1, 0.5F, unscaled));
  EXPECT_EQ(unscaled, (Points{{7, 9}, {11, 13}}));
}

TEST(SecondCut, PrefersPointsFarFromClearlyStrongerOnes) {
  // 100 is strongest; 10 beside it is suppressed at distance 1, 9 far away at distance 50.
  const Values values = {10, 100, 9};
  const Points points = {{101, 100}, {100, 100}, {150, 100}};
  Points out;
  EXPECT_TRUE(goToSecondGetRidOfSomeSPoints(values, points, 2, 1, 0.5F, out));
  EXPECT_EQ(out, (Points{{100, 100}, {150, 100}}));
}

TEST(SecondCut, ClearlyStrongerMeansMoreThanTwice) {
  // 6 * 0.5 > 3 does not hold, so nothing suppresses the first point; its radius stays the cap
  // and the sort leaves the two where they are.
  Points out;
  EXPECT_TRUE(goToSecondGetRidOfSomeSPoints({3, 6}, {{10, 10}, {11, 10}}, 1, 1, 0.5F, out));
  EXPECT_EQ(out, (Points{{10, 10}}));
  Points suppressed;
  EXPECT_TRUE(goToSecondGetRidOfSomeSPoints({3, 7}, {{10, 10}, {11, 10}}, 1, 1, 0.5F, suppressed));
  EXPECT_EQ(suppressed, (Points{{11, 10}}));
}

TEST(SecondCut, RadiusIsCappedAt65535) {
  // 256 pixels away is 65536 and counts as 65535, as much as a strong point has: a tie, and the
  // sort leaves equal radii in list order.
  Points out;
  EXPECT_TRUE(goToSecondGetRidOfSomeSPoints({1, 100}, {{0, 0}, {256, 0}}, 1, 1, 0.5F, out));
  EXPECT_EQ(out, (Points{{0, 0}}));
  Points nearer;
  EXPECT_TRUE(goToSecondGetRidOfSomeSPoints({1, 100}, {{0, 0}, {255, 0}}, 1, 1, 0.5F, nearer));
  EXPECT_EQ(nearer, (Points{{255, 0}}));
}

TEST(SecondCut, AmongStrongPointsTheSortAloneDecides) {
  const Values values = {60, 100, 80, 90};
  const Points points = {{0, 0}, {1, 0}, {2, 0}, {3, 0}};
  Points out;
  EXPECT_TRUE(goToSecondGetRidOfSomeSPoints(values, points, 2, 1, 0.5F, out));
  EXPECT_EQ(out, (Points{{0, 0}, {1, 0}}));
}

TEST(SecondCut, EqualRadiiComeInTheOrderOfTheQuicksort) {
  // Radii 1, 65535, 65535: the first trades places with the last.
  Points out;
  EXPECT_TRUE(
      goToSecondGetRidOfSomeSPoints({1, 100, 90}, {{0, 0}, {1, 0}, {9, 0}}, 2, 1, 0.5F, out));
  EXPECT_EQ(out, (Points{{9, 0}, {1, 0}}));
}

TEST(SecondCut, SquaredDistancesWrapAt32Bits) {
  // 46341 squared is 2^31 and a little: a negative radius, behind that of the strong point.
  Points out;
  EXPECT_TRUE(goToSecondGetRidOfSomeSPoints({1, 100}, {{0, 0}, {46341, 0}}, 1, 1, 0.5F, out));
  EXPECT_EQ(out, (Points{{46341, 0}}));
}

TEST(SecondCut, NothingWantedGivesNothing) {
  for (const int count : {0, -5}) {
    Points out;
    EXPECT_FALSE(goToSecondGetRidOfSomeSPoints({1, 2}, {{1, 1}, {2, 2}}, count, 2, 0.5F, out));
    EXPECT_TRUE(out.empty());
  }
}

TEST(SecondCut, MorePointsThanValuesThrow) {
  Points out;
  EXPECT_THROW(goToSecondGetRidOfSomeSPoints({1}, {{1, 1}, {2, 2}}, 1, 1, 0.5F, out),
               std::out_of_range);
}

TEST(SecondCut, EntriesAreScaledByPlaceWhenTheListWasNotEmpty) {
  Points out = {{1, 1}};
  EXPECT_TRUE(goToSecondGetRidOfSomeSPoints({5, 4}, {{7, 9}, {8, 8}}, 2, 3, 0.5F, out));
  EXPECT_EQ(out, (Points{{3, 3}, {21, 27}, {8, 8}}));
}

TEST(SecondCut, EqualsASlowSpreadingOnRandomCandidates) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    const int n = random.between(2, 120);
    Values values;
    Points points;
    for (int k = 0; k < n; ++k) {
      values.push_back(static_cast<float>(random.between(1, 50)));
      points.push_back({random.between(20, 400), random.between(20, 400)});
    }
    const float strongest = *std::max_element(values.begin(), values.end());
    const float robust = seed % 3 == 0 ? 0.9F : seed % 3 == 1 ? 0.5F : 0.3F;
    Values radii;
    for (int i = 0; i < n; ++i) {
      const auto a = static_cast<std::size_t>(i);
      float radius = 65535.0F;
      for (std::size_t b = 0; b < values.size() && values[a] <= strongest * robust; ++b) {
        if (values[b] * robust > values[a]) {
          const int dx = points[a].x - points[b].x;
          const int dy = points[a].y - points[b].y;
          radius = std::min(radius, static_cast<float>(dx * dx + dy * dy));
        }
      }
      radii.push_back(radius);
    }
    std::vector<int> order(values.size());
    for (int k = 0; k < n; ++k) order[static_cast<std::size_t>(k)] = k;
    qsort(radii, order, 0, n - 1);
    const int wanted = random.between(1, n);
    Points expected;
    for (int k = 0; k < wanted; ++k) {
      const SPoint p = points[static_cast<std::size_t>(order[static_cast<std::size_t>(k)])];
      expected.push_back({p.x * 2, p.y * 2});
    }
    Points out;
    EXPECT_TRUE(goToSecondGetRidOfSomeSPoints(values, points, wanted, 2, robust, out));
    EXPECT_EQ(out, expected);
  }
}

TEST(Maximum, IsNeverBelowZero) {
  float maximum = -1.0F;
  EXPECT_TRUE(fidMax({-3, -7}, maximum));
  EXPECT_EQ(maximum, 0.0F);
  EXPECT_TRUE(fidMax({1, 9, 4}, maximum));
  EXPECT_EQ(maximum, 9.0F);
}

TEST(Maximum, EmptyListIsRefusedWithItsLine) {
  float maximum = 5.0F;
  EXPECT_EQ(standardOutputOf([&] { EXPECT_FALSE(fidMax({}, maximum)); }),
            "CornervalueIn size is 0\n");
  EXPECT_EQ(maximum, 5.0F);
}

}  // namespace
