// SPDX-License-Identifier: Apache-2.0
/// \file
/// The simulated captures that several tests stitch, and what their mosaics have to look like.
#pragma once

#include <opencv2/core/mat.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "framequilt/records.h"
#include "tests/support/capture_run.h"
#include "tests/support/points.h"
#include "tests/support/scene.h"

inline SPoint operator+(SPoint a, SPoint b) { return {a.x + b.x, a.y + b.y}; }
inline SPoint operator-(SPoint a, SPoint b) { return {a.x - b.x, a.y - b.y}; }

/// The settings that a capture is stitched with.
struct CaptureKind {
  int channels, scale, stitchMode, staticDynamicFlag;

  std::string name() const;
  RunSettings settings() const;
};

inline void PrintTo(const CaptureKind& kind, std::ostream* out) { *out << kind.name(); }

/// Gray and colour, scale 1 and 2, all modes.
std::vector<CaptureKind> everyKind();

/// Six overlapping frames of 320 x 240 working pixels that go right, down, left, far up left, and
/// back. In a dynamic scene judged by motion its contrast is low, else every frame moves too much.
class RoundTrip {
 public:
  explicit RoundTrip(const CaptureKind& kind);

  static constexpr int kFrames = 6;
  /// Top-left corner of frame `index` in working pixels of the picture.
  static SPoint corner(int index);

  /// Frame `index` as the camera gives it.
  Frame frame(int index) const;
  /// The whole picture at working size.
  Frame workingPicture() const;

  /// Frame 0 as the reference, then all others.
  std::vector<FrameOutcome> play(CaptureRun& run) const;

 private:
  int scale_;
  Frame exposed(Frame frame) const;
  bool lowContrast_;
  Scene scene_;
};

/// A frame in a mosaic: its corner in the picture.
struct Placement {
  SPoint corner;
  int rows, cols;
};

/// Checks every pixel of `mosaic` against `picture` (at working size), whose pixel (0, 0) lies at
/// `origin` of the mosaic. `frames` were joined in this order, the first is the reference; where
/// none lies the mosaic has to be black.
///
/// In colour a fusion of equal pixels changes nothing. In gray each takes a little (255 / 256,
/// truncated): known exactly where one frame lies, within the number of fusions elsewhere.
void expectMosaicShows(const cv::Mat& mosaic, const Frame& picture, SPoint origin,
                       const std::vector<Placement>& frames);
