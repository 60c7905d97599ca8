// SPDX-License-Identifier: Apache-2.0
// The response in one pass against its steps.
#include "features/harris_rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

#include "features/harris.h"
#include "imaging/filter.h"
#include "tests/support/each_level.h"
#include "tests/support/guarded.h"
#include "tests/support/random_images.h"

namespace {

struct Response {
  Floats plane;
  float sum = 0.0F;
};

/// Gradients, two passes of smoothing over padded planes, response: the exported steps.
Response stepByStep(Bytes gray, int rows, int cols, const Floats& kernel, float k) {
  const auto pixels = static_cast<std::size_t>(rows * cols);
  const auto padded = static_cast<std::size_t>((rows + 4) * (cols + 4));
  Floats weights = kernel;
  Floats xx(pixels), yy(pixels), xy(pixels);
  EXPECT_TRUE(findGradSquareCrossTerms(gray.data(), rows, cols, xx.data(), yy.data(), xy.data()));
  for (Floats* plane : {&xx, &yy, &xy}) {
    Floats one(padded), two(padded);
    opencvcopyFilter2DBorderCh1(plane->data(), rows, cols, 2, one.data(), two.data());
    opencvFilter2DRowCalcCh1(two.data(), weights.data(), rows + 4, cols + 4, 5, one.data());
    opencvFilter2DColCalcCh1(one.data(), weights.data(), rows + 4, cols + 4, 5, two.data());
    opencvcopyFilter2DTakeOutBoundCh1(two.data(), rows + 4, cols + 4, 2, plane->data());
  }
  Response response = {Floats(pixels), 0.0F};
  float mean = 0.0F;
  EXPECT_TRUE(calcResponseValue(xx.data(), yy.data(), xy.data(), k, rows, cols,
                                response.plane.data(), mean, response.sum));
  return response;
}

void expectSteps(const Bytes& gray, int rows, int cols, const Floats& kernel, float k) {
  const Response expected = stepByStep(gray, rows, cols, kernel, k);
  atEachLevel([&] {
    GuardedFloats plane(gray.size());  // holds something else before
    EXPECT_EQ(framequilt::harrisResponse(gray.data(), rows, cols, {kernel.data(), k}, plane.data()),
              expected.sum);
    EXPECT_EQ(plane.values(), expected.plane);
    EXPECT_TRUE(plane.intact());
  });
}

const Floats kUsual = {0.187627F, 0.206068F, 0.212609F, 0.206068F, 0.187627F};

std::size_t area(int rows, int cols) { return static_cast<std::size_t>(rows * cols); }

TEST(HarrisRows, EqualTheStepsAtEveryWidth) {
  Random random(501);
  int responses = 0;
  for (int cols = 1; cols <= 112; ++cols) {
    const int rows = random.between(38, 60);
    SCOPED_TRACE(testing::Message() << "seed 501: " << rows << " x " << cols);
    const Bytes gray = random.bytes(area(rows, cols));
    expectSteps(gray, rows, cols, kUsual, 0.007F);
    if (rows > 40 && cols > 40) ++responses;
    if (HasFailure()) return;
  }
  EXPECT_GT(responses, 40);
}

TEST(HarrisRows, EqualTheStepsAtEveryHeight) {
  Random random(502);
  for (int rows = 1; rows <= 60; ++rows) {
    SCOPED_TRACE(testing::Message() << "seed 502: " << rows << " rows");
    expectSteps(random.bytes(area(rows, 47)), rows, 47, kUsual, 0.007F);
  }
}

TEST(HarrisRows, EqualTheStepsOnAUsualImage) {
  Random random(503);
  constexpr int kRows = 240;
  constexpr int kCols = 320;
  Bytes smooth = random.bytes(area(kRows, kCols));
  for (std::size_t i = 1; i < smooth.size(); ++i) {
    smooth[i] = static_cast<unsigned char>((3 * smooth[i - 1] + smooth[i]) / 4);
  }
  Bytes sparse(area(kRows, kCols), 90);
  for (int i = 0; i < 200; ++i) {
    sparse[random.next() % sparse.size()] = static_cast<unsigned char>(random.between(0, 255));
  }
  Bytes extremes = random.bytes(area(kRows, kCols));
  for (unsigned char& value : extremes) value = value < 128 ? 0 : 255;
  for (const Bytes& gray : {smooth, sparse, extremes, Bytes(area(kRows, kCols), 7)}) {
    expectSteps(gray, kRows, kCols, kUsual, 0.007F);
  }
}

TEST(HarrisRows, TuningIsRead) {
  Random random(504);
  const Bytes gray = random.bytes(area(60, 70));
  for (const Floats& kernel :
       {Floats{1.0F, 0.0F, 0.0F, 0.0F, 0.0F}, Floats{0.0F, 0.0F, 0.0F, 0.0F, 3.5F},
        Floats{-0.3F, 0.7F, 0.1F, -0.9F, 0.2F}, Floats(5, 0.0F), Floats(5, 1.0e10F),
        Floats{0.1F, std::numeric_limits<float>::infinity(), 0.1F, 0.1F, 0.1F}}) {
    for (const float k : {0.007F, 0.04F, 0.0F, -1.0F, 100.0F}) {
      SCOPED_TRACE(testing::Message() << kernel[0] << ' ' << kernel[1] << ", k " << k);
      expectSteps(gray, 60, 70, kernel, k);
    }
  }
}

}  // namespace
