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

/// What reached the hook and the backends, in order, and what the backends answer.
Events events;
bool cardStarts = true, hostStarts = true, stops = true;
int frameResult = 0;

std::string call(const std::string& name, const std::vector<long long>& arguments) {
  std::string text = name;
  for (const long long argument : arguments) text += ' ' + std::to_string(argument);
  return text;
}

bool start(const char* backend, bool result, int rows, int cols, int channels, int budget,
           int maxRow, int maxCol) {
  events.push_back(
      call(std::string(backend) + " start", {rows, cols, channels, budget, maxRow, maxCol,
                                             GStitchMode, GstaticDynamicFlag, openclDeviceFlag}));
  return result;
}

int frame(const char* backend, unsigned char* src, unsigned char* dest, int index, int factor,
          int dx, int dy, bool hint, SPoint& left, SPoint& right, cv::Mat& mosaic,
          stitchflags& flags) {
  events.push_back(call(
      std::string(backend) + " frame",
      {*src, *dest, index, factor, dx, dy, hint, left.x, right.x, mosaic.rows, flags.matchNum}));
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
  return start("card", cardStarts, rows, cols, channels, budget, maxRow, maxCol);
}
HOST bool initJointCpu(int rows, int cols, int channels, int budget, int maxRow, int maxCol) {
  return start("host", hostStarts, rows, cols, channels, budget, maxRow, maxCol);
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

/// A run that the host serves, unless a test says otherwise.
class EntryPoints : public testing::Test {
 protected:
  void SetUp() override {
    events.clear();
    cardStarts = false;
    hostStarts = stops = true;
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

/// What a backend calls itself, and what it is called in the texts for the hook.
struct Backend {
  bool card;
  std::string frame, text;
};
const Backend kBackends[] = {
    {true, "card frame 11 12 21 22 -23 24 1 13 14 15 16", "stichingImagedJointCL"},
    {false, "host frame 11 12 21 22 -23 24 1 13 14 15 16", "stichingImagedJointCpu"}};

TEST_F(EntryPoints, BothModesZeroAreAnnouncedBeforeTheStart) {
  EXPECT_TRUE(initJoint(1, 2, 3, 4, 5, 6, 0, 0));
  EXPECT_EQ(events, (Events{"0 == GStitchMainMode", "0 == GstaticMainDynamicFlag",
                            "card start 1 2 3 4 5 6 0 0 0", "host start 1 2 3 4 5 6 0 0 0"}));
}

TEST_F(EntryPoints, OverlapModeOfADynamicSceneIsAnnouncedByItself) {
  EXPECT_TRUE(initJoint(1, 2, 3, 4, 5, 6, 0, 9));
  EXPECT_EQ(events, (Events{"0 == GStitchMainMode", "card start 1 2 3 4 5 6 0 9 0",
                            "host start 1 2 3 4 5 6 0 9 0"}));
}

TEST_F(EntryPoints, MotionModeIsNotAnnounced) {
  EXPECT_TRUE(initJoint(1, 2, 3, 4, 5, 6, 8, 0));
  EXPECT_TRUE(initJoint(1, 2, 3, 4, 5, 6, -8, 9));
  EXPECT_EQ(events, (Events{"card start 1 2 3 4 5 6 8 0 0", "host start 1 2 3 4 5 6 8 0 0",
                            "card start 1 2 3 4 5 6 -8 9 0", "host start 1 2 3 4 5 6 -8 9 0"}));
}

TEST_F(EntryPoints, CardThatStartsServesAlone) {
  cardStarts = true;
  EXPECT_TRUE(initJoint(1, 2, 3, 4, 5, 6, 0, 0));
  EXPECT_TRUE(openclDeviceFlag);
  EXPECT_EQ(events, (Events{"0 == GStitchMainMode", "0 == GstaticMainDynamicFlag",
                            "card start 1 2 3 4 5 6 0 0 0"}));
}

TEST_F(EntryPoints, HostFindsTheFlagOfTheCardCleared) {
  openclDeviceFlag = true;
  EXPECT_TRUE(initJoint(1, 2, 3, 4, 5, 6, 1, 9));
  EXPECT_FALSE(openclDeviceFlag);
  ASSERT_FALSE(events.empty());
  EXPECT_EQ(events.back(), "host start 1 2 3 4 5 6 1 9 0");
}

TEST_F(EntryPoints, StartFailsOnlyWhenBothRefuse) {
  for (const bool card : {false, true}) {
    for (const bool host : {false, true}) {
      cardStarts = card;
      hostStarts = host;
      EXPECT_EQ(initJoint(1, 2, 3, 4, 5, 6, 1, 0), card || host);
      EXPECT_EQ(openclDeviceFlag, card);
    }
  }
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

TEST_F(EntryPoints, FrameIsHandedOnWithAllItsArguments) {
  for (const Backend& backend : kBackends) {
    events.clear();
    openclDeviceFlag = backend.card;
    EXPECT_EQ(stitch(), 0);
    EXPECT_EQ(events, (Events{backend.text + " in", backend.frame}));
    EXPECT_EQ(left_.y, 2);
    EXPECT_EQ(right_.y, 4);
    EXPECT_EQ(mosaic_.size(), cv::Size(6, 5));
    EXPECT_EQ(flags_.matchNum, 7);
  }
}

TEST_F(EntryPoints, FailedFrameIsAnnounced) {
  frameResult = -1;
  for (const Backend& backend : kBackends) {
    events.clear();
    openclDeviceFlag = backend.card;
    EXPECT_EQ(stitch(), -1);
    EXPECT_EQ(events, (Events{backend.text + " in", backend.frame, backend.text + " failed"}));
    EXPECT_EQ(flags_.matchNum, 7) << "outputs come through all the same";
  }
}

TEST_F(EntryPoints, AnyOtherResultPassesUnannounced) {
  for (const Backend& backend : kBackends) {
    openclDeviceFlag = backend.card;
    for (const int result : {1, 0, 5, -2, -1000000}) {
      events.clear();
      frameResult = result;
      EXPECT_EQ(stitch(), result);
      EXPECT_EQ(events, (Events{backend.text + " in", backend.frame}));
    }
  }
}

TEST_F(EntryPoints, StopGoesToTheBackendThatServesAndSucceeds) {
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
