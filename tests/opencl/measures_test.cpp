// SPDX-License-Identifier: Apache-2.0
// The measures of frames and overlaps on a card, against those of the host.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "framequilt/tuning.h"
#include "imaging/filter.h"
#include "imaging/gray.h"
#include "imaging/motion.h"
#include "imaging/overlap.h"
#include "opencl/OpenclJointMotion.h"
#include "opencl/OpenclJointOverlap.h"
#include "opencl/OpenclJointState.h"
#include "tests/opencl/both_backends.h"
#include "tests/support/random_images.h"

namespace {

namespace layer = framequilt::opencl_layer;

class Measures : public BothBackends {};

FRAMEQUILT_IN_EITHER_MEMORY(Measures);

// --- Motion ---

Bytes smoothedByHost(Bytes image, PlaneSize size) {
  const PlaneSize padded = {size.rows + 4, size.cols + 4};
  Bytes one(padded.bytes());
  Bytes two(padded.bytes());
  opencvcopyFilter2DBorderCh1(image.data(), size.rows, size.cols, 2, one.data(), two.data());
  opencvFilter2DRowCalcCh1(one.data(), filter2DKerModel, padded.rows, padded.cols, 5, two.data());
  opencvFilter2DColCalcCh1(two.data(), filter2DKerModel, padded.rows, padded.cols, 5, one.data());
  opencvcopyFilter2DTakeOutBoundCh1(one.data(), padded.rows, padded.cols, 2, image.data());
  return image;
}

TEST_P(Measures, SmoothingOfTheMotionMeasureIsTheHosts) {
  for (const PlaneSize size : kPlaneSizes) {
    SCOPED_TRACE(size.name());
    for (const Bytes& image : contents(size.bytes(), 5)) {
      const CardPlane plane(image);
      EXPECT_EQ(Filter2DModeKernel(plane.memory(), PreFrameImageGrayBoundCL,
                                   PreFrameImageGrayBoundTempCL, size.rows, size.cols),
                CL_SUCCESS);
      ASSERT_EQ(readBack(plane.memory(), size.bytes()), smoothedByHost(image, size));
    }
  }
}

TEST_P(Measures, MotionIsTheHosts) {
  forEveryPair([](PlaneSize size, int channels, Bytes previous, Bytes current) {
    const Bytes formerPrevious = previous;
    const Bytes formerCurrent = current;
    const int card = imageMotionModelCL(previous.data(), current.data(), size.rows, size.cols,
                                        channels, channels);
    ASSERT_EQ(previous, formerPrevious) << "the caller's frames stay as they are";
    ASSERT_EQ(current, formerCurrent);
    ASSERT_EQ(card, imageMotionModel(previous.data(), current.data(), size.rows, size.cols,
                                     channels, channels));
  });
}

TEST_P(Measures, MotionNotMeasuredIsTheValueThatEveryLimitRefuses) {
  for (const int channels : {1, 3}) {
    SCOPED_TRACE(channels);
    const PlaneSize size = {20, 30};
    Bytes frame = Random(6).bytes(size.bytes(channels));
    const Bytes former = frame;
    const auto measure = [&] {
      return imageMotionModelCL(frame.data(), frame.data(), size.rows, size.cols, channels,
                                channels);
    };
    ASSERT_EQ(measure(), 0);
    journal_.take();
    for (const char* call : {"clEnqueueMapBuffer", "clEnqueueNDRangeKernel", "clSetKernelArg"}) {
      SCOPED_TRACE(call);
      layer::failCall(call, 1, CL_OUT_OF_RESOURCES);
      EXPECT_EQ(measure(), 255);
      EXPECT_NE(errNum, CL_SUCCESS);
      ASSERT_FALSE(journal_.take().empty());
      EXPECT_EQ(frame, former);
      EXPECT_EQ(measure(), 0);
      EXPECT_EQ(journal_.take(), Entries{});
    }
    layer::failCall("clEnqueueMapBuffer", 1, CL_MAP_FAILURE);
    measure();
    EXPECT_EQ(journal_.take(), Entries{Journal::debug("Filter2DModeKernel")});
    layer::failCall("clCreateBuffer", 2, CL_MEM_OBJECT_ALLOCATION_FAILURE);
    EXPECT_EQ(measure(), 255);
    EXPECT_EQ(journal_.take(), (Entries{Journal::debug("failed clEnqueueReadBuffer111"),
                                        Journal::debug("Filter2DModeKernel")}));
  }
}

TEST_P(Measures, EveryRefusedStepOfTheSmoothingIsNamedAndTheOthersAreDone) {
  const char* const names[] = {
      "opencvcopyFilter2DBorderRowUcharModeKernel", "opencvcopyFilter2DBorderColUcharModeKernel",
      "opencvFilter2DRowCalcUcharWin5ModeKernel", "opencvFilter2DColCalcUcharWin5ModeKernel",
      "opencvcopyFilter2DTakeOutBoundUcharKernel"};
  const CardPlane plane(Bytes(20 * 30, 9));
  for (int step = 0; step < 5; ++step) {
    SCOPED_TRACE(names[step]);
    layer::resetRecords();
    layer::failCall("clEnqueueNDRangeKernel", step + 1, CL_OUT_OF_RESOURCES);
    EXPECT_EQ(Filter2DModeKernel(plane.memory(), PreFrameImageGrayBoundCL,
                                 PreFrameImageGrayBoundTempCL, 20, 30),
              CL_OUT_OF_RESOURCES);
    EXPECT_EQ(journal_.take(), Entries{Journal::debug(names[step])});
    EXPECT_EQ(layer::callCount("clEnqueueNDRangeKernel"), 5);
  }
}

// --- Overlap ---

TEST_P(Measures, BrightnessIsTheHosts) {
  forEveryPair([](PlaneSize size, int channels, Bytes mosaic, Bytes frame) {
    const Bytes formerMosaic = mosaic;
    const Bytes formerFrame = frame;
    float card[2] = {-1, -1};
    float host[2] = {-2, -2};
    // A part of the frame may be narrower; rows are those of the mosaic's part.
    for (const int cols : {size.cols, std::max(1, size.cols - 3)}) {
      ASSERT_TRUE(calcOverLapImageBrightCL(mosaic.data(), frame.data(), size.rows, size.cols,
                                           size.rows, cols, channels, card[0], card[1]));
      ASSERT_TRUE(calcOverLapImageBright(mosaic.data(), frame.data(), size.rows, size.cols,
                                         size.rows, cols, channels, host[0], host[1]));
      ASSERT_TRUE(sameNumber(card[0], host[0]));
      // The host's grid goes on beyond a narrower part of few columns.
      if (cols == size.cols || size.cols > 8) {
        ASSERT_TRUE(sameNumber(card[1], host[1])) << cols;
      }
      ASSERT_EQ(std::isnan(card[0]), size.rows < 5 || size.cols < 5);
    }
    ASSERT_EQ(mosaic, formerMosaic);
    ASSERT_EQ(frame, formerFrame);
  });
}

Bytes grayOf(Bytes& image, PlaneSize size, int channels) {
  if (channels == 1) return image;
  Bytes gray(size.bytes());
  rgb2Gray(image.data(), size.rows, size.cols, gray.data());
  return gray;
}

/// Strong responses of 9 taps along each row, of every second pixel of the gray image as it is.
float sharpnessByText(const Bytes& gray, PlaneSize size) {
  const int rows = size.rows / 2;
  const int cols = size.cols / 2;
  // 10 columns on the left and 11 on the right never count, nor do the first and the last row.
  if (cols <= 21 || rows <= 2) return NAN;
  const auto sample = [&](int r, int c) {
    if (c < 0) c = -c;
    // To the right of the image, columns are repeated forward.
    if (c >= cols) c = c - 5;
    return static_cast<int>(gray[static_cast<std::size_t>(2 * r * size.cols + 2 * c)]);
  };
  constexpr int kTaps[9] = {-1, -2, -1, 2, 4, 2, -1, -2, -1};
  float sum = 0;
  int count = 0;
  for (int r = 1; r < rows - 1; ++r) {
    for (int c = 10; c < cols - 11; ++c) {
      int response = 0;
      for (int j = 0; j < 9; ++j) response += kTaps[j] * sample(r, c - 4 + j);
      const int byte = response & 255;
      if (byte <= 10) continue;
      sum += static_cast<float>(byte);
      ++count;
    }
  }
  return sum / static_cast<float>(count);
}

TEST_P(Measures, SharpnessIsThatOfEverySecondPixelOfTheWholeGrayPart) {
  forEveryPair([](PlaneSize size, int channels, Bytes mosaic, Bytes frame) {
    float bright[2];
    float card[2] = {-1, -1};
    ASSERT_TRUE(calcOverLapImageBrightCL(mosaic.data(), frame.data(), size.rows, size.cols,
                                         size.rows, size.cols, channels, bright[0], bright[1]));
    ASSERT_TRUE(calcOverLapImageDefinitionCL(mosaic.data(), frame.data(), size.rows, size.cols,
                                             size.rows, size.cols, channels, card[0], card[1]));
    ASSERT_TRUE(sameNumber(card[0], sharpnessByText(grayOf(mosaic, size, channels), size)));
    ASSERT_TRUE(sameNumber(card[1], sharpnessByText(grayOf(frame, size, channels), size)));
    ASSERT_EQ(layer::live().mappings(), 0);
  });
}

TEST_P(Measures, SharpnessDiffersFromTheHostsWhichTakesASmoothedQuarter) {
  // Texture on the right only, where the host does not look.
  const PlaneSize size = {97, 131};
  Bytes part = Random(8).bytes(size.bytes());
  for (std::size_t i = 0; i < part.size(); ++i) {
    if (i % 131 < 75) part[i] = 100;
  }
  float card[2];
  float host[2];
  float bright[2];
  calcOverLapImageBrightCL(part.data(), part.data(), size.rows, size.cols, size.rows, size.cols, 1,
                           bright[0], bright[1]);
  calcOverLapImageDefinitionCL(part.data(), part.data(), size.rows, size.cols, size.rows, size.cols,
                               1, card[0], card[1]);
  calcOverLapImageBright(part.data(), part.data(), size.rows, size.cols, size.rows, size.cols, 1,
                         bright[0], bright[1]);
  calcOverLapImageDefinition(part.data(), part.data(), size.rows, size.cols, size.rows, size.cols,
                             1, host[0], host[1]);
  EXPECT_EQ(card[0], card[1]);
  EXPECT_EQ(host[0], host[1]);
  EXPECT_EQ(card[0], sharpnessByText(part, size));
  EXPECT_GT(std::fabs(card[0] - host[0]), 2.0F);
}

TEST_P(Measures, SharpnessWithoutGrayPartsIsNoNumber) {
  Bytes part = Random(9).bytes(60 * 60);
  float bright[2];
  float sharp[2];
  const auto brightness = [&] {
    bright[0] = bright[1] = -1;
    return calcOverLapImageBrightCL(part.data(), part.data(), 60, 60, 60, 60, 1, bright[0],
                                    bright[1]);
  };
  const auto sharpness = [&] {
    sharp[0] = sharp[1] = -1;
    return calcOverLapImageDefinitionCL(part.data(), part.data(), 60, 60, 60, 60, 1, sharp[0],
                                        sharp[1]);
  };
  const auto expectNoSharpness = [&] {
    EXPECT_TRUE(sharpness());
    EXPECT_TRUE(std::isnan(sharp[0]));
    EXPECT_TRUE(std::isnan(sharp[1]));
  };
  expectNoSharpness();
  ASSERT_TRUE(brightness());
  ASSERT_TRUE(sharpness());
  EXPECT_GT(sharp[0], 10.0F);
  // Used up.
  expectNoSharpness();

  for (int map = 1; map <= 4; ++map) {
    SCOPED_TRACE("map " + std::to_string(map));
    layer::failCall("clEnqueueMapBuffer", map, CL_MAP_FAILURE);
    EXPECT_TRUE(brightness());
    EXPECT_TRUE(std::isnan(bright[0]));
    EXPECT_TRUE(std::isnan(bright[1]));
    EXPECT_EQ(errNum, CL_MAP_FAILURE);
    EXPECT_EQ(layer::live().mappings(), 0);
    expectNoSharpness();
  }
  for (int launch = 1; launch <= 8; ++launch) {
    SCOPED_TRACE("launch " + std::to_string(launch));
    layer::failCall("clEnqueueNDRangeKernel", launch, CL_OUT_OF_RESOURCES);
    EXPECT_TRUE(brightness());
    EXPECT_TRUE(std::isnan(bright[0]));
    expectNoSharpness();
  }
}

// --- Null ---

TEST_P(Measures, NullIsRefusedWithALine) {
  Bytes image(100, 7);
  unsigned char* const some = image.data();
  float one = 1;
  float two = 2;
  const Entries refused = {"ptr is null"};
  for (const auto& [a, b] : {std::pair<unsigned char*, unsigned char*>{nullptr, some},
                             {some, nullptr},
                             {nullptr, nullptr}}) {
    EXPECT_EQ(imageMotionModelCL(a, b, 10, 10, 1, 1), 0);
    EXPECT_EQ(journal_.take(), refused);
    EXPECT_FALSE(calcOverLapImageBrightCL(a, b, 10, 10, 10, 10, 1, one, two));
    EXPECT_EQ(journal_.take(), refused);
    EXPECT_FALSE(calcOverLapImageDefinitionCL(a, b, 10, 10, 10, 10, 1, one, two));
    EXPECT_EQ(journal_.take(), refused);
  }
  EXPECT_EQ(one, 1);
  EXPECT_EQ(two, 2);
  EXPECT_EQ(image, Bytes(100, 7));
}

}  // namespace
