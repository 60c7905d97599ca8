// SPDX-License-Identifier: Apache-2.0
// Offsets found on a card by its two corner threads, against those of the host.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "cpu/offset_estimation.h"
#include "cpu/run_state.h"
#include "features/features_state.h"
#include "opencl/OpenclJointOffset.h"
#include "opencl/OpenclJointState.h"
#include "tests/opencl/both_backends.h"
#include "tests/support/points.h"
#include "tests/support/scene.h"

namespace {

namespace layer = framequilt::opencl_layer;

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
      EXPECT_EQ(journal_.take(), Entries{"imageMosaicFun in"});
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
  EXPECT_EQ(journal_.take(), Entries(2, "ptr is null"));
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

}  // namespace
