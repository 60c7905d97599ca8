// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <framequilt/framequilt.h>

#include <opencv2/core/mat.hpp>

namespace framequilt::tool {

struct RunSettings {
  int rows;  ///< Size of every frame.
  int cols;
  int channels;               ///< 3 or 1.
  bool overlapMode = false;   ///< Judge frames by their overlap instead of by motion.
  bool dynamicScene = false;  ///< Narrow limits, for a scene that moves by itself.
  int scale = 1;              ///< Divisor from frame to mosaic pixels, 1 or 2.
  int cornerBudget = 1;
  int maxRows = 20000;  ///< Mosaic size that counts as full; the product fits 31 bits.
  int maxCols = 20000;
};

/// Why a frame is not in the mosaic.
enum class Refusal {
  kNone,
  kNoOverlap,
  kTooFewMatches,
  kMovedTooLittle,
  kMovedTooFar,
  kMovingScene,
  kBrightness,
  kSharpness,
};

struct Outcome {
  enum class Verdict {
    kWaiting,  ///< The first frame: placed as soon as another joins it.
    kJoined,
    kRefused,
    kBecameFirst,  ///< Refused, and put in the place of a first frame that nothing joined.
  };

  Verdict verdict;
  Refusal refusal = Refusal::kNone;
  /// Of a joined frame: its top-left corner in frame pixels from that of the first placed frame.
  cv::Point placement{};
  int matches = 0;    ///< Corner pairs behind a joined frame.
  bool full = false;  ///< The mosaic has reached its limit: offer no more.
};

/// What the driver calls: the library's entry points, unless a test puts its own in their place.
struct EntryPoints {
  decltype(&initJoint) start = &initJoint;
  decltype(&stichingImagedJoint) stitch = &stichingImagedJoint;
  decltype(&uinitJoint) stop = &uinitJoint;
};

/// One run of the library, frame by frame. One at a time in a process.
class RunDriver {
 public:
  /// Starts the run. \throws ToolError for frames too large or a failed start, std::bad_alloc.
  explicit RunDriver(const RunSettings& settings, const EntryPoints& engine = {});
  RunDriver(const RunDriver&) = delete;
  RunDriver& operator=(const RunDriver&) = delete;

  /// Hands over the next frame, packed and of the run's shape; its pixels stay as they are.
  /// \throws std::bad_alloc, cv::Exception; the mosaic so far stays.
  Outcome offer(const cv::Mat& frame);

  /// The filled box of the mosaic, empty before a frame has joined. Shares the run's pixels: valid
  /// until the next frame changes them.
  cv::Mat mosaic() const;

 private:
  // Stops the run also when the driver's constructor throws after the start.
  struct Stop {
    explicit Stop(decltype(&uinitJoint) action) : stop(action) {}
    ~Stop() { stop(); }
    Stop(const Stop&) = delete;
    Stop& operator=(const Stop&) = delete;
    decltype(&uinitJoint) stop;
  };

  int stitch(const cv::Mat& frame);
  void keepReference();
  Outcome joined(cv::Point previousPosition);
  Outcome refused(const cv::Mat& frame, int result, int previousMatches);
  Refusal reason(int result, int previousMatches) const;
  cv::Point position() const { return {flags_.position.x, flags_.position.y}; }
  cv::Point middleOfNewMosaic() const;

  RunSettings settings_;
  EntryPoints engine_;
  Stop stop_;

  cv::Mat first_;                // Until the run keeps a reference of its own.
  bool keepsReference_ = false;  // A pair has qualified.
  int failures_ = 0;             // Frames refused against this first frame.
  bool anyJoined_ = false;

  cv::Point origin_;  // Of the first placed frame, in pixels of the mosaic as it is now.
  SPoint topLeft_{};
  SPoint bottomRight_{};
  cv::Mat mosaic_;
  stitchflags flags_{};
};

}  // namespace framequilt::tool
