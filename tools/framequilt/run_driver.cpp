// SPDX-License-Identifier: Apache-2.0
#include "tools/framequilt/run_driver.h"

#include <framequilt/tuning.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>

#include "tools/framequilt/tool_error.h"

namespace framequilt::tool {
namespace {

/// Side of the mosaic that a run begins with; the first frame lies in its middle.
constexpr int kNewMosaicSide = 6000;
/// Frames that may fail against the same first frame.
constexpr int kMostFailures = 3;

RunSettings checked(const RunSettings& settings) {
  const int side = std::max(settings.rows, settings.cols);
  if (side / settings.scale <= kNewMosaicSide) return settings;
  const bool helped = settings.scale == 1 && side / 2 <= kNewMosaicSide;
  throw ToolError("frames of " + std::to_string(settings.cols) + " x " +
                  std::to_string(settings.rows) + " pixels are more than " +
                  std::to_string(kNewMosaicSide) + " a side" +
                  (helped ? ": use --scale 2" : " even halved: make them smaller"));
}

}  // namespace

RunDriver::RunDriver(const RunSettings& settings, const EntryPoints& engine)
    : settings_(checked(settings)), engine_(engine), stop_(engine.stop) {
  ::scale = settings.scale;
  if (!engine_.start(settings.rows, settings.cols, settings.channels, settings.cornerBudget,
                     settings.maxRows, settings.maxCols, settings.overlapMode ? 0 : 1,
                     settings.dynamicScene ? 1 : 0)) {
    throw ToolError("the worker threads could not be started: close other programs and try again");
  }
}

Outcome RunDriver::offer(const cv::Mat& frame) {
  if (first_.empty() && !keepsReference_) {
    first_ = frame.clone();
    return {Outcome::Verdict::kWaiting};
  }
  const cv::Point previousPosition = keepsReference_ ? position() : middleOfNewMosaic();
  const int previousMatches = flags_.matchNum;
  const int result = stitch(frame);
  // The flag of an estimate that failed is that of an earlier frame.
  if (result >= 0 && flags_.stitch_flags == 1) keepReference();

  // Of all the fields, the position alone changes with every blended frame and with no other.
  const bool blended = result >= 0 && position() != previousPosition;
  Outcome outcome = blended ? joined(previousPosition) : refused(frame, result, previousMatches);
  outcome.full = result == 1;
  return outcome;
}

/// Until a pair has qualified the run keeps no reference: the first frame goes along again, and
/// the mosaic is begun anew.
int RunDriver::stitch(const cv::Mat& frame) {
  // The overlap criterion overwrites the frames of the caller.
  const bool copy = settings_.overlapMode;
  const cv::Mat newFrame = copy ? frame.clone() : frame;
  if (keepsReference_) {
    return engine_.stitch(nullptr, newFrame.data, 1, settings_.scale, 0, 0, false, topLeft_,
                          bottomRight_, mosaic_, flags_);
  }
  const cv::Mat reference = copy ? first_.clone() : first_;
  return engine_.stitch(reference.data, newFrame.data, 0, settings_.scale, 0, 0, false, topLeft_,
                        bottomRight_, mosaic_, flags_);
}

void RunDriver::keepReference() {
  keepsReference_ = true;
  first_.release();
}

Outcome RunDriver::joined(cv::Point previousPosition) {
  if (!anyJoined_) origin_ = middleOfNewMosaic();
  anyJoined_ = true;
  // Growth at the top or left moves the position by more than the offset, and the origin with it.
  origin_ += position() - previousPosition - cv::Point(flags_.offsetX, flags_.offsetY);
  Outcome outcome{Outcome::Verdict::kJoined};
  outcome.placement = (position() - origin_) * settings_.scale;
  outcome.matches = flags_.matchNum;
  return outcome;
}

Outcome RunDriver::refused(const cv::Mat& frame, int result, int previousMatches) {
  Outcome outcome{Outcome::Verdict::kRefused, reason(result, previousMatches)};
  if (keepsReference_) return outcome;
  if (++failures_ == kMostFailures) {
    first_ = frame.clone();
    failures_ = 0;
    outcome.verdict = Outcome::Verdict::kBecameFirst;
  }
  return outcome;
}

Refusal RunDriver::reason(int result, int previousMatches) const {
  if (result < 0) {
    // A failed estimate writes the count only when there were some pairs to count.
    return flags_.matchNum != previousMatches ? Refusal::kTooFewMatches : Refusal::kNoOverlap;
  }
  if (flags_.stitch_flags != 1) {
    if (!settings_.overlapMode) return Refusal::kMovingScene;
    const bool bright = std::abs(flags_.brightOne - flags_.brightTwo) < brightThCpu;
    return bright ? Refusal::kSharpness : Refusal::kBrightness;
  }
  const int movedX = std::abs(flags_.offsetX);
  const int movedY = std::abs(flags_.offsetY);
  const int side = (movedX > movedY ? settings_.cols : settings_.rows) / settings_.scale;
  const float tooFar = (1.0F - ImageOverlap_minCpu) * static_cast<float>(side);
  return static_cast<float>(std::max(movedX, movedY)) < tooFar ? Refusal::kMovedTooLittle
                                                               : Refusal::kMovedTooFar;
}

cv::Point RunDriver::middleOfNewMosaic() const {
  return {kNewMosaicSide / 2 - settings_.cols / settings_.scale / 2,
          kNewMosaicSide / 2 - settings_.rows / settings_.scale / 2};
}

cv::Mat RunDriver::mosaic() const {
  if (!anyJoined_) return {};
  const cv::Rect filled(topLeft_.x, topLeft_.y, bottomRight_.x - topLeft_.x,
                        bottomRight_.y - topLeft_.y);
  return mosaic_(filled & cv::Rect({}, mosaic_.size()));
}

}  // namespace framequilt::tool
