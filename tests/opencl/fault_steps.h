// SPDX-License-Identifier: Apache-2.0
/// \file
/// The OpenCL calls of one frame, and what becomes of the frame when one of them fails.
#pragma once

#include <string>
#include <vector>

#include "tests/support/opencl_layer.h"

/// The thread that makes a call.
enum class Lane { kCaller, kCornersOfReference, kCornersOfNewFrame };

/// What a call is part of.
enum class Stage { kPreJudgement, kReferencePreJudgement, kCorners, kMotion, kOverlap, kBlend };

struct Step {
  Lane lane{};
  int nth = 0;  ///< Of the lane's calls of this frame.
  Stage stage{};
  framequilt::opencl_layer::TraceEvent call;

  std::string name() const;
};

/// Of a frame that nothing failed in, as the layer has traced it. `caller` is the number of the
/// thread that offered it.
std::vector<Step> stepsOf(const std::vector<framequilt::opencl_layer::TraceEvent>& trace,
                          int caller, int stitchMode);

enum class Outcome {
  kThreadEnds,  ///< As kFails, and the corner thread is gone.
  kFails,       ///< -1.
  kRefused,     ///< Understood and not blended.
  kJoined       ///< Nothing is missing.
};

struct Consequence {
  Outcome outcome{};
  std::vector<std::string> texts;  ///< What is said beyond the usual.
};

/// When the call of `step`, and no other, fails.
Consequence consequenceOf(const Step& step);
