// SPDX-License-Identifier: Apache-2.0
// Stages of the engine that run out of memory half-way through a frame. This program puts such
// stages in front of the library's.
#include <gtest/gtest.h>

#include <new>
#include <opencv2/core.hpp>

#include "cpu/mosaic_blend.h"
#include "framequilt/session.h"
#include "imaging/overlap.h"
#include "tests/support/library_definition.h"
#include "tests/support/recorded_reports.h"
#include "tests/support/scene.h"
#include "tests/support/session_frames.h"
#include "tests/support/thrown_error.h"

using framequilt::Criterion;
using framequilt::ErrorCode;
using framequilt::FrameResult;
using framequilt::Session;
using framequilt::SessionOptions;
using framequilt::Verdict;

namespace {

bool fusionFails = false;
bool measureFails = false;

}  // namespace

bool stitchingImageImageblendCpu(cv::Mat mosaic, unsigned char* frame, imgInfo info,
                                 stitchflags flags, SPoint topLeft, SPoint bottomRight,
                                 SPoint ignored, SPoint& topLeftOut, SPoint& bottomRightOut,
                                 SPoint& positionOut, imgInfo& regionInfo, cv::Mat& mosaicOut,
                                 unsigned char* region) {
  if (fusionFails) throw std::bad_alloc();
  static auto* const blend =
      libraryDefinition(&stitchingImageImageblendCpu,
                        "_Z27stitchingImageImageblendCpuN2cv3MatEPh7imgInfo11"
                        "stitchflags6SPointS4_S4_RS4_S5_S5_RS2_RS0_S1_");
  return blend(mosaic, frame, info, flags, topLeft, bottomRight, ignored, topLeftOut,
               bottomRightOut, positionOut, regionInfo, mosaicOut, region);
}

bool calcOverLapImageBright(unsigned char* image1, unsigned char* image2, int rows1, int cols1,
                            int rows2, int cols2, int channels, float& bright1, float& bright2) {
  if (measureFails) throw std::bad_alloc();
  static auto* const measure =
      libraryDefinition(&calcOverLapImageBright, "_Z22calcOverLapImageBrightPhS_iiiiiRfS0_");
  return measure(image1, image2, rows1, cols1, rows2, cols2, channels, bright1, bright2);
}

namespace {

class SessionMemory : public testing::TestWithParam<Criterion> {
 protected:
  ~SessionMemory() override { fusionFails = measureFails = false; }

  Frame frameAt(int x, int y) const { return scene_.cut(x, y, 240, 320); }

  SessionOptions options() const {
    SessionOptions options = optionsFor(frameAt(0, 0));
    options.criterion = GetParam();
    return options;
  }

  /// The frame cannot be taken while `stage` fails.
  void addFailing(Session& session, int x, int y, bool& stage) const {
    stage = true;
    EXPECT_EQ(errorOf([&] { session.add(viewOf(frameAt(x, y))); }).code, ErrorCode::kOutOfMemory);
    stage = false;
  }

  static void expectPlaced(const FrameResult& result, cv::Point placement) {
    EXPECT_EQ(result.verdict, Verdict::kJoined) << explain(result);
    EXPECT_EQ(result.placement, placement);
  }

  const Scene scene_{560, 900, 1, 12};
  const RecordedReports quiet_;
};

INSTANTIATE_TEST_SUITE_P(, SessionMemory, testing::Values(Criterion::kMotion, Criterion::kOverlap),
                         [](const auto& instance) {
                           return instance.param == Criterion::kMotion ? "Motion" : "Overlap";
                         });

class SessionMeasuringMemory : public SessionMemory {};

INSTANTIATE_TEST_SUITE_P(Overlap, SessionMeasuringMemory, testing::Values(Criterion::kOverlap));

}  // namespace

TEST_P(SessionMemory, ThatFailsTheFirstPairLeavesTheFirstFrame) {
  Session session(options());
  session.add(viewOf(frameAt(20, 100)));
  addFailing(session, 120, 100, fusionFails);
  EXPECT_TRUE(session.mosaic().empty());
  expectPlaced(session.add(viewOf(frameAt(100, 140))), {80, 40});
}

TEST_P(SessionMemory, ThatFailsALaterBlendLeavesTheMosaicAndTheReference) {
  Session session(options());
  session.add(viewOf(frameAt(20, 100)));
  session.add(viewOf(frameAt(120, 100)));
  const cv::Mat before = session.mosaic().clone();
  const cv::Rect box = session.steadyBox();
  addFailing(session, 260, 160, fusionFails);
  EXPECT_EQ(session.steadyBox(), box);
  EXPECT_EQ(cv::norm(session.mosaic(), before, cv::NORM_INF), 0.0);
  // Matched with the last frame that was joined, and placed beside it.
  expectPlaced(session.add(viewOf(frameAt(200, 140))), {180, 40});
}

TEST_P(SessionMeasuringMemory, ThatFailsTheMeasuresLeavesTheReference) {
  Session session(options());
  session.add(viewOf(frameAt(20, 100)));
  session.add(viewOf(frameAt(120, 100)));
  addFailing(session, 260, 160, measureFails);
  expectPlaced(session.add(viewOf(frameAt(200, 140))), {180, 40});
}
