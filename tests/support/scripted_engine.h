// SPDX-License-Identifier: Apache-2.0
/// \file
/// The engine of the programs that link scripted_engine.cpp: entry points that keep every call and
/// answer it as a test says.
#pragma once

#include <functional>
#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "framequilt/records.h"

/// In front of the library's entry points, and of its search for a device, while it lives. One at a
/// time.
///
/// Its record is that of the library's engine, `flagsCpu` or `flagsCL`: it keeps what nobody
/// clears.
class ScriptedEngine {
 public:
  /// What the machine has, and whether a run starts on the device.
  enum class Device { kNone, kServes, kRefuses };

  /// What the engine holds; an answer changes it, every call copies it out.
  struct Run {
    stitchflags& flags;
    SPoint topLeft{};
    SPoint bottomRight{};
    cv::Mat mosaic;
    cv::Size working;  ///< Of a frame, in mosaic pixels.
  };
  struct Call {
    std::vector<unsigned char> reference;  ///< Empty: a null pointer.
    std::vector<unsigned char> frame;
    int frameIndex;
    int frameScale;
    cv::Point motor;
    bool motorFlag;
  };
  using Answer = std::function<int(Run&)>;

  explicit ScriptedEngine(Device deviceOfMachine = Device::kNone);
  ~ScriptedEngine();
  ScriptedEngine(const ScriptedEngine&) = delete;
  ScriptedEngine& operator=(const ScriptedEngine&) = delete;

  /// In the order of the calls; those after the last find no overlap.
  std::vector<Answer> answers;
  /// As the overlap criterion does, with 0xAA and 0xBB.
  bool overwritesFrames = false;
  std::function<bool()> onStart = [] { return true; };

  /// The start on the device, in words, and what it was told.
  struct DeviceStart {
    std::string kernelFile;  ///< Empty: no program was made.
    int maxRows = 0, maxCols = 0, factor = 0;
  };
  DeviceStart deviceStart;
  std::vector<int> startArguments;
  std::vector<Call> calls;
  int starts = 0;
  int stops = 0;

  // --- Answers ---

  static Answer noEstimate();
  /// So few pairs that they make no estimate.
  static Answer failedWith(int matches);
  /// An estimate that neither qualifies nor is blended.
  static Answer measured(int dx, int dy);
  /// An estimate that qualifies but is not blended.
  static Answer qualified(int dx, int dy);
  /// A blended frame; the mosaic grows by (growLeft, growTop) pixels at these sides first.
  static Answer blended(int dx, int dy, int growLeft = 0, int growTop = 0);
  /// The same, with a mosaic that has reached its limit.
  static Answer full(const Answer& answer);

  // --- For the entry points ---

  static ScriptedEngine& active();
  Device deviceOfMachine() const { return device_; }
  bool start(const std::vector<int>& arguments);
  int stitch(unsigned char* reference, unsigned char* frame, Call call);
  const Run& run() const { return run_; }

 private:
  std::vector<unsigned char> bytes(const unsigned char* image) const;
  void overwrite(unsigned char* reference, unsigned char* frame) const;
  void beginMosaic();

  Device device_;
  Run run_;
};
