// SPDX-License-Identifier: Apache-2.0
/// \file
/// A run of the library, driven frame by frame as a host does it.
#pragma once

#include <cstddef>
#include <memory>
#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "framequilt/records.h"
#include "tests/support/digest.h"
#include "tests/support/scene.h"

class RecordedReports;

struct RunSettings {
  int rows = 240, cols = 320, channels = 1;
  int cornerBudget = 1;
  int maxRow = 20000, maxCol = 20000;
  /// 1: frames are judged by motion, 0: by the overlap.
  int stitchMode = 1;
  int staticDynamicFlag = 0;
  int frameScale = 1;

  /// The shape of `frame`.
  static RunSettings forFrame(const Frame& frame);
};

/// A known displacement of the frame, given along with it.
struct Hint {
  int dx = 0, dy = 0;
  bool holds = false;
};

/// What one call gave.
struct FrameOutcome {
  int result = 0;
  SPoint topLeft = {}, bottomRight = {};
  /// Shares its pixels with the run.
  cv::Mat mosaic;
  stitchflags flags = {};
  /// The position before the call.
  SPoint formerPosition = {};
  /// The caller's frames as the call left them; `reference` only on a first call.
  std::vector<unsigned char> reference, frame;
  /// The engine's lines during the call, of the caller's thread.
  std::vector<std::string> lines;

  /// The frame moved the position, so it lies in the mosaic now.
  bool joined() const;
};

/// Opens a run, feeds it frames, and stops it at the end of the scope. One at a time. The frames
/// are copied: the library may overwrite what it is given.
class CaptureRun {
 public:
  explicit CaptureRun(const RunSettings& settings);
  ~CaptureRun();
  CaptureRun(const CaptureRun&) = delete;
  CaptureRun& operator=(const CaptureRun&) = delete;

  /// Starts the mosaic with `reference` and takes `frame`.
  FrameOutcome first(const Frame& reference, const Frame& frame, Hint hint = {});
  FrameOutcome next(const Frame& frame, Hint hint = {});

  /// The frames at `path[0]` (the reference), `path[1]`, ... of `scene`; one outcome for each from
  /// the second on.
  std::vector<FrameOutcome> play(const Scene& scene, const std::vector<SPoint>& path);

 private:
  FrameOutcome feed(const Frame* reference, const Frame& frame, Hint hint);

  RunSettings settings_;
  std::unique_ptr<RecordedReports> reports_;
  SPoint position_ = {};
};

/// Adds what the caller sees after a call: result, box, mosaic (its size, and its pixels within the
/// box) and record.
void addOutcome(Digest& digest, const FrameOutcome& outcome);

/// The centre of the mosaic that a run starts with: where the reference lies.
SPoint firstPosition(const RunSettings& settings, int scaleOfRun = 1);
