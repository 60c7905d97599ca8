// SPDX-License-Identifier: Apache-2.0
#include "tests/support/capture_run.h"

#include <gtest/gtest.h>

#include "framequilt/framequilt.h"
#include "tests/support/recorded_reports.h"

RunSettings RunSettings::forFrame(const Frame& frame) {
  RunSettings settings;
  settings.rows = frame.rows;
  settings.cols = frame.cols;
  settings.channels = frame.channels;
  return settings;
}

bool FrameOutcome::joined() const {
  return flags.position.x != formerPosition.x || flags.position.y != formerPosition.y;
}

CaptureRun::CaptureRun(const RunSettings& settings)
    : settings_(settings), reports_(std::make_unique<RecordedReports>()) {
  EXPECT_TRUE(initJoint(settings.rows, settings.cols, settings.channels, settings.cornerBudget,
                        settings.maxRow, settings.maxCol, settings.stitchMode,
                        settings.staticDynamicFlag));
}

CaptureRun::~CaptureRun() { uinitJoint(); }

FrameOutcome CaptureRun::first(const Frame& reference, const Frame& frame, Hint hint) {
  return feed(&reference, frame, hint);
}

FrameOutcome CaptureRun::next(const Frame& frame, Hint hint) { return feed(nullptr, frame, hint); }

FrameOutcome CaptureRun::feed(const Frame* reference, const Frame& frame, Hint hint) {
  FrameOutcome outcome;
  outcome.frame = frame.bytes;
  if (reference != nullptr) outcome.reference = reference->bytes;
  reports_->takeOfCaller();
  outcome.result = stichingImagedJoint(
      reference != nullptr ? outcome.reference.data() : nullptr, outcome.frame.data(),
      reference != nullptr ? 0 : 1, settings_.frameScale, hint.dx, hint.dy, hint.holds,
      outcome.topLeft, outcome.bottomRight, outcome.mosaic, outcome.flags);
  outcome.lines = reports_->takeOfCaller();
  outcome.formerPosition =
      reference != nullptr ? firstPosition(settings_, settings_.frameScale) : position_;
  position_ = outcome.flags.position;
  return outcome;
}

std::vector<FrameOutcome> CaptureRun::play(const Scene& scene, const std::vector<SPoint>& path) {
  const auto frameAt = [&](SPoint corner) {
    return scene.cut(corner.x, corner.y, settings_.rows, settings_.cols);
  };
  std::vector<FrameOutcome> outcomes;
  outcomes.push_back(first(frameAt(path.at(0)), frameAt(path.at(1))));
  for (std::size_t i = 2; i < path.size(); ++i) outcomes.push_back(next(frameAt(path[i])));
  return outcomes;
}

void addOutcome(Digest& digest, const FrameOutcome& outcome) {
  digest.add(outcome.result);
  for (const SPoint& corner : {outcome.topLeft, outcome.bottomRight, outcome.flags.position}) {
    digest.add(corner.x);
    digest.add(corner.y);
  }
  const stitchflags& flags = outcome.flags;
  for (const float measure :
       {flags.brightOne, flags.brightTwo, flags.definitionOne, flags.definitionTwo}) {
    digest.add(measure);
  }
  for (const int count : {flags.matchNum, flags.offsetX, flags.offsetY, flags.stitch_flags}) {
    digest.add(count);
  }
  digest.add(outcome.mosaic.rows);
  digest.add(outcome.mosaic.cols);
  digest.add(outcome.mosaic.channels());
  const cv::Rect box(cv::Point(outcome.topLeft.x, outcome.topLeft.y),
                     cv::Point(outcome.bottomRight.x, outcome.bottomRight.y));
  const cv::Mat filled = outcome.mosaic(box);
  for (int r = 0; r < filled.rows; ++r) {
    digest.addBytes(filled.ptr(r), static_cast<std::size_t>(filled.cols) * filled.elemSize());
  }
}

SPoint firstPosition(const RunSettings& settings, int scaleOfRun) {
  return {3000 - settings.cols / scaleOfRun / 2, 3000 - settings.rows / scaleOfRun / 2};
}
