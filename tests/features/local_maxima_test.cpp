// SPDX-License-Identifier: Apache-2.0
#include "features/local_maxima.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "features/selection.h"
#include "tests/support/each_level.h"
#include "tests/support/guarded.h"
#include "tests/support/points.h"
#include "tests/support/random_images.h"

namespace {

constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// The definition, a pixel at a time.
bool isMaximum(const float* pixel, int cols, float threshold) {
  float maximum = *pixel;
  for (const float* row : {pixel - cols, pixel, pixel + cols}) {
    maximum = std::max({maximum, row[-1], row[0], row[1]});
  }
  return maximum > threshold && maximum == *pixel;
}

/// A plane in memory of its exact size, so that reads outside show under address checks.
struct Plane {
  int rows, cols;
  std::vector<float> values;

  Plane(int r, int c) : rows(r), cols(c), values(static_cast<std::size_t>(r * c)) {}

  void fill(Random& random, const std::vector<float>& from) {
    for (float& value : values) {
      value = from[static_cast<std::size_t>(random.between(0, static_cast<int>(from.size()) - 1))];
    }
  }

  const float* at(int r, int c) const { return values.data() + r * cols + c; }
};

/// Compares the row between the first and the last of a plane of three, and returns its maxima.
int expectRowLikeDefinition(const Plane& plane, float threshold) {
  const int count = plane.cols - 2;
  Bytes expected;
  for (int c = 0; c < count; ++c) {
    expected.push_back(isMaximum(plane.at(1, c + 1), plane.cols, threshold) ? 1 : 0);
  }
  atEachLevel([&] {
    GuardedBytes marks(expected.size());
    framequilt::markLocalMaxima(plane.at(1, 1), plane.cols, count, threshold, marks.data());
    EXPECT_EQ(marks.values(), expected);
    EXPECT_TRUE(marks.intact());
  });
  return static_cast<int>(std::count(expected.begin(), expected.end(), 1));
}

TEST(LocalMaximaOfARow, EveryWidthIsLikeTheDefinition) {
  int found = 0;
  for (int count = 0; count <= 70; ++count) {
    SCOPED_TRACE(count);
    Random random(static_cast<unsigned>(count) + 1);
    Plane plane(3, count + 2);
    plane.fill(random, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    found += expectRowLikeDefinition(plane, 5.0F);
  }
  EXPECT_GT(found, 300);
}

TEST(LocalMaximaOfARow, WideRowsAreLikeTheDefinition) {
  for (const int count : {1023, 1024, 1025, 2048, 2051, 5000}) {
    SCOPED_TRACE(count);
    Random random(static_cast<unsigned>(count));
    Plane plane(3, count + 2);
    plane.fill(random, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    EXPECT_GT(expectRowLikeDefinition(plane, 4.0F), 100);
  }
}

TEST(LocalMaximaOfARow, OddNumbersAreLikeTheDefinition) {
  // What is no number, endless or a zero with a sign, everywhere in the neighbourhood.
  const std::vector<float> odd = {kNone, -kInfinity, kInfinity, -0.0F, 0.0F, -1.0F, 1e-45F};
  int found = 0;
  for (unsigned seed = 1; seed <= 30; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    Plane plane(3, 90);
    plane.fill(random, odd);
    for (const float threshold : {-kInfinity, -2.0F, -0.0F, 0.0F, 3.0F, kInfinity, kNone}) {
      SCOPED_TRACE(threshold);
      found += expectRowLikeDefinition(plane, threshold);
    }
  }
  EXPECT_GT(found, 1000);
}

TEST(LocalMaximaOfARow, EachNeighbourCounts) {
  for (int place = 0; place < 9; ++place) {
    for (const float value : {4.0F, 5.0F, 6.0F, kNone}) {
      Plane plane(3, 3);
      plane.values[4] = 5.0F;
      plane.values[static_cast<std::size_t>(place)] = value;
      expectRowLikeDefinition(plane, 1.0F);
    }
  }
}

TEST(LocalMaximaOfAPlane, AreThoseOfTheDefinitionInRasterOrder) {
  std::size_t found = 0;
  for (unsigned seed = 1; seed <= 8; ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    Plane plane(random.between(39, 90), random.between(39, 140));
    plane.fill(random, {0, 1, 2, 3, 4, 5, 6, 7, 8, kNone});
    std::vector<float> expectedValues;
    Points expected;
    for (int r = 20; r < plane.rows - 20; ++r) {
      for (int c = 20; c < plane.cols - 20; ++c) {
        if (!isMaximum(plane.at(r, c), plane.cols, 3.0F)) continue;
        expectedValues.push_back(*plane.at(r, c));
        expected.push_back({c, r});
      }
    }
    found += expected.size();
    atEachLevel([&] {
      std::vector<float> values;
      Points points;
      EXPECT_TRUE(responseValueMaxSuppression(plane.values.data(), 3.0F, plane.rows, plane.cols,
                                              values, points));
      EXPECT_EQ(values, expectedValues);
      EXPECT_EQ(points, expected);
    });
  }
  EXPECT_GT(found, 100U);
}

}  // namespace
