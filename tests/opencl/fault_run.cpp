// SPDX-License-Identifier: Apache-2.0
#include "tests/opencl/fault_run.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <opencv2/core.hpp>
#include <utility>

#include "framequilt/framequilt.h"
#include "framequilt/report_sink.h"
#include "opencl/OpenclJointState.h"
#include "tests/support/digest.h"
#include "tests/support/opencl_layer.h"

namespace layer = framequilt::opencl_layer;

namespace {

constexpr int kRows = 150;
constexpr int kCols = 200;
constexpr SPoint kCorners[] = {{30, 40}, {70, 48}, {110, 56}};

std::mutex listenerMutex;
SpokenTexts* listener = nullptr;

void tell(std::string text) {
  const std::lock_guard lock(listenerMutex);
  if (listener != nullptr) listener->add(std::move(text));
}

void tellLine(const char* line, std::size_t length, void* /*context*/) {
  tell(std::string(line, length));
}

void listen(SpokenTexts* to) {
  const std::lock_guard lock(listenerMutex);
  listener = to;
}

bool operator==(SPoint a, SPoint b) { return a.x == b.x && a.y == b.y; }

cv::Rect filledBox() {
  return {outbordLeftCL.x, outbordLeftCL.y, outbordRightCL.x - outbordLeftCL.x,
          outbordRightCL.y - outbordLeftCL.y};
}

}  // namespace

/// Takes the place of the library's, which does nothing.
__attribute__((visibility("default"))) void CrossPlatformOutputDebugString(char* text) {
  tell(text);
}

SpokenTexts::SpokenTexts() {
  listen(this);
  framequilt::setReportSink(&tellLine, nullptr);
}

SpokenTexts::~SpokenTexts() {
  framequilt::setReportSink(nullptr, nullptr);
  listen(nullptr);
}

void SpokenTexts::add(std::string text) {
  const std::lock_guard lock(mutex_);
  texts_.push_back(std::move(text));
}

std::vector<std::string> SpokenTexts::take() {
  const std::lock_guard lock(mutex_);
  return std::exchange(texts_, {});
}

std::vector<std::string> beyond(std::vector<std::string> usual, std::vector<std::string> texts) {
  std::vector<std::string> more;
  for (std::string& text : texts) {
    const auto found = std::find(usual.begin(), usual.end(), text);
    if (found == usual.end()) {
      more.push_back(std::move(text));
    } else {
      usual.erase(found);
    }
  }
  return more;
}

RunSettings SmallCapture::settings() const {
  RunSettings settings;
  settings.rows = kRows;
  settings.cols = kCols;
  settings.channels = channels;
  settings.stitchMode = stitchMode;
  return settings;
}

DrivenRun::DrivenRun(const SmallCapture& capture) : capture_(capture) {
  const Scene scene(300, 400, capture.channels, 2);
  for (const SPoint corner : kCorners) {
    frames_.push_back(scene.cut(corner.x, corner.y, kRows, kCols));
  }
}

DrivenRun::~DrivenRun() { stop(); }

bool DrivenRun::start() {
  const RunSettings settings = capture_.settings();
  EXPECT_TRUE(initJoint(settings.rows, settings.cols, settings.channels, settings.cornerBudget,
                        settings.maxRow, settings.maxCol, settings.stitchMode,
                        settings.staticDynamicFlag));
  return openclDeviceFlag;
}

void DrivenRun::stop() { uinitJoint(); }

FrameOutcome DrivenRun::first() {
  reference_ = frames_.at(0);
  return offer(&reference_, 1);
}

FrameOutcome DrivenRun::next(int index) { return offer(nullptr, index); }

FrameOutcome DrivenRun::offer(Frame* reference, int index) {
  const SPoint from = kCorners[index - 1];
  const SPoint to = kCorners[index];
  frame_ = frames_.at(static_cast<std::size_t>(index));
  FrameOutcome outcome;
  outcome.formerPosition = reference != nullptr ? firstPosition(capture_.settings())
                                                : (openclDeviceFlag ? flagsCL.position : SPoint{});
  outcome.result = stichingImagedJoint(
      reference != nullptr ? reference->bytes.data() : nullptr, frame_.bytes.data(),
      reference != nullptr ? 0 : 1, 1, to.x - from.x, to.y - from.y, capture_.hinted,
      outcome.topLeft, outcome.bottomRight, outcome.mosaic, outcome.flags);
  return outcome;
}

std::uint64_t digestOf(const FrameOutcome& outcome) {
  Digest digest;
  addOutcome(digest, outcome);
  return digest.value();
}

std::uint64_t digestOfWholeRun(const SmallCapture& capture, bool onCard) {
  DrivenRun run(capture);
  EXPECT_EQ(run.start(), onCard);
  FrameOutcome outcome = run.first();
  EXPECT_TRUE(outcome.joined());
  // The host measures other planes.
  outcome.flags.definitionOne = 0.0F;
  outcome.flags.definitionTwo = 0.0F;
  return digestOf(outcome);
}

RunState RunState::ofRun(const SmallCapture& capture) {
  const std::size_t bytes = std::size_t{kRows} * kCols * static_cast<std::size_t>(capture.channels);
  RunState state;
  state.filled = mosaicImgCL(filledBox()).clone();
  state.topLeft = outbordLeftCL;
  state.bottomRight = outbordRightCL;
  state.flags = flagsCL;
  state.reference.assign(theSorImageTempCL, theSorImageTempCL + bytes);
  state.lastFrame.assign(thedestImage_preCL, thedestImage_preCL + bytes);
  return state;
}

void RunState::putBack() const {
  mosaicImgCL(filledBox()).setTo(0);
  outbordLeftCL = topLeft;
  outbordRightCL = bottomRight;
  flagsCL = flags;
  filled.copyTo(mosaicImgCL(filledBox()));
  std::copy(reference.begin(), reference.end(), theSorImageTempCL);
  std::copy(lastFrame.begin(), lastFrame.end(), thedestImage_preCL);
}

void expectSameMosaicAndReference(const RunState& now, const RunState& before) {
  EXPECT_TRUE(now.topLeft == before.topLeft);
  EXPECT_TRUE(now.bottomRight == before.bottomRight);
  EXPECT_TRUE(now.flags.position == before.flags.position);
  EXPECT_EQ(now.reference, before.reference);
  ASSERT_EQ(now.filled.size(), before.filled.size());
  EXPECT_EQ(cv::norm(now.filled, before.filled, cv::NORM_INF), 0.0);
}

KeptDevice::~KeptDevice() {
  if (program_ != nullptr) clReleaseProgram(program_);
  if (queue_ != nullptr) clReleaseCommandQueue(queue_);
  if (context_ != nullptr) clReleaseContext(context_);
}

void KeptDevice::keep() {
  context_ = context;
  queue_ = commandQueue;
  program_ = program;
  clRetainContext(context_);
  clRetainCommandQueue(queue_);
  clRetainProgram(program_);
}

void KeptDevice::handOver() const {
  context = context_;
  commandQueue = queue_;
  program = program_;
  clRetainContext(context_);
  clRetainCommandQueue(queue_);
  clRetainProgram(program_);
}

void KeptDevice::expectAlone() const {
  const int held = context_ != nullptr ? 3 : 0;
  const int keptBuffer = grad_bound_tempOneCl != nullptr ? 1 : 0;
  const layer::Ledger ledger = layer::live();
  EXPECT_EQ(ledger.mappings(), 0);
  EXPECT_EQ(ledger.count(layer::ObjectKind::kBuffer), keptBuffer);
  EXPECT_EQ(ledger.count(layer::ObjectKind::kKernel), 0);
  EXPECT_EQ(ledger.count(), held + keptBuffer);
  for (const layer::LiveObject& object : ledger.objects) EXPECT_EQ(object.references, 1);
}
