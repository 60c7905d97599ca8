// SPDX-License-Identifier: Apache-2.0
/// \file
/// Frames of 240 x 320 pixels on either backend, with offsets that the tests choose.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <opencv2/core/mat.hpp>

#include "tests/opencl/device_fixture.h"
#include "tests/opencl/scripted_offsets.h"
#include "tests/run/captures.h"
#include "tests/support/guarded.h"

namespace frame_rules {

inline constexpr int kRows = 240, kCols = 320;
inline constexpr int kMotion = 1, kOverlap = 0;
inline constexpr int kStatic = 0, kDynamic = 1;
/// A step that both directions allow; the usual script.
inline constexpr ScriptedOffset kStep = {60, 40};

RunSettings settingsFor(int stitchMode, int staticDynamicFlag, int channels = 1);

Frame flat(int value, int channels = 1);
Frame noise(std::uint64_t seed, int channels = 1, int low = 0, int high = 255);
/// As pre-judgement leaves them.
Bytes withoutZeros(Bytes bytes);

/// The filled box; shares its pixels with the run.
cv::Mat boxOf(const FrameOutcome& outcome);
bool equal(const cv::Mat& one, const cv::Mat& two);
/// What the next frame is matched against.
Bytes referenceOnCard();

struct Call {
  int result;
  SPoint left = {1, 2}, right = {3, 4};
  cv::Mat mosaic;
  stitchflags flags = {};
};
/// The card's part of a call, whether a run is open there or not.
Call callCard(unsigned char* src, unsigned char* dest, int frameIndex);

enum class On { kCard, kHost };

class Fixture : public EitherMemory {
 protected:
  Fixture() { scriptOffset(kStep); }
  ~Fixture() override { whileEstimating({}); }

  /// Opens a run there, which is checked.
  static std::unique_ptr<CaptureRun> openRun(On backend, const RunSettings& settings);
};

}  // namespace frame_rules
