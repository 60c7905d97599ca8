// SPDX-License-Identifier: Apache-2.0
#include "tests/opencl/frame_rules.h"

#include <algorithm>
#include <cstddef>
#include <opencv2/core.hpp>

#include "framequilt/framequilt.h"
#include "opencl/OpenclJointFrame.h"
#include "opencl/OpenclJointState.h"
#include "tests/support/random_images.h"

namespace frame_rules {

RunSettings settingsFor(int stitchMode, int staticDynamicFlag, int channels) {
  RunSettings settings;
  settings.rows = kRows;
  settings.cols = kCols;
  settings.channels = channels;
  settings.stitchMode = stitchMode;
  settings.staticDynamicFlag = staticDynamicFlag;
  return settings;
}

Frame flat(int value, int channels) { return Frame(kRows, kCols, channels, value); }

Frame noise(std::uint64_t seed, int channels, int low, int high) {
  Frame frame = flat(0, channels);
  frame.bytes = Random(seed).bytes(frame.bytes.size(), low, high);
  return frame;
}

Bytes withoutZeros(Bytes bytes) {
  std::replace(bytes.begin(), bytes.end(), 0, 1);
  return bytes;
}

cv::Mat boxOf(const FrameOutcome& outcome) {
  return outcome.mosaic(cv::Rect(outcome.topLeft.x, outcome.topLeft.y,
                                 outcome.bottomRight.x - outcome.topLeft.x,
                                 outcome.bottomRight.y - outcome.topLeft.y));
}

bool equal(const cv::Mat& one, const cv::Mat& two) {
  return one.size() == two.size() && one.type() == two.type() &&
         cv::norm(one, two, cv::NORM_INF) == 0.0;
}

Bytes referenceOnCard() {
  return {theSorImageTempCL, theSorImageTempCL + std::ptrdiff_t{kRows} * kCols};
}

Call callCard(unsigned char* src, unsigned char* dest, int frameIndex) {
  Call call;
  call.result = stichingImagedJointCL(src, dest, frameIndex, 1, 0, 0, false, call.left, call.right,
                                      call.mosaic, call.flags);
  return call;
}

std::unique_ptr<CaptureRun> Fixture::openRun(On backend, const RunSettings& settings) {
  backend == On::kCard ? withCard() : withoutCard();
  auto run = std::make_unique<CaptureRun>(settings);
  EXPECT_EQ(openclDeviceFlag, backend == On::kCard);
  return run;
}

}  // namespace frame_rules
