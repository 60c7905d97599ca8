// SPDX-License-Identifier: Apache-2.0
// A program that defines an exported function replaces the library's: here the gradients fail.
#include "tests/features/harris_fixture.h"
#include "tests/support/captured_output.h"

bool findGradSquareCrossTerms(unsigned char* /*src*/, int /*rows*/, int /*cols*/, float* /*gx2*/,
                              float* /*gy2*/, float* /*gxy*/) {
  return false;
}

namespace {

TEST_F(HarrisRun, FailedGradientsAreReported) {
  const ScopedValue taps(filter2DKerSize[0],
                         3);  // five are smoothed in one pass with the gradients
  std::vector<unsigned char> gray = patchwork(1, kRows, kCols);
  Points corners;
  EXPECT_EQ(
      standardOutputOf([&] {
        EXPECT_FALSE(findHarrisCornerCoordianteFun1(gray.data(), {0, 1, kRows, kCols}, corners));
      }),
      "findGradSquareCrossTerms failed\n");
  EXPECT_TRUE(corners.empty());
}

}  // namespace
