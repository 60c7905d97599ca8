// SPDX-License-Identifier: Apache-2.0
// Corners found on a card, against those of the host.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "cpu/corner_worker.h"
#include "features/harris.h"
#include "framequilt/tuning.h"
#include "opencl/OpenclJointCorners.h"
#include "opencl/OpenclJointState.h"
#include "tests/opencl/both_backends.h"
#include "tests/support/points.h"
#include "tests/support/random_images.h"

namespace {

namespace layer = framequilt::opencl_layer;

/// No corner lies within 20 pixels of the edges of the reduced image.
constexpr PlaneSize kTooSmall[] = {{1, 1}, {5, 5}, {16, 16}, {40, 60}, {81, 200}};
constexpr PlaneSize kLargeEnough[] = {{90, 90}, {97, 131}, {128, 160}, {240, 320}};

class Corners : public BothBackends {
 protected:
  /// The size of images in which both backends search corners.
  static void searchAt(PlaneSize size, int factor) {
    pointdownscal = pointdownscalCL = factor;
    gray_pointdownscal_row = gray_pointdownscal_rowCL = size.rows / factor;
    gray_pointdownscal_col = gray_pointdownscal_colCL = size.cols / factor;
  }

  /// Of both threads' functions; equal, and returned.
  Points expectSameCorners(const Bytes& gray, PlaneSize size) {
    Bytes image = gray;
    const CardPlane plane(image);
    const imgInfo info = {0, 1, size.rows, size.cols};
    Points host[2];
    Points card[2];
    const bool found = findHarrisCornerCoordianteFun1(image.data(), info, host[0]);
    EXPECT_EQ(findHarrisCornerCoordianteFun2(image.data(), info, host[1]), found);
    EXPECT_EQ(host[0], host[1]);
    Entries lines = journal_.take();
    const std::string cardSays = "HarrissCornerSPoint22222222222 size is 0";
    for (std::string& line : lines) {
      if (line == "HarrissCornerSPoint size is 0") line = cardSays;
    }
    if (gray_pointdownscal_row == 0) {
      // The card is left alone, and the host's steps with it.
      lines = Entries(2, cardSays);
    }
    EXPECT_EQ(findHarrisCornerCoordianteFunClOne(plane.memory(), info, card[0]), found);
    EXPECT_EQ(findHarrisCornerCoordianteFunClTwo(plane.memory(), info, card[1]), found);
    EXPECT_EQ(journal_.take(), lines);
    EXPECT_EQ(lines.empty(), found);
    EXPECT_EQ(card[0], host[0]);
    EXPECT_EQ(card[1], host[0]);
    EXPECT_EQ(readBack(plane.memory(), size.bytes()), gray);
    return card[0];
  }

  void expectSameStrips(SPoint hint, const Bytes& gray, PlaneSize size) {
    SCOPED_TRACE("hint " + std::to_string(hint.x) + ", " + std::to_string(hint.y));
    Bytes image = gray;
    const CardPlane plane(image);
    Points host[2];
    Points card[2];
    EXPECT_TRUE(getRangeCpuOne(hint.x, hint.y, image.data(), size.rows, size.cols, host[0]));
    EXPECT_TRUE(getRangeCpuTwo(hint.x, hint.y, image.data(), size.rows, size.cols, host[1]));
    EXPECT_TRUE(getRangeTh1(hint.x, hint.y, plane.memory(), size.rows, size.cols, card[0]));
    EXPECT_TRUE(getRangeTh2(hint.x, hint.y, plane.memory(), size.rows, size.cols, card[1]));
    EXPECT_EQ(card[0], host[0]);
    EXPECT_EQ(card[1], host[1]);
    found_ += card[0].size() + card[1].size();
  }

  std::size_t found_ = 0;
};

FRAMEQUILT_IN_EITHER_MEMORY(Corners);

TEST_P(Corners, AreTheHosts) {
  for (const PlaneSize size : kLargeEnough) {
    for (const int factor : {1, 2, 3}) {
      // Planes are made for a search at half the size of the frames.
      if (factor == 1 && size.rows == kLargest.rows) continue;
      SCOPED_TRACE(size.name() + " reduced by " + std::to_string(factor));
      searchAt(size, factor);
      const Points corners = expectSameCorners(cutOf(size, 1).bytes, size);
      const bool fits = size.rows / factor > 40 && size.cols / factor > 40;
      EXPECT_EQ(corners.empty(), !fits);
      for (const Bytes& image : contents(size.bytes(), 31)) expectSameCorners(image, size);
    }
  }
}

TEST_P(Corners, AreNoneInSmallImages) {
  for (const PlaneSize size : kTooSmall) {
    SCOPED_TRACE(size.name());
    searchAt(size, 2);
    EXPECT_EQ(expectSameCorners(Random(7).bytes(size.bytes()), size), Points{});
  }
}

TEST_P(Corners, OfAHintedPartAreTheHosts) {
  for (const PlaneSize size : {PlaneSize{128, 160}, PlaneSize{97, 131}}) {
    SCOPED_TRACE(size.name());
    searchAt(size, 2);
    const Bytes image = cutOf(size, 1).bytes;
    for (const int dx : {31, 0, -30}) {
      for (const int dy : {24, 0, -17}) expectSameStrips({dx, dy}, image, size);
    }
    EXPECT_GT(found_, 0U);
  }
}

TEST_P(Corners, OfAHintAsLargeAsTheImageAndLargerAreTheHosts) {
  const PlaneSize size = {128, 160};
  searchAt(size, 2);
  const Bytes image = cutOf(size, 1).bytes;
  constexpr int kFar = 2000000000;
  for (const SPoint hint : {SPoint{159, 0},
                            {160, 0},
                            {161, 0},
                            {-160, 0},
                            {0, 128},
                            {0, -128},
                            {kFar, kFar},
                            {-kFar, kFar},
                            {kFar, -kFar},
                            {-kFar, -kFar}}) {
    expectSameStrips(hint, image, size);
  }
  EXPECT_EQ(found_, 0U);
}

TEST_P(Corners, OfAHintStartAfreshAfterALargerPart) {
  // Pixels of the earlier image must not stay behind the part.
  const PlaneSize size = {240, 320};
  searchAt(size, 2);
  expectSameStrips({0, 0}, Random(2).bytes(size.bytes()), size);
  expectSameStrips({100, 60}, cutOf(size, 1).bytes, size);
  expectSameStrips({-250, -150}, cutOf(size, 1).bytes, size);
}

TEST_P(Corners, AreNotSearchedInMoreThanThePlanesHold) {
  const imgInfo info = {0, 1, kLargest.rows, kLargest.cols};
  const CardPlane plane(cutOf(kLargest, 1).bytes);
  const auto found = [&] {
    Points one;
    Points two;
    findHarrisCornerCoordianteFunClOne(plane.memory(), info, one);
    findHarrisCornerCoordianteFunClTwo(plane.memory(), info, two);
    EXPECT_EQ(one, two);
    return !one.empty();
  };
  searchAt(kLargest, 1);
  layer::resetRecords();
  EXPECT_FALSE(found());
  EXPECT_EQ(journal_.take(), Entries(2, "errNum failed"));
  EXPECT_EQ(layer::callCount("clEnqueueNDRangeKernel"), 0);
  // Left by a run of larger frames.
  searchAt({600, 800}, 2);
  EXPECT_FALSE(found());
  EXPECT_EQ(layer::callCount("clEnqueueNDRangeKernel"), 0);
  searchAt(kLargest, 2);
  EXPECT_TRUE(found());
}

TEST_P(Corners, ThatTheCardRefusesAreNone) {
  const PlaneSize size = {128, 160};
  searchAt(size, 2);
  const CardPlane plane(cutOf(size, 1).bytes);
  const imgInfo info = {0, 1, size.rows, size.cols};
  const Entries refused = {"errNum failed"};
  for (auto* const find :
       {findHarrisCornerCoordianteFunClOne, findHarrisCornerCoordianteFunClTwo}) {
    // Reducing, gradients, five steps for each of the three products.
    for (int nth = 1; nth <= 17; ++nth) {
      Points corners;
      layer::failCall("clEnqueueNDRangeKernel", nth, CL_OUT_OF_RESOURCES);
      EXPECT_FALSE(find(plane.memory(), info, corners)) << nth;
      EXPECT_EQ(corners, Points{});
      EXPECT_EQ(journal_.take(), refused);
    }
    for (int nth = 1; nth <= 3; ++nth) {
      Points corners;
      layer::failCall("clEnqueueMapBuffer", nth, CL_MAP_FAILURE);
      EXPECT_FALSE(find(plane.memory(), info, corners)) << nth;
      EXPECT_EQ(journal_.take(), refused);
      EXPECT_EQ(layer::live().mappings(), 0);
    }
    Points corners;
    EXPECT_TRUE(find(plane.memory(), info, corners));
  }
  for (auto* const find : {getRangeTh1, getRangeTh2}) {
    Points corners;
    layer::failCall("clEnqueueNDRangeKernel", 1, CL_OUT_OF_RESOURCES);
    EXPECT_FALSE(find(10, 10, plane.memory(), size.rows, size.cols, corners));
    EXPECT_EQ(journal_.take(), refused);
    layer::failCall("clEnqueueNDRangeKernel", 2, CL_OUT_OF_RESOURCES);
    EXPECT_TRUE(find(10, 10, plane.memory(), size.rows, size.cols, corners));
    EXPECT_EQ(corners, Points{});
    EXPECT_EQ(journal_.take(), refused);
  }
}

TEST_P(Corners, OfTheSecondThreadLeaveTheScratchOfTheFirstAlone) {
  searchAt(kLargest, 2);
  const std::size_t bytes = 4 * kLargest.bytes();
  const Bytes marks = Random(12).bytes(bytes);
  ASSERT_EQ(clEnqueueWriteBuffer(commandQueue, grad_bound_tempOneCl, CL_TRUE, 0, bytes,
                                 marks.data(), 0, nullptr, nullptr),
            CL_SUCCESS);
  const CardPlane plane(cutOf(kLargest, 1).bytes);
  Points corners;
  EXPECT_TRUE(findHarrisCornerCoordianteFunClTwo(plane.memory(),
                                                 {0, 1, kLargest.rows, kLargest.cols}, corners));
  EXPECT_EQ(readBack(grad_bound_tempOneCl, bytes), marks);
}

}  // namespace
