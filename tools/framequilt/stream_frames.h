// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "tools/framequilt/frame_source.h"
#include "tools/framequilt/frame_stepper.h"

namespace framequilt::tool {

/// Makes frames of one shape from what a video or a camera gives: colour, of the size of the first.
/// The others are left out; the first of a kind is remarked on.
class StreamFrames {
 public:
  using Pull = std::function<std::optional<NumberedFrame>()>;

  /// Takes frames from `pull` until one can be used; `empty` tells when none came.
  /// \param name  "clip.avi" or "camera:0".
  StreamFrames(std::string name, Pull pull, const InputSettings& settings);

  bool empty() const { return shape_.rows == 0; }
  CaptureShape shape() const { return shape_; }
  std::size_t skipped() const { return skipped_; }

  /// The frame, named "clip.avi#12"; none once `pull` gives none.
  std::optional<SourceFrame> next();

 private:
  bool fits(const NumberedFrame& frame);
  std::optional<NumberedFrame> pullFitting();

  std::string name_;
  Pull pull_;
  InputSettings settings_;
  CaptureShape shape_{0, 0, 3};
  std::optional<NumberedFrame> first_;  // Waits for the first call of `next`.
  std::size_t skipped_ = 0;
  bool damageNoted_ = false;
  bool sizeNoted_ = false;
};

}  // namespace framequilt::tool
