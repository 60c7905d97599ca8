// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core/mat.hpp>
#include <optional>
#include <string_view>

#include "framequilt/records.h"
#include "framequilt/session.h"
#include "interface/backend_access.h"
#include "interface/backend_start.h"

namespace framequilt {

/// What one call of the engine gave; every measure is the call's own.
struct EngineCall {
  int result = 0;        ///< Of the entry point.
  bool blended = false;  ///< The frame lies in the mosaic now.
  stitchflags record{};
  std::optional<int> motion;
  cv::Point growth;  ///< By how much the mosaic grew at its left and top.
  Limits limits;     ///< Of the backend that served it.
};

/// One run of the engine, told what to do call by call.
class EngineRun {
 public:
  /// Starts the run. \throws Error, std::bad_alloc.
  explicit EngineRun(const SessionOptions& options);

  /// "opencl" or "host".
  std::string_view backend() const { return engine_.usesOpencl() ? "opencl" : "host"; }

  /// Begins the mosaic (anew) with `reference` and offers `frame`. Both are packed and of the run's
  /// shape; with the overlap criterion the host overwrites both. `hint` in frame pixels.
  /// \throws std::bad_alloc, cv::Exception
  EngineCall begin(cv::Mat& reference, cv::Mat& frame, std::optional<cv::Point> hint);
  /// Offers `frame` beside the reference that the run keeps.
  EngineCall next(cv::Mat& frame, std::optional<cv::Point> hint);

  // As the last call left them.
  const cv::Mat& matrix() const { return matrix_; }  ///< The mosaic with its margins.
  cv::Rect filledBox() const;
  /// Of the frame placed last.
  cv::Point position() const { return {record_.position.x, record_.position.y}; }

  /// Where the first frame lies in a mosaic that has just begun.
  cv::Point firstPosition() const;

 private:
  EngineCall call(unsigned char* reference, cv::Mat& frame, std::optional<cv::Point> hint);

  SessionOptions options_;
  StartedEngine engine_;
  const BackendAccess& access_;
  SPoint topLeft_{};
  SPoint bottomRight_{};
  cv::Mat matrix_;
  stitchflags record_{};
};

}  // namespace framequilt
