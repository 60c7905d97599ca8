// SPDX-License-Identifier: Apache-2.0
// A host that includes no header of the library and has backends and a debug hook of its own: the
// entry points call these in place of the library's.
#include <gtest/gtest.h>

#include <opencv2/core.hpp>
#include <string>
#include <vector>

struct SPoint {
  int x, y;
};
struct stitchflags {
  float brightOne, brightTwo, definitionOne, definitionTwo;
  int matchNum, offsetX, offsetY;
  SPoint position;
  int stitch_flags;
};

extern "C" bool initJoint(int, int, int, int, int, int, int, int);
extern "C" int stichingImagedJoint(unsigned char*, unsigned char*, int, int, int, int, bool,
                                   SPoint&, SPoint&, cv::Mat&, stitchflags&);
extern "C" bool uinitJoint();
extern int GStitchMode, GstaticDynamicFlag;
extern bool openclDeviceFlag, cudaDeviceFlag;

namespace {

using Events = std::vector<std::string>;

/// What reached the hook and the backend, in order, and what the backend answers.
Events events;
bool startResult = true;
bool stopResult = true;
int frameResult = 0;

std::string call(const std::string& name, const std::vector<long long>& arguments) {
  std::string text = name;
  for (const long long argument : arguments) text += ' ' + std::to_string(argument);
  return text;
}

}  // namespace

#define HOST __attribute__((visibility("default")))

HOST void CrossPlatformOutputDebugString(char* text) { events.emplace_back(text); }

/// There is no card; tests/opencl/scripted_backends_test.cpp has one.
HOST bool initJointCL(int /*rows*/, int /*cols*/, int /*channels*/, int /*budget*/, int /*maxRow*/,
                      int /*maxCol*/) {
  return false;
}

HOST bool initJointCpu(int rows, int cols, int channels, int budget, int maxRow, int maxCol) {
  events.push_back(call("start", {rows, cols, channels, budget, maxRow, maxCol, GStitchMode,
                                  GstaticDynamicFlag, openclDeviceFlag}));
  return startResult;
}

HOST int stichingImagedJointCpu(unsigned char* src, unsigned char* dest, int index, int factor,
                                int dx, int dy, bool hint, SPoint& left, SPoint& right,
                                cv::Mat& mosaic, stitchflags& flags) {
  events.push_back(call("frame", {*src, *dest, index, factor, dx, dy, hint, left.x, right.x,
                                  mosaic.rows, flags.matchNum}));
  left = {1, 2};
  right = {3, 4};
  mosaic = cv::Mat::zeros(5, 6, CV_8UC1);
  flags.matchNum = 7;
  return frameResult;
}

HOST bool uninitJointCpu() {
  events.emplace_back("stop");
  return stopResult;
}

namespace {

class EntryPoints : public testing::Test {
 protected:
  void SetUp() override {
    events.clear();
    startResult = stopResult = true;
    frameResult = 0;
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

const char kFrame[] = "frame 11 12 21 22 -23 24 1 13 14 15 16";

TEST_F(EntryPoints, BothModesZeroAreAnnouncedBeforeTheStart) {
  EXPECT_TRUE(initJoint(1, 2, 3, 4, 5, 6, 0, 0));
  EXPECT_EQ(events, (Events{"0 == GStitchMainMode", "0 == GstaticMainDynamicFlag",
                            "start 1 2 3 4 5 6 0 0 0"}));
}

TEST_F(EntryPoints, OverlapModeOfADynamicSceneIsAnnouncedByItself) {
  EXPECT_TRUE(initJoint(1, 2, 3, 4, 5, 6, 0, 9));
  EXPECT_EQ(events, (Events{"0 == GStitchMainMode", "start 1 2 3 4 5 6 0 9 0"}));
}

TEST_F(EntryPoints, MotionModeIsNotAnnounced) {
  EXPECT_TRUE(initJoint(1, 2, 3, 4, 5, 6, 8, 0));
  EXPECT_TRUE(initJoint(1, 2, 3, 4, 5, 6, -8, 9));
  EXPECT_EQ(events, (Events{"start 1 2 3 4 5 6 8 0 0", "start 1 2 3 4 5 6 -8 9 0"}));
}

TEST_F(EntryPoints, ModesStayUntilTheNextStart) {
  initJoint(1, 2, 3, 4, 5, 6, 7, 8);
  stitch();
  uinitJoint();
  EXPECT_EQ(GStitchMode, 7);
  EXPECT_EQ(GstaticDynamicFlag, 8);
  initJoint(1, 2, 3, 4, 5, 6, 0, -1);
  EXPECT_EQ(GStitchMode, 0);
  EXPECT_EQ(GstaticDynamicFlag, -1);
}

TEST_F(EntryPoints, FailedStartOfTheBackendIsAFailedStart) {
  startResult = false;
  EXPECT_FALSE(initJoint(1, 2, 3, 4, 5, 6, 1, 1));
  EXPECT_FALSE(openclDeviceFlag);
}

TEST_F(EntryPoints, HostBackendServesTheRun) {
  openclDeviceFlag = true;
  EXPECT_TRUE(initJoint(1, 2, 3, 4, 5, 6, 1, 1));
  EXPECT_EQ(events, Events{"start 1 2 3 4 5 6 1 1 0"});
  EXPECT_FALSE(openclDeviceFlag);
}

TEST_F(EntryPoints, FrameIsHandedOnWithAllItsArguments) {
  EXPECT_EQ(stitch(), 0);
  EXPECT_EQ(events, (Events{"stichingImagedJointCpu in", kFrame}));
  EXPECT_EQ(left_.y, 2);
  EXPECT_EQ(right_.y, 4);
  EXPECT_EQ(mosaic_.size(), cv::Size(6, 5));
  EXPECT_EQ(flags_.matchNum, 7);
}

TEST_F(EntryPoints, FailedFrameIsAnnounced) {
  frameResult = -1;
  EXPECT_EQ(stitch(), -1);
  EXPECT_EQ(events, (Events{"stichingImagedJointCpu in", kFrame, "stichingImagedJointCpu failed"}));
  EXPECT_EQ(flags_.matchNum, 7) << "outputs come through all the same";
}

TEST_F(EntryPoints, AnyOtherResultPassesUnannounced) {
  for (const int result : {1, 0, 5, -2, -1000000}) {
    events.clear();
    frameResult = result;
    EXPECT_EQ(stitch(), result);
    EXPECT_EQ(events, (Events{"stichingImagedJointCpu in", kFrame}));
  }
}

TEST_F(EntryPoints, StopSucceedsWhateverTheBackendSays) {
  for (const bool result : {true, false}) {
    events.clear();
    stopResult = result;
    EXPECT_TRUE(uinitJoint());
    EXPECT_EQ(events, Events{"stop"});
  }
}

TEST_F(EntryPoints, StopClearsTheDeviceFlags) {
  cudaDeviceFlag = true;
  openclDeviceFlag = true;
  EXPECT_TRUE(uinitJoint());
  EXPECT_FALSE(cudaDeviceFlag);
  EXPECT_FALSE(openclDeviceFlag);
}

}  // namespace
