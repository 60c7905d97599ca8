// SPDX-License-Identifier: Apache-2.0
// A program with two backends of its own: which of them the entry points call, and how. No device
// is needed.
#include <gtest/gtest.h>

#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "cpu/frame_driver.h"
#include "cpu/stitching_run.h"
#include "framequilt/framequilt.h"
#include "opencl/OpenclJointFrame.h"
#include "opencl/OpenclJointRun.h"

namespace {

using Events = std::vector<std::string>;

/// What reached the debug hook and the backends, in order, and what the backends answer.
Events events;
bool cardStarts = true, hostStarts = true, stops = true;
int frameResult = 0;

std::string call(const std::string& name, const std::vector<long long>& arguments) {
  std::string text = name;
  for (const long long argument : arguments) text += ' ' + std::to_string(argument);
  return text;
}

int frame(const std::string& backend, unsigned char* src, unsigned char* dest, int index,
          int factor, int dx, int dy, bool hint, SPoint& left, SPoint& right, cv::Mat& mosaic,
          stitchflags& flags) {
  events.push_back(call(backend + " frame", {*src, *dest, index, factor, dx, dy, hint, left.x,
                                             right.x, mosaic.rows, flags.matchNum}));
  left = {1, 2};
  right = {3, 4};
  mosaic = cv::Mat::zeros(5, 6, CV_8UC1);
  flags.matchNum = 7;
  return frameResult;
}

}  // namespace

#define HOST __attribute__((visibility("default")))

HOST void CrossPlatformOutputDebugString(char* text) { events.emplace_back(text); }

HOST bool initJointCL(int rows, int cols, int channels, int budget, int maxRow, int maxCol) {
  events.push_back(call("card start", {rows, cols, channels, budget, maxRow, maxCol, GStitchMode,
                                       GstaticDynamicFlag}));
  return cardStarts;
}
HOST bool initJointCpu(int rows, int cols, int channels, int budget, int maxRow, int maxCol) {
  events.push_back(call("host start", {rows, cols, channels, budget, maxRow, maxCol, GStitchMode,
                                       GstaticDynamicFlag, openclDeviceFlag}));
  return hostStarts;
}

HOST int stichingImagedJointCL(unsigned char* src, unsigned char* dest, int index, int factor,
                               int dx, int dy, bool hint, SPoint& left, SPoint& right,
                               cv::Mat& mosaic, stitchflags& flags) {
  return frame("card", src, dest, index, factor, dx, dy, hint, left, right, mosaic, flags);
}
HOST int stichingImagedJointCpu(unsigned char* src, unsigned char* dest, int index, int factor,
                                int dx, int dy, bool hint, SPoint& left, SPoint& right,
                                cv::Mat& mosaic, stitchflags& flags) {
  return frame("host", src, dest, index, factor, dx, dy, hint, left, right, mosaic, flags);
}

HOST bool uinitJointCL() {
  events.emplace_back("card stop");
  return stops;
}
HOST bool uninitJointCpu() {
  events.emplace_back("host stop");
  return stops;
}

namespace {

class ScriptedBackends : public testing::Test {
 protected:
  void SetUp() override {
    events.clear();
    cardStarts = hostStarts = stops = true;
    frameResult = 0;
    openclDeviceFlag = cudaDeviceFlag = false;
  }

  int stitch() {
    unsigned char src = 11, dest = 12;
    left_ = {13, 0};
    right_ = {14, 0};
    mosaic_ = cv::Mat::zeros(15, 1, CV_8UC1);
    flags_ = {};
    flags_.matchNum = 16;
    return stichingImagedJoint(&src, &dest, 21, 22, -23, 24, true, left_, right_, mosaic_, flags_);
  }

  SPoint left_ = {}, right_ = {};
  cv::Mat mosaic_;
  stitchflags flags_ = {};
};

const char kCardFrame[] = "card frame 11 12 21 22 -23 24 1 13 14 15 16";
const char kHostFrame[] = "host frame 11 12 21 22 -23 24 1 13 14 15 16";

TEST_F(ScriptedBackends, CardIsAskedFirstAndServes) {
  EXPECT_TRUE(initJoint(1, 2, 3, 4, 5, 6, 0, 0));
  EXPECT_TRUE(openclDeviceFlag);
  EXPECT_EQ(events, (Events{"0 == GStitchMainMode", "0 == GstaticMainDynamicFlag",
                            "card start 1 2 3 4 5 6 0 0"}));
}

TEST_F(ScriptedBackends, HostIsAskedWhenTheCardRefuses) {
  cardStarts = false;
  openclDeviceFlag = true;
  EXPECT_TRUE(initJoint(1, 2, 3, 4, 5, 6, 0, 9));
  EXPECT_FALSE(openclDeviceFlag);
  EXPECT_EQ(events, (Events{"0 == GStitchMainMode", "card start 1 2 3 4 5 6 0 9",
                            "host start 1 2 3 4 5 6 0 9 0"}));
}

TEST_F(ScriptedBackends, StartFailsOnlyWhenBothRefuse) {
  for (const bool card : {false, true}) {
    for (const bool host : {false, true}) {
      cardStarts = card;
      hostStarts = host;
      EXPECT_EQ(initJoint(1, 2, 3, 4, 5, 6, 1, 0), card || host);
      EXPECT_EQ(openclDeviceFlag, card);
    }
  }
}

TEST_F(ScriptedBackends, FrameGoesToTheCardThatServes) {
  openclDeviceFlag = true;
  EXPECT_EQ(stitch(), 0);
  EXPECT_EQ(events, (Events{"stichingImagedJointCL in", kCardFrame}));
  EXPECT_EQ(left_.y, 2);
  EXPECT_EQ(right_.y, 4);
  EXPECT_EQ(mosaic_.size(), cv::Size(6, 5));
  EXPECT_EQ(flags_.matchNum, 7);
}

TEST_F(ScriptedBackends, FrameGoesToTheHostOtherwise) {
  EXPECT_EQ(stitch(), 0);
  EXPECT_EQ(events, (Events{"stichingImagedJointCpu in", kHostFrame}));
}

TEST_F(ScriptedBackends, FailedFrameIsAnnounced) {
  frameResult = -1;
  openclDeviceFlag = true;
  EXPECT_EQ(stitch(), -1);
  EXPECT_EQ(events,
            (Events{"stichingImagedJointCL in", kCardFrame, "stichingImagedJointCL failed"}));
  EXPECT_EQ(flags_.matchNum, 7) << "outputs come through all the same";
}

TEST_F(ScriptedBackends, AnyOtherResultPassesUnannounced) {
  openclDeviceFlag = true;
  for (const int result : {1, 0, 5, -2, -1000000}) {
    events.clear();
    frameResult = result;
    EXPECT_EQ(stitch(), result);
    EXPECT_EQ(events, (Events{"stichingImagedJointCL in", kCardFrame}));
  }
}

TEST_F(ScriptedBackends, StopGoesToTheBackendThatServesAndSucceeds) {
  for (const bool card : {true, false}) {
    for (const bool result : {true, false}) {
      events.clear();
      stops = result;
      openclDeviceFlag = card;
      cudaDeviceFlag = true;
      EXPECT_TRUE(uinitJoint());
      EXPECT_EQ(events, Events{card ? "card stop" : "host stop"});
      EXPECT_FALSE(openclDeviceFlag);
      EXPECT_FALSE(cudaDeviceFlag);
    }
  }
}

}  // namespace
