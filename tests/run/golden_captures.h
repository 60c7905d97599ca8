// SPDX-License-Identifier: Apache-2.0
/// \file
/// The captures whose results are pinned to the byte in golden.txt.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tests/run/captures.h"

/// A capture. The noisy ones let the weights of the fusion and the corner responses reach the
/// result.
struct GoldenCapture {
  std::string name;
  CaptureKind kind;
  /// With noise and changing exposure.
  bool noisy;
  /// The displacement is given along with each frame.
  bool hinted;
};

inline void PrintTo(const GoldenCapture& capture, std::ostream* out) { *out << capture.name; }

std::vector<GoldenCapture> goldenCaptures();

/// Stitches the capture; 16 digits over everything that the caller is given.
std::string digestOf(const GoldenCapture& capture);
