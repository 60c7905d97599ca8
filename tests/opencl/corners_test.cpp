// SPDX-License-Identifier: Apache-2.0
// Corners and offsets found on a card, against those of the host.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "cpu/corner_worker.h"
#include "cpu/offset_estimation.h"
#include "cpu/run_state.h"
#include "features/features_state.h"
#include "features/harris.h"
#include "framequilt/tuning.h"
#include "opencl/OpenclJointCorners.h"
#include "opencl/OpenclJointOffset.h"
#include "opencl/OpenclJointState.h"
#include "tests/opencl/both_backends.h"
#include "tests/support/points.h"
#include "tests/support/random_images.h"
#include "tests/support/scene.h"
#include "tests/support/scoped_value.h"

namespace {

namespace layer = framequilt::opencl_layer;

using Entries = Journal::Entries;

/// No corner lies within 20 pixels of the edges of the reduced image.
constexpr PlaneSize kTooSmall[] = {{1, 1}, {5, 5}, {16, 16}, {40, 60}, {81, 200}};
constexpr PlaneSize kLargeEnough[] = {{90, 90}, {97, 131}, {128, 160}, {240, 320}};

Frame cutOf(PlaneSize size, int channels, SPoint corner = {40, 50}) {
  static const Scene gray(420, 500, 1, 21);
  static const Scene colour(420, 500, 3, 21);
  return (channels == 1 ? gray : colour).cut(corner.x, corner.y, size.rows, size.cols);
}

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
    std::replace(lines.begin(), lines.end(), Journal::line("HarrissCornerSPoint size is 0"),
                 Journal::line("HarrissCornerSPoint22222222222 size is 0"));
    if (gray_pointdownscal_row == 0) {
      // The card is left alone, and the host's steps with it.
      lines = Entries(2, Journal::line("HarrissCornerSPoint22222222222 size is 0"));
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
  EXPECT_EQ(journal_.take(), Entries(2, Journal::line("errNum failed")));
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
  const Entries refused = {Journal::line("errNum failed")};
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

// --- Offsets: the functions work at the size of the run ---

struct Estimate {
  bool found = false;
  int dx = -1, dy = -1, count = -1;
  Points reference, frame;
};

void expectSame(const Estimate& card, const Estimate& host) {
  EXPECT_EQ(card.found, host.found);
  EXPECT_EQ(card.dx, host.dx);
  EXPECT_EQ(card.dy, host.dy);
  EXPECT_EQ(card.count, host.count);
  EXPECT_EQ(card.reference, host.reference);
  EXPECT_EQ(card.frame, host.frame);
}

class Offsets : public BothBackends {
 protected:
  static Estimate onCard(Frame reference, Frame frame) {
    Estimate estimate;
    estimate.found = imageMosaicFunCL(reference.bytes.data(), frame.bytes.data(),
                                      {0, reference.channels, reference.rows, reference.cols},
                                      estimate.dx, estimate.dy, estimate.count);
    estimate.reference = HarrissCornerSPointOneArrayCL;
    estimate.frame = HarrissCornerSPointTwoArrayCL;
    return estimate;
  }

  static Estimate onHost(Frame reference, Frame frame) {
    Estimate estimate;
    estimate.found = imageMosaicFun(reference.bytes.data(), frame.bytes.data(),
                                    {0, reference.channels, reference.rows, reference.cols},
                                    estimate.dx, estimate.dy, estimate.count);
    estimate.reference = HarrissCornerSPointOneArray;
    estimate.frame = HarrissCornerSPointTwoArray;
    return estimate;
  }

  static void hint(SPoint displacement) {
    clMotordx = cpuMotordx = displacement.x;
    clMotordy = cpuMotordy = displacement.y;
    clMotorflage = cpuMotorflage = true;
  }

  void TearDown() override {
    clMotorflage = cpuMotorflage = false;
    BothBackends::TearDown();
  }
};

FRAMEQUILT_IN_EITHER_MEMORY(Offsets);

TEST_P(Offsets, AreTheHosts) {
  for (const int channels : {1, 3}) {
    for (const SPoint step : {SPoint{60, 40}, {-36, 70}, {90, -46}, {-40, -50}, {0, 0}}) {
      SCOPED_TRACE(std::to_string(channels) + " channels, step " + std::to_string(step.x) + ", " +
                   std::to_string(step.y));
      const Frame reference = cutOf(kLargest, channels, {60, 80});
      const Frame frame = cutOf(kLargest, channels, {60 + step.x, 80 + step.y});
      journal_.take();
      const Estimate card = onCard(reference, frame);
      EXPECT_EQ(journal_.take(), Entries{Journal::line("imageMosaicFun in")});
      expectSame(card, onHost(reference, frame));
      EXPECT_TRUE(card.found);
      EXPECT_EQ((SPoint{card.dx, card.dy}), step);
    }
  }
}

TEST_P(Offsets, WithAHintAreTheHosts) {
  for (const int channels : {1, 3}) {
    // The vertical sense of a hint to the left is inverted.
    for (const auto& [step, given] : {std::pair<SPoint, SPoint>{{90, 45}, {90, 45}},
                                      {{90, -45}, {90, -45}},
                                      {{-40, 60}, {-40, -60}},
                                      {{-40, -50}, {-40, 50}},
                                      {{90, 45}, {500, 500}}}) {
      SCOPED_TRACE(std::to_string(channels) + " channels, hint " + std::to_string(given.x) + ", " +
                   std::to_string(given.y));
      const Frame reference = cutOf(kLargest, channels, {60, 80});
      const Frame frame = cutOf(kLargest, channels, {60 + step.x, 80 + step.y});
      hint(given);
      journal_.take();
      journal_.takeOfWorkers();
      const Estimate card = onCard(reference, frame);
      const Entries texts = journal_.takeOfWorkers();
      EXPECT_EQ(std::count(texts.begin(), texts.end(), Journal::debug("getRangeTh1 in")),
                channels == 1 ? 2 : 0);
      expectSame(card, onHost(reference, frame));
      EXPECT_EQ(card.found, given.x != 500);
    }
  }
}

TEST_P(Offsets, OfUnrelatedOrEmptyImagesAreNone) {
  const Frame texture = cutOf(kLargest, 1);
  const Frame unrelated = noiseFrame(kLargest.rows, kLargest.cols, 1, 77);
  const Frame flat(kLargest.rows, kLargest.cols, 1, 90);
  for (const auto& [reference, frame] : {std::pair<Frame, Frame>{texture, unrelated},
                                         {texture, flat},
                                         {flat, texture},
                                         {flat, flat}}) {
    const Estimate card = onCard(reference, frame);
    expectSame(card, onHost(reference, frame));
    EXPECT_FALSE(card.found);
    EXPECT_EQ(card.dx, -1);
  }
}

TEST_P(Offsets, OfNullAreRefusedWithALine) {
  Bytes image(kLargest.bytes(), 9);
  int dx = 1;
  int dy = 2;
  int count = 3;
  const imgInfo info = {0, 1, kLargest.rows, kLargest.cols};
  EXPECT_FALSE(imageMosaicFunCL(nullptr, image.data(), info, dx, dy, count));
  EXPECT_FALSE(imageMosaicFunCL(image.data(), nullptr, info, dx, dy, count));
  EXPECT_EQ(journal_.take(), Entries(2, Journal::line("ptr is null")));
  EXPECT_EQ(dx, 1);
  EXPECT_EQ(dy, 2);
  EXPECT_EQ(count, 3);
}

TEST_P(Offsets, DoNotDependOnHowTheTwoThreadsMeet) {
  const Frame reference = cutOf(kLargest, 3, {60, 80});
  const Frame frame = cutOf(kLargest, 3, {120, 110});
  const Estimate host = onHost(reference, frame);
  ASSERT_TRUE(host.found);
  for (unsigned seed = 1; seed <= 20; ++seed) {
    SCOPED_TRACE(seed);
    layer::jitter(seed, std::chrono::microseconds(300));
    expectSame(onCard(reference, frame), host);
  }
  layer::jitter(0, std::chrono::microseconds(0));
}

/// The buffer of argument `index` at every launch of `kernel`.
std::vector<const void*> argumentsOf(const std::string& kernel, unsigned index) {
  std::vector<const void*> found;
  const void* current = nullptr;
  for (const layer::TraceEvent& event : layer::trace()) {
    if (event.kernel != kernel) continue;
    if (event.kind == layer::TraceKind::kSetArgument && event.argument == index) {
      std::memcpy(&current, event.value.data(), sizeof(current));
    }
    if (event.kind == layer::TraceKind::kLaunch) found.push_back(current);
  }
  return found;
}

TEST_P(Offsets, ScratchOfTheFirstThreadIsNamedOnceByTheSecond) {
  const Frame reference = cutOf(kLargest, 1, {60, 80});
  layer::resetRecords();
  onCard(reference, cutOf(kLargest, 1, {120, 110}));
  using Buffers = std::vector<const void*>;
  constexpr unsigned kScratch = 4;
  constexpr unsigned kPadded = 5;
  EXPECT_EQ(argumentsOf("opencvcopyFilter2DBorderRowFloat", kScratch),
            Buffers(3, grad_bound_tempOneCl));
  EXPECT_EQ(argumentsOf("opencvcopyFilter2DBorderRowFloat", kPadded), Buffers(3, grad_boundOneCl));
  EXPECT_EQ(argumentsOf("opencvcopyFilter2DBorderRowFloat2", kScratch),
            (Buffers{grad_bound_tempTwoCl, grad_bound_tempTwoCl, grad_bound_tempOneCl}));
  EXPECT_EQ(argumentsOf("opencvcopyFilter2DBorderRowFloat2", 0),
            (Buffers{grad_x2ClTwo, grad_y2ClTwo, grad_xyClTwo}));
  EXPECT_EQ(argumentsOf("opencvcopyFilter2DBorderRowFloat2", kPadded), Buffers(3, grad_boundTwoCl));
  EXPECT_EQ(argumentsOf("opencvcopyFilter2DBorderColFloat2", kScratch),
            Buffers(3, grad_bound_tempTwoCl));
  EXPECT_EQ(argumentsOf("opencvcopyFilter2DBorderColFloat2", kPadded), Buffers(3, grad_boundTwoCl));
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
