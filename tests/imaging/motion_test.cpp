// SPDX-License-Identifier: Apache-2.0
#include "imaging/motion.h"

#include <framequilt/tuning.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "imaging/imaging_state.h"
#include "tests/imaging/host_state.h"
#include "tests/imaging/reference.h"
#include "tests/support/captured_output.h"
#include "tests/support/guarded.h"
#include "tests/support/random_images.h"
#include "tests/support/scoped_value.h"

namespace {

/// The six planes, no larger than a frame of rows x cols needs.
struct MotionPlanes {
  MotionPlanes(int rows, int cols)
      : gray_(area(rows, cols), 201), padded_(area(rows + 4, cols + 4), 202) {}

  Bytes gray_, padded_;
  HostPlane<unsigned char> before_{PreFrameImageGrayCpu, gray_};
  HostPlane<unsigned char> beforeBound_{PreFrameImageGrayBoundCpu, padded_};
  HostPlane<unsigned char> beforeTemp_{PreFrameImageGrayBoundTempCpu, padded_};
  HostPlane<unsigned char> now_{CurFrameImageGrayCpu, gray_};
  HostPlane<unsigned char> nowBound_{CurFrameImageGrayBoundCpu, padded_};
  HostPlane<unsigned char> nowTemp_{CurFrameImageGrayBoundTempCpu, padded_};
};

int motionOf(Bytes previous, Bytes current, int rows, int cols, int previousChannels = 1,
             int currentChannels = 1) {
  const MotionPlanes planes(rows, cols);
  return imageMotionModel(previous.data(), current.data(), rows, cols, previousChannels,
                          currentChannels);
}

Bytes grayPlane(const Bytes& frame, int rows, int cols, int channels) {
  if (channels < 2) return frame;
  Bytes gray(area(rows, cols));
  for (std::size_t i = 0; i < gray.size(); ++i) gray[i] = grayOf(&frame[3 * i]);
  return gray;
}

/// One pass of the motion kernel over every pixel, with mirrored neighbours.
Bytes smoothedOnce(const Bytes& gray, int rows, int cols, bool down) {
  Bytes out(gray.size());
  for (int r = 0; r < rows; ++r) {
    for (int c = 0; c < cols; ++c) {
      float sum = 0.0F;
      for (int j = 0; j < 5; ++j) {
        const std::size_t tap =
            down ? at(mirrored(r + j - 2, rows), c, cols) : at(r, mirrored(c + j - 2, cols), cols);
        sum = plusProduct(sum, filter2DKerModel[j], gray[tap]);
      }
      out[at(r, c, cols)] = wrappedByte(sum);
    }
  }
  return out;
}

Bytes smoothed(const Bytes& frame, int rows, int cols, int channels) {
  const Bytes gray = grayPlane(frame, rows, cols, channels);
  return smoothedOnce(smoothedOnce(gray, rows, cols, true), rows, cols, false);
}

int meanDifference(const Bytes& one, const Bytes& two) {
  int sum = 0;
  for (std::size_t i = 0; i < one.size(); ++i) sum += std::abs(one[i] - two[i]);
  return sum / static_cast<int>(one.size());
}

TEST(PreJudgement, ZerosBecomeOnes) {
  GuardedBytes image(Bytes(12, 0));
  EXPECT_TRUE(pretJudgeImageCh(image.data(), 3, 4, 1));
  EXPECT_EQ(image.values(), Bytes(12, 1));
  EXPECT_TRUE(image.intact());
}

TEST(PreJudgement, EachChannelIsConditionedByItself) {
  GuardedBytes image(Bytes{0, 5, 0, 255, 0, 7});
  EXPECT_TRUE(pretJudgeImageCh(image.data(), 1, 2, 3));
  EXPECT_EQ(image.values(), (Bytes{1, 5, 1, 255, 1, 7}));
}

TEST(PreJudgement, FrameWithoutZerosStays) {
  Random random(91);
  const Bytes frame = random.bytes(area(9, 11, 3), 1, 255);
  GuardedBytes image(frame);
  EXPECT_TRUE(pretJudgeImageCh(image.data(), 9, 11, 3));
  EXPECT_EQ(image.values(), frame);
}

TEST(PreJudgement, StopsAtTheEndOfTheImage) {
  GuardedBytes image(Bytes(20, 0));
  EXPECT_TRUE(pretJudgeImageCh(image.data(), 3, 4, 1));
  EXPECT_EQ(image.values(), (Bytes{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(PreJudgement, OtherChannelCountsPassUntouched) {
  for (int channels : {-1, 0, 2, 4}) {
    Bytes image(16, 0);
    EXPECT_TRUE(pretJudgeImageCh(image.data(), 2, 2, channels));
    EXPECT_EQ(image, Bytes(16, 0));
  }
}

TEST(PreJudgement, EmptyFramePassesUntouched) {
  Bytes image(4, 0);
  for (const auto& [rows, cols] : {std::pair(0, 4), {4, 0}, {-1, 4}, {4, -1}}) {
    EXPECT_TRUE(pretJudgeImageCh(image.data(), rows, cols, 1));
    EXPECT_TRUE(pretJudgeImageCh(image.data(), rows, cols, 3));
  }
  EXPECT_EQ(image, Bytes(4, 0));
}

TEST(PreJudgement, ReplacesEveryZeroAtEveryWidth) {
  Random random(92);
  for (int cols = 1; cols <= 70; ++cols) {
    SCOPED_TRACE(testing::Message() << "seed 92, cols " << cols);
    const int channels = cols % 2 == 0 ? 1 : 3;
    Bytes expected = random.bytes(area(3, cols, channels), 0, 3);
    GuardedBytes image(expected);
    for (auto& byte : expected) {
      if (byte == 0) byte = 1;
    }
    EXPECT_TRUE(pretJudgeImageCh(image.data(), 3, cols, channels));
    EXPECT_EQ(image.values(), expected);
    EXPECT_TRUE(image.intact());
  }
}

TEST(PreJudgement, NullImageIsRefusedWithOneLine) {
  EXPECT_EQ(
      standardOutputOf([] { EXPECT_FALSE(pretJudgeImageCh<unsigned char>(nullptr, 2, 2, 1)); }),
      "pretJudgeImageCh ptr is NULL\n");
}

TEST(Motion, IdenticalFramesDoNotMove) {
  Random random(93);
  const Bytes frame = random.bytes(area(8, 9));
  EXPECT_EQ(motionOf(frame, frame, 8, 9), 0);
}

TEST(Motion, ConstantDifferenceOfFlatFramesIsTheMotion) {
  EXPECT_EQ(motionOf(Bytes(48, 100), Bytes(48, 110), 6, 8), 10);
  EXPECT_EQ(motionOf(Bytes(48, 110), Bytes(48, 100), 6, 8), 10);
  EXPECT_EQ(motionOf(Bytes(48, 0), Bytes(48, 255), 6, 8), 255);
}

TEST(Motion, ColourFramesAreComparedInGray) {
  Bytes red;
  for (int i = 0; i < 30; ++i) red.insert(red.end(), {0, 0, 100});  // gray 30
  EXPECT_EQ(motionOf(red, Bytes(90, 100), 5, 6, 3, 3), 70);
  EXPECT_EQ(motionOf(Bytes(30, 50), red, 5, 6, 1, 3), 20);
  EXPECT_EQ(motionOf(red, Bytes(30, 50), 5, 6, 2, 0), 20);  // from 2 on three bytes a pixel
}

TEST(Motion, MeanIsTruncated) {
  // The identity instead of the kernel.
  const ScopedValue w0(filter2DKerModel[0], 0.0F), w1(filter2DKerModel[1], 0.0F),
      w2(filter2DKerModel[2], 1.0F), w3(filter2DKerModel[3], 0.0F), w4(filter2DKerModel[4], 0.0F);
  EXPECT_EQ(motionOf({10, 20, 30}, {15, 20, 30}, 1, 3), 1);  // 5 / 3
  EXPECT_EQ(motionOf({10, 20, 30}, {11, 19, 30}, 1, 3), 0);  // 2 / 3
  EXPECT_EQ(motionOf({10, 20, 30}, {11, 19, 29}, 1, 3), 1);  // signs do not cancel
}

TEST(Motion, DifferencesAreAddedIn32Bits) {
  // 255 * 8421505 is 2^31 + 127: a sum of 127 - 2^31.
  const ScopedValue taps(filter2DKerSize[0], 1);
  const ScopedValue weight(filter2DKerModel[0], 1.0F);
  const int cols = 8421505;
  EXPECT_EQ(motionOf(Bytes(area(1, cols), 0), Bytes(area(1, cols), 255), 1, cols), -254);
}

TEST(Motion, FirstTapCountDecidesTheSmoothing) {
  {
    // The first three weights alone: 100 becomes 70, then 49.
    const ScopedValue taps(filter2DKerSize[0], 3);
    EXPECT_EQ(motionOf(Bytes(30, 100), Bytes(30, 0), 5, 6), 49);
  }
  {
    const ScopedValue taps(filter2DKerSize[0], 1);  // 100 becomes 5, then 0
    EXPECT_EQ(motionOf(Bytes(30, 100), Bytes(30, 0), 5, 6), 0);
  }
}

TEST(Motion, TapCountIsHeldToTheKernel) {
  for (int count : {6, 9, 1000000}) {
    const ScopedValue taps(filter2DKerSize[0], count);
    EXPECT_EQ(motionOf(Bytes(30, 100), Bytes(30, 0), 5, 6), 100) << count;
  }
  for (int count : {0, -1, -5}) {
    const ScopedValue taps(filter2DKerSize[0], count);
    EXPECT_EQ(motionOf(Bytes(30, 100), Bytes(30, 0), 5, 6), 0) << count;
  }
}

TEST(Motion, AgreesWithTheSlowMeasureAndLeavesTheSmoothedGray) {
  Random random(94);
  for (int cols = 1; cols <= 70; ++cols) {
    const int rows = random.between(1, 9);
    const int previousChannels = random.between(0, 3), currentChannels = random.between(0, 3);
    SCOPED_TRACE(testing::Message() << "seed 94: " << rows << " x " << cols);
    Bytes previous = random.bytes(area(rows, cols, previousChannels < 2 ? 1 : 3));
    Bytes current = random.bytes(area(rows, cols, currentChannels < 2 ? 1 : 3), 0, 160);
    const Bytes previousCopy = previous, currentCopy = current;
    const Bytes before = smoothed(previous, rows, cols, previousChannels);
    const Bytes now = smoothed(current, rows, cols, currentChannels);

    const MotionPlanes planes(rows, cols);
    EXPECT_EQ(imageMotionModel(previous.data(), current.data(), rows, cols, previousChannels,
                               currentChannels),
              meanDifference(before, now));
    EXPECT_EQ(planes.before_.values(), before);
    EXPECT_EQ(planes.now_.values(), now);
    EXPECT_EQ(previous, previousCopy);
    EXPECT_EQ(current, currentCopy);
  }
}

TEST(Motion, TinyFrames) {
  EXPECT_EQ(motionOf({7}, {9}, 1, 1), 2);
  EXPECT_EQ(motionOf({7, 7}, {9, 9}, 1, 2), 2);
  EXPECT_EQ(motionOf({7, 7}, {9, 9}, 2, 1), 2);
  EXPECT_EQ(motionOf(Bytes(4, 7), Bytes(4, 9), 2, 2), 2);
}

TEST(Motion, FrameWithoutRowsOrColumnsGivesZero) {
  const MotionPlanes planes(2, 2);
  Bytes frame(4, 9);
  for (const auto& [rows, cols] : {std::pair(-2, -3), {-2, 3}, {2, -3}, {0, 0}, {0, 5}, {5, 0}}) {
    EXPECT_EQ(imageMotionModel(frame.data(), frame.data(), rows, cols, 1, 3), 0);
  }
  EXPECT_EQ(planes.before_.values(), Bytes(4, 201));
}

TEST(Motion, WithoutFramesOrPlanesGivesWhatEveryLimitRefuses) {
  Bytes frame(4, 9);
  EXPECT_EQ(imageMotionModel(frame.data(), frame.data(), 2, 2, 1, 1), 255);
  const MotionPlanes planes(2, 2);
  EXPECT_EQ(imageMotionModel(nullptr, frame.data(), 2, 2, 1, 1), 255);
  EXPECT_EQ(imageMotionModel(frame.data(), nullptr, 2, 2, 1, 1), 255);
  for (unsigned char** plane :
       {&PreFrameImageGrayCpu, &PreFrameImageGrayBoundCpu, &PreFrameImageGrayBoundTempCpu,
        &CurFrameImageGrayCpu, &CurFrameImageGrayBoundCpu, &CurFrameImageGrayBoundTempCpu}) {
    const ScopedValue<unsigned char*> missing(*plane, nullptr);
    EXPECT_EQ(imageMotionModel(frame.data(), frame.data(), 2, 2, 1, 1), 255);
  }
}

}  // namespace
