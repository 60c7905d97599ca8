// SPDX-License-Identifier: Apache-2.0
#include "interface/engine_run.h"

#include <new>

#include "framequilt/framequilt.h"
#include "interface/session_options.h"

namespace framequilt {
namespace {

/// In working pixels. The engine's strips invert the vertical sense where the view moves left.
cv::Point forEngine(cv::Point hint, int scale) {
  const cv::Point working(hint.x / scale, hint.y / scale);
  return {working.x, working.x < 0 ? -working.y : working.y};
}

}  // namespace

EngineRun::EngineRun(const SessionOptions& options)
    : options_(options),
      engine_(options),
      access_(engine_.usesOpencl() ? openclAccess() : hostAccess()) {}

EngineCall EngineRun::begin(cv::Mat& reference, cv::Mat& frame, std::optional<cv::Point> hint) {
  const cv::Point middle = firstPosition();
  record_.position = {middle.x, middle.y};
  return call(reference.data, frame, hint);
}

EngineCall EngineRun::next(cv::Mat& frame, std::optional<cv::Point> hint) {
  return call(nullptr, frame, hint);
}

EngineCall EngineRun::call(unsigned char* reference, cv::Mat& frame,
                           std::optional<cv::Point> hint) {
  const cv::Point previous = position();
  const cv::Point displacement = forEngine(hint.value_or(cv::Point()), options_.scale);
  access_.forgetMeasures();
  EngineCall call;
  try {
    call.result = stichingImagedJoint(reference, frame.data, reference != nullptr ? 0 : 1,
                                      options_.scale, displacement.x, displacement.y,
                                      hint.has_value(), topLeft_, bottomRight_, matrix_, record_);
  } catch (...) {
    // The overlap measures of the host and every blend work in the memory of the reference.
    access_.restoreReference();
    throw;
  }
  // The workers keep what they catch to themselves.
  if (call.result < 0 && access_.lackedMemoryInCall()) throw std::bad_alloc();
  call.record = record_;
  call.motion = access_.motionOfCall();
  call.limits = access_.limits();
  // Of all the fields, the position alone changes with every blended frame and with no other.
  call.blended = call.result >= 0 && position() != previous;
  if (call.blended) {
    call.growth = position() - previous - cv::Point(record_.offsetX, record_.offsetY);
  }
  const bool refused = call.result >= 0 && record_.stitch_flags != 1;
  if (refused && options_.criterion == Criterion::kOverlap && access_.refusalTakesReference) {
    access_.restoreReference();
  }
  return call;
}

cv::Rect EngineRun::filledBox() const {
  const cv::Rect box(topLeft_.x, topLeft_.y, bottomRight_.x - topLeft_.x,
                     bottomRight_.y - topLeft_.y);
  return box & cv::Rect({}, matrix_.size());
}

cv::Point EngineRun::firstPosition() const {
  return {kNewMosaicSide / 2 - options_.cols / options_.scale / 2,
          kNewMosaicSide / 2 - options_.rows / options_.scale / 2};
}

}  // namespace framequilt
