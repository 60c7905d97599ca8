// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <functional>
#include <opencv2/core/mat.hpp>
#include <vector>

#include "tools/framequilt/run_driver.h"

/// Stands in for the library: keeps the calls and answers them as a test says. One at a time.
class FakeEngine {
 public:
  /// What the engine holds; an answer changes it, every call copies it out.
  struct Run {
    stitchflags flags{};
    SPoint topLeft{};
    SPoint bottomRight{};
    cv::Mat mosaic;
  };
  struct Call {
    std::vector<unsigned char> reference;  ///< Empty: a null pointer.
    std::vector<unsigned char> frame;
    int frameIndex;
    int frameScale;
    bool motorFlag;
  };
  using Answer = std::function<int(Run&)>;

  FakeEngine() { active() = this; }
  ~FakeEngine() { active() = nullptr; }
  FakeEngine(const FakeEngine&) = delete;
  FakeEngine& operator=(const FakeEngine&) = delete;

  framequilt::tool::EntryPoints entryPoints() const { return {&start, &stitch, &stop}; }

  std::vector<Answer> answers;  ///< In the order of the calls.
  bool overwritesFrames = false;
  std::function<bool()> onStart = [] { return true; };

  std::vector<int> startArguments;
  std::vector<Call> calls;
  int stops = 0;

  // --- Answers ---

  static Answer noEstimate() {
    return [](Run&) { return -1; };
  }
  /// An estimate that qualifies but is not blended.
  static Answer qualified(int dx, int dy) {
    return [=](Run& run) {
      run.flags.stitch_flags = 1;
      run.flags.matchNum = 50;
      run.flags.offsetX = dx;
      run.flags.offsetY = dy;
      return 0;
    };
  }
  /// A blended frame; the mosaic grows by (growLeft, growTop) pixels at these sides.
  static Answer blended(int dx, int dy, int growLeft = 0, int growTop = 0) {
    return [=](Run& run) {
      qualified(dx, dy)(run);
      run.flags.position.x += dx + growLeft;
      run.flags.position.y += dy + growTop;
      return 0;
    };
  }

 private:
  static FakeEngine*& active() {
    static FakeEngine* instance = nullptr;
    return instance;
  }

  static bool start(int rows, int cols, int channels, int budget, int maxRow, int maxCol, int mode,
                    int dynamic) {
    active()->startArguments = {rows, cols, channels, budget, maxRow, maxCol, mode, dynamic};
    return active()->onStart();
  }

  static bool stop() {
    ++active()->stops;
    return true;
  }

  static int stitch(unsigned char* src, unsigned char* dest, int frameIndex, int frameScale,
                    int /*motorDx*/, int /*motorDy*/, bool motorFlag, SPoint& outLeft,
                    SPoint& outRight, cv::Mat& outMosaic, stitchflags& outFlags) {
    FakeEngine& self = *active();
    self.calls.push_back({self.bytes(src), self.bytes(dest), frameIndex, frameScale, motorFlag});
    if (self.overwritesFrames) self.overwrite(src, dest);
    if (frameIndex == 0) self.beginMosaic(frameScale);
    const int result = self.answers.at(self.calls.size() - 1)(self.run_);
    outLeft = self.run_.topLeft;
    outRight = self.run_.bottomRight;
    outMosaic = self.run_.mosaic;
    outFlags = self.run_.flags;
    return result;
  }

  std::size_t frameBytes() const {
    return static_cast<std::size_t>(startArguments[0] * startArguments[1] * startArguments[2]);
  }
  std::vector<unsigned char> bytes(const unsigned char* image) const {
    if (image == nullptr) return {};
    return {image, image + frameBytes()};
  }
  void overwrite(unsigned char* src, unsigned char* dest) const {
    if (src != nullptr) std::fill_n(src, frameBytes(), static_cast<unsigned char>(0xAA));
    std::fill_n(dest, frameBytes(), static_cast<unsigned char>(0xBB));
  }
  void beginMosaic(int frameScale) {
    const int rows = startArguments[0] / frameScale;
    const int cols = startArguments[1] / frameScale;
    run_.flags.position = {3000 - cols / 2, 3000 - rows / 2};
  }

  Run run_;
};
