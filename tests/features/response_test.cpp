// SPDX-License-Identifier: Apache-2.0
// The corner response rounds after every step, whatever the compiler would rather do.
#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "features/harris.h"
#include "tests/support/random_images.h"

namespace {

using Floats = std::vector<float>;

/// A value that is really stored in single precision before it is used again.
float rounded(float value) {
  volatile float stored = value;
  return stored;
}

float slowResponse(float a, float b, float x, float k) {
  const float determinant = rounded(rounded(a * b) - rounded(x * x));
  const float trace = rounded(a + b);
  return rounded(determinant - rounded(rounded(trace * k) * trace));
}

Floats fractions(std::size_t count, Random& random) {
  Floats values(count);
  for (float& value : values) value = static_cast<float>(random.between(0, 1 << 24)) / 4099.0F;
  return values;
}

TEST(HarrisResponse, EachStepIsRoundedAtEveryWidth) {
  Random random(31);
  for (int cols = 41; cols < 41 + 36; ++cols) {
    SCOPED_TRACE(cols);
    const int rows = random.between(41, 47);
    const std::size_t pixels = static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols);
    Floats a = fractions(pixels, random);
    Floats b = fractions(pixels, random);
    Floats x = fractions(pixels, random);
    Floats response(pixels, -7.0F);
    float mean = 0.0F;
    float sum = 0.5F;
    ASSERT_TRUE(calcResponseValue(a.data(), b.data(), x.data(), 0.04F, rows, cols, response.data(),
                                  mean, sum));

    float expectedSum = 0.5F;
    for (int r = 20; r < rows - 20; ++r) {
      for (int c = 20; c < cols - 20; ++c) {
        const auto i = static_cast<std::size_t>(r * cols + c);
        const float expected = slowResponse(a[i], b[i], x[i], 0.04F);
        if (expected > 0.0F) expectedSum = rounded(expectedSum + expected);
        ASSERT_EQ(response[i], expected > 0.0F ? expected : -7.0F);
      }
    }
    EXPECT_EQ(sum, expectedSum);
    EXPECT_EQ(mean, rounded(expectedSum / static_cast<float>(rows * cols)));
  }
}

}  // namespace
