// SPDX-License-Identifier: Apache-2.0
// Walks to each side and corner of the mosaic, and on. The offsets are given to the run, so that
// the frames lie where they should to the pixel.
#include <gtest/gtest.h>

#include <algorithm>
#include <opencv2/core.hpp>
#include <string>

#include "tests/run/captures.h"
#include "tests/run/scripted_offset.h"

namespace {

constexpr int kRows = 240;
constexpr int kCols = 320;
constexpr int kFirstSide = 6000;

/// A scene without end: a picture that repeats at more than a frame's size.
class EndlessScene {
 public:
  EndlessScene() : picture_(Scene(560, 700, 3, 7).picture()) {}

  Frame cut(SPoint corner) const {
    Frame frame(kRows, kCols, 3);
    for (int r = 0; r < kRows; ++r) {
      for (int c = 0; c < kCols; ++c) {
        for (int k = 0; k < 3; ++k) {
          frame.at(r, c, k) = picture_.at(wrapped(corner.y + r, picture_.rows),
                                          wrapped(corner.x + c, picture_.cols), k);
        }
      }
    }
    return frame;
  }

 private:
  static int wrapped(int index, int size) { return (index % size + size) % size; }

  Frame picture_;
};

struct Walk {
  std::string name;
  SPoint step;
  /// What the mosaic has gained where the walk ends.
  SPoint growth;
  /// How far that moved what was there before.
  SPoint shift;
};

void PrintTo(const Walk& walk, std::ostream* out) { *out << walk.name; }

class Growth : public testing::TestWithParam<Walk> {};

// Across and down the frames come to touch the edge exactly.
INSTANTIATE_TEST_SUITE_P(
    , Growth,
    testing::Values(Walk{"Right", {142, 0}, {kCols, 0}, {0, 0}},
                    Walk{"Left", {-142, 0}, {kCols, 0}, {kCols, 0}},
                    Walk{"Down", {0, 120}, {0, kRows}, {0, 0}},
                    Walk{"Up", {0, -120}, {0, kRows}, {0, kRows}},
                    Walk{"RightDown", {100, 100}, {kCols, kRows}, {0, 0}},
                    Walk{"RightUp", {100, -100}, {kCols, kRows}, {0, kRows}},
                    Walk{"LeftDown", {-100, 100}, {kCols, kRows}, {kCols, 0}},
                    Walk{"LeftUp", {-100, -100}, {kCols, kRows}, {kCols, kRows}}),
    [](const auto& instance) { return instance.param.name; });

/// What a mosaic has to look like, kept beside it.
class ExpectedMosaic {
 public:
  void place(const Frame& frame, SPoint corner) { frames_.push_back({frame, corner}); }

  void expectEqualTo(const cv::Mat& mosaic, SPoint shift) const {
    cv::Mat expected = cv::Mat::zeros(mosaic.size(), mosaic.type());
    for (const auto& [frame, corner] : frames_) {
      cv::Mat target =
          expected(cv::Rect(corner.x + shift.x, corner.y + shift.y, frame.cols, frame.rows));
      cv::Mat(frame.rows, frame.cols, CV_8UC3, const_cast<unsigned char*>(frame.bytes.data()))
          .copyTo(target);
    }
    EXPECT_EQ(cv::norm(mosaic, expected, cv::NORM_INF), 0.0);
  }

 private:
  struct Placed {
    Frame frame;
    SPoint corner;
  };
  std::vector<Placed> frames_;
};

TEST_P(Growth, AddsAWholeFrameWhereTheWalkReachesTheEdge) {
  const Walk& walk = GetParam();
  const EndlessScene scene;
  RunSettings settings;
  settings.channels = 3;
  CaptureRun run(settings);
  scriptOffset({walk.step.x, walk.step.y});
  const SPoint start = firstPosition(settings);
  ExpectedMosaic expected;
  SPoint corner = {0, 0};
  expected.place(scene.cut(corner), start);

  FrameOutcome outcome;
  int stepsAfterGrowth = 0;
  for (int i = 1; stepsAfterGrowth < 2 && i < 40; ++i) {
    SCOPED_TRACE("step " + std::to_string(i));
    const SPoint former = corner;
    corner = corner + walk.step;
    outcome =
        i == 1 ? run.first(scene.cut(former), scene.cut(corner)) : run.next(scene.cut(corner));
    ASSERT_EQ(outcome.result, 0);
    expected.place(scene.cut(corner), start + corner);

    const bool grown = outcome.mosaic.cols > kFirstSide || outcome.mosaic.rows > kFirstSide;
    if (grown) ++stepsAfterGrowth;
    // Growth comes with the first frame that touches the edge.
    const SPoint place = start + corner;
    const bool touches = place.x <= 0 || place.y <= 0 || place.x + kCols >= kFirstSide ||
                         place.y + kRows >= kFirstSide;
    EXPECT_EQ(grown, touches);
    const SPoint shift = grown ? walk.shift : SPoint{0, 0};
    EXPECT_EQ(outcome.flags.position, place + shift);
    if (grown) {
      EXPECT_EQ(SPoint({outcome.mosaic.cols, outcome.mosaic.rows}),
                (SPoint{kFirstSide, kFirstSide}) + walk.growth);
    }
  }
  ASSERT_EQ(stepsAfterGrowth, 2);
  expected.expectEqualTo(outcome.mosaic, walk.shift);
  EXPECT_EQ(outcome.topLeft,
            start + walk.shift + (SPoint{std::min(0, corner.x), std::min(0, corner.y)}));
  EXPECT_EQ(outcome.bottomRight, start + walk.shift +
                                     (SPoint{std::max(0, corner.x), std::max(0, corner.y)}) +
                                     (SPoint{kCols, kRows}));
}

}  // namespace
