// SPDX-License-Identifier: Apache-2.0
/// \file
/// Captures whose frames take every road: pairs, joined, refused and growing frames.
#pragma once

#include <string>
#include <vector>

#include "tests/support/capture_run.h"
#include "tests/support/scene.h"

struct FaultCapture {
  std::string name;
  RunSettings settings;
  std::vector<Frame> frames;  ///< The first two are the pair.
};

/// gtest's name of a parameter.
inline void PrintTo(const FaultCapture& capture, std::ostream* out) { *out << capture.name; }

/// Motion and overlap criterion, static and dynamic scene; the last frame but one is of another
/// scene.
const std::vector<FaultCapture>& smallCaptures();
/// Large colour frames, which two threads work on; frames so tall that the last one makes the
/// mosaic grow.
const std::vector<FaultCapture>& largeCaptures();
std::vector<FaultCapture> allCaptures();
