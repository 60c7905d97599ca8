// SPDX-License-Identifier: Apache-2.0
/// \file
/// Runs that are made to fail: a small capture, its driver, and what is looked at between calls.
#pragma once

#include <CL/cl.h>

#include <cstdint>
#include <mutex>
#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "framequilt/records.h"
#include "tests/support/capture_run.h"
#include "tests/support/scene.h"

/// Every line and debug text, of all threads, in the order in which they come. One at a time.
class SpokenTexts {
 public:
  SpokenTexts();
  ~SpokenTexts();
  SpokenTexts(const SpokenTexts&) = delete;
  SpokenTexts& operator=(const SpokenTexts&) = delete;

  void add(std::string text);
  /// Those since the last call.
  std::vector<std::string> take();

 private:
  std::mutex mutex_;
  std::vector<std::string> texts_;
};

/// What `texts` has beyond `usual`, each as often as it is there too much.
std::vector<std::string> beyond(std::vector<std::string> usual, std::vector<std::string> texts);

/// Three frames of 200 x 150 pixels that overlap.
struct SmallCapture {
  int channels = 1;
  int stitchMode = 1;
  bool hinted = false;

  RunSettings settings() const;
};

/// The entry points over such a capture, on the card or, where there is none, on the host.
class DrivenRun {
 public:
  explicit DrivenRun(const SmallCapture& capture);
  /// Stops the run.
  ~DrivenRun();
  DrivenRun(const DrivenRun&) = delete;
  DrivenRun& operator=(const DrivenRun&) = delete;

  /// True when the card serves the run.
  bool start();
  void stop();

  /// The mosaic begins with frame 0 and takes frame 1.
  FrameOutcome first();
  /// Frame 1 or 2 for a mosaic that has begun.
  FrameOutcome next(int index);

 private:
  FrameOutcome offer(Frame* reference, int index);

  SmallCapture capture_;
  std::vector<Frame> frames_;
  /// Memory of the last call. Kept: the library has to be done with it, a test need not show that
  /// by a crash.
  Frame reference_, frame_;
};

/// What a caller sees after a call, the mosaic's pixels included.
std::uint64_t digestOf(const FrameOutcome& outcome);

/// A run of the first pair, and what a caller sees of it on the card and on the host alike.
/// \param onCard  Where the run has to come about.
std::uint64_t digestOfWholeRun(const SmallCapture& capture, bool onCard);

/// What of the OpenCL backend's run a later frame depends on.
struct RunState {
  cv::Mat filled;
  SPoint topLeft, bottomRight;
  stitchflags flags;
  std::vector<unsigned char> reference, lastFrame;

  static RunState ofRun(const SmallCapture& capture);
  void putBack() const;
};
/// Mosaic, corners, position and reference are as they were; the frame last seen need not be.
void expectSameMosaicAndReference(const RunState& now, const RunState& before);

/// Context, queue and program of a run, kept beyond it. A program takes long to build, and a start
/// takes what a host has put into the globals.
class KeptDevice {
 public:
  KeptDevice() = default;
  ~KeptDevice();
  KeptDevice(const KeptDevice&) = delete;
  KeptDevice& operator=(const KeptDevice&) = delete;

  /// Of the open run.
  void keep();
  /// For the next start.
  void handOver() const;
  /// Only these live, and the one buffer that outlives a stop; nobody else holds them.
  void expectAlone() const;

 private:
  cl_context context_ = nullptr;
  cl_command_queue queue_ = nullptr;
  cl_program program_ = nullptr;
};
