// SPDX-License-Identifier: Apache-2.0
// Once a frame lies in the mosaic its call has nothing more to ask the system for. This program's
// blend is the library's, and arms faults when it is done.
#include <gtest/gtest.h>

#include "cpu/mosaic_blend.h"
#include "framequilt/framequilt.h"
#include "tests/faults/fault_captures.h"
#include "tests/support/fault_points.h"
#include "tests/support/library_definition.h"

namespace {

int blends = 0;

}  // namespace

bool stitchingImageImageblendCpu(cv::Mat mosaic, unsigned char* frame, imgInfo info,
                                 stitchflags flags, SPoint topLeft, SPoint bottomRight,
                                 SPoint ignored, SPoint& topLeftOut, SPoint& bottomRightOut,
                                 SPoint& positionOut, imgInfo& regionInfo, cv::Mat& mosaicOut,
                                 unsigned char* region) {
  static auto* const blend =
      libraryDefinition(&stitchingImageImageblendCpu,
                        "_Z27stitchingImageImageblendCpuN2cv3MatEPh7imgInfo11"
                        "stitchflags6SPointS4_S4_RS4_S5_S5_RS2_RS0_S1_");
  const bool blended = blend(mosaic, frame, info, flags, topLeft, bottomRight, ignored, topLeftOut,
                             bottomRightOut, positionOut, regionInfo, mosaicOut, region);
  ++blends;
  armFaults(1);
  return blended;
}

namespace {

class AfterTheBlend : public testing::TestWithParam<FaultCapture> {};

INSTANTIATE_TEST_SUITE_P(, AfterTheBlend, testing::ValuesIn(allCaptures()),
                         [](const auto& instance) { return instance.param.name; });

TEST_P(AfterTheBlend, NothingCanFail) {
  const RunSettings& settings = GetParam().settings;
  ASSERT_TRUE(initJoint(settings.rows, settings.cols, settings.channels, settings.cornerBudget,
                        settings.maxRow, settings.maxCol, settings.stitchMode, 0));
  Frame reference = GetParam().frames.at(0);
  FrameOutcome outcome;
  for (std::size_t i = 1; i < GetParam().frames.size(); ++i) {
    Frame frame = GetParam().frames[i];
    const int before = blends;
    stichingImagedJoint(i == 1 ? reference.bytes.data() : nullptr, frame.bytes.data(),
                        i == 1 ? 0 : 1, 1, 0, 0, false, outcome.topLeft, outcome.bottomRight,
                        outcome.mosaic, outcome.flags);
    const PassedPoints passed = disarmFaults();
    if (blends > before) {
      EXPECT_EQ(passed.count, 0) << passed.failed;
    }
  }
  EXPECT_GE(blends, 2);
  uinitJoint();
}

}  // namespace
