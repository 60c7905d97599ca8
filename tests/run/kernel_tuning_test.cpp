// SPDX-License-Identifier: Apache-2.0
// The kernels are the host's to set before a start: each has its effect on a run.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>

#include "framequilt/tuning.h"
#include "tests/run/captures.h"
#include "tests/support/scoped_value.h"

namespace {

/// Gives the taps of a kernel other values for one scope.
template <std::size_t N>
class ScopedKernel {
 public:
  ScopedKernel(float (&kernel)[N], const std::array<float, N>& taps) : kernel_(kernel) {
    for (std::size_t i = 0; i < N; ++i) {
      former_[i] = kernel[i];
      kernel[i] = taps[i];
    }
  }
  ~ScopedKernel() {
    for (std::size_t i = 0; i < N; ++i) kernel_[i] = former_[i];
  }
  ScopedKernel(const ScopedKernel&) = delete;
  ScopedKernel& operator=(const ScopedKernel&) = delete;

 private:
  float (&kernel_)[N];
  std::array<float, N> former_;
};

constexpr std::array<float, 5> kZero = {0.0F, 0.0F, 0.0F, 0.0F, 0.0F};
constexpr std::array<float, 5> kIdentity = {0.0F, 0.0F, 1.0F, 0.0F, 0.0F};

FrameOutcome pair(int stitchMode = 1, int staticDynamicFlag = 0) {
  static const Scene scene(560, 700, 1, 11);
  RunSettings settings;
  settings.stitchMode = stitchMode;
  settings.staticDynamicFlag = staticDynamicFlag;
  CaptureRun run(settings);
  return run.first(scene.cut(200, 150, 240, 320), scene.cut(300, 150, 240, 320));
}

/// Another kernel finds other corners, one of zeros none.
void expectToChooseCorners(float (&kernel)[5]) {
  const int usual = pair().flags.matchNum;
  {
    const ScopedKernel<5> identity(kernel, kIdentity);
    EXPECT_NE(pair().flags.matchNum, usual);
  }
  const ScopedKernel<5> zero(kernel, kZero);
  EXPECT_EQ(pair().result, -1);
}

TEST(KernelTuning, SmoothingOfTheReferenceChoosesItsCorners) { expectToChooseCorners(filter2DKer); }

TEST(KernelTuning, SmoothingOfTheNewFrameChoosesItsCorners) { expectToChooseCorners(filter2DKer1); }

TEST(KernelTuning, SmoothingOfTheMotionMeasureDampsIt) {
  // A step of 100 columns moves more than the limit, unless nothing of the gray is left.
  EXPECT_EQ(pair(1, 1).flags.stitch_flags, 0);
  const ScopedKernel<5> kernel(filter2DKerModel, kZero);
  EXPECT_EQ(pair(1, 1).flags.stitch_flags, 1);
}

TEST(KernelTuning, FewerTapsTakeTheFirstOfTheKernel) {
  const int usual = pair().flags.matchNum;
  const ScopedValue<int> taps(filter2DKerSize[0], 3);
  const int three = pair().flags.matchNum;
  EXPECT_NE(three, usual);
  // The last two are not read.
  const ScopedValue<float> last(filter2DKer[4], 100.0F);
  EXPECT_EQ(pair().flags.matchNum, three);
  const ScopedValue<float> first(filter2DKer[0], 0.0F);
  EXPECT_NE(pair().flags.matchNum, three);
}

TEST(KernelTuning, FixedKernelsOfTheOverlapAreNotRead) {
  const stitchflags usual = pair(0).flags;
  const ScopedKernel<9> smooth(filterH2Dker, {});
  const ScopedKernel<9> edges(filterH2DefKer, {});
  const stitchflags changed = pair(0).flags;
  EXPECT_EQ(changed.brightOne, usual.brightOne);
  EXPECT_EQ(changed.definitionTwo, usual.definitionTwo);
  EXPECT_GT(changed.definitionTwo, 0.0F);
}

}  // namespace
