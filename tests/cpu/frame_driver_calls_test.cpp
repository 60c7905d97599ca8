// SPDX-License-Identifier: Apache-2.0
// This program has the stages of a frame of its own: the driver calls them in place of the
// library's, so that the order of the stages and what each is given can be seen.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <functional>
#include <new>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "cpu/frame_driver.h"
#include "cpu/mosaic_blend.h"
#include "cpu/offset_estimation.h"
#include "framequilt/framequilt.h"
#include "imaging/motion.h"
#include "imaging/overlap.h"
#include "imaging/region.h"
#include "tests/cpu/run_fixture.h"
#include "tests/support/recorded_reports.h"

namespace {

using Stages = std::vector<std::string>;

constexpr int kRows = 40, kCols = 60, kChannels = 3;
constexpr int kFirstSide = 6000;

struct Offset {
  unsigned char *img1, *img2;
  imgInfo info;
  int *dx, *dy, *matchCount;
};
struct Motion {
  unsigned char *previous, *current;
  int rows, cols, previousChannels, currentChannels;
};
struct Cut {
  unsigned char *mosaic, *frame;
  imgInfo mosaicInfo, frameInfo;
  SPoint position;
  int offsetX, offsetY;
  unsigned char *mosaicPart, *framePart;
};
struct Measure {
  unsigned char *image1, *image2;
  int rows1, cols1, rows2, cols2, channels;
  float *one, *two;
};
struct Blend {
  cv::Mat mosaic;
  unsigned char* frame;
  imgInfo info;
  stitchflags flags;
  SPoint topLeft, bottomRight;
  SPoint *topLeftOut, *bottomRightOut, *positionOut;
  imgInfo* regionInfo;
  cv::Mat* mosaicOut;
  unsigned char* region;
};

/// What the stages were given, what they answer, and what else happens in them.
struct Script {
  Stages stages;
  Offset offset = {};
  Motion motion = {};
  Cut cut = {};
  Measure brightness = {}, sharpness = {};
  Blend blend = {};

  bool found = true;
  int dx = 20, dy = -3, matchNum = 11;
  int motionValue = 0;
  std::function<void()> inOffset, inMotion, inCut, inBrightness, inSharpness, inBlend;

  void enter(const char* stage, const std::function<void()>& happening) {
    stages.emplace_back(stage);
    if (happening) happening();
  }
};

Script script;

void expectInfo(const imgInfo& info, int channels, int rows, int cols) {
  EXPECT_EQ(info.reserved, 0);
  EXPECT_EQ(info.channels, channels);
  EXPECT_EQ(info.rows, rows);
  EXPECT_EQ(info.cols, cols);
}

const auto isZero = [](unsigned char byte) { return byte == 0; };

/// The plane exists and has this many bytes, and hardly more: an allocator may round up.
void expectRoom(const unsigned char* plane, std::size_t bytes) {
  ASSERT_NE(plane, nullptr);
  const std::size_t room = malloc_usable_size(const_cast<unsigned char*>(plane));
  ASSERT_GE(room, bytes);
  EXPECT_LT(room, bytes + 64);
}

/// And they are all `value`.
void expectPlane(const unsigned char* plane, std::size_t bytes, int value) {
  ASSERT_NO_FATAL_FAILURE(expectRoom(plane, bytes));
  EXPECT_EQ(std::count(plane, plane + bytes, value), static_cast<std::ptrdiff_t>(bytes));
}

const std::size_t kGrayPlane = area(kRows + 2, kCols + 2);
const std::size_t kBoundPlane = area(kRows + 8, kCols + 8);

class FrameDriverCalls : public testing::Test {
 protected:
  void SetUp() override {
    script = {};
    GStitchMode = 1;
    GstaticDynamicFlag = 1;  // a static scene mostly needs no measure
    start();
  }

  void TearDown() override {
    uninitJointCpu();
    GStitchMode = GstaticDynamicFlag = 0;
    scale = 1;
  }

  static void start() { ASSERT_TRUE(initJointCpu(kRows, kCols, kChannels, 1, 20000, 20000)); }

  static void startAgainAtScale(int factor) {
    uninitJointCpu();
    scale = factor;
    start();
  }

  int call(unsigned char* src, unsigned char* dest, int frameIndex) {
    script.stages.clear();
    return stichingImagedJointCpu(src, dest, frameIndex, scale, 0, 0, false, left_, right_, mosaic_,
                                  flags_);
  }
  int first() { return call(reference_.data(), frame_.data(), 0); }
  int next() { return call(nullptr, frame_.data(), 1); }

  Random random_{61};
  Bytes reference_ = random_.bytes(area(kRows, kCols, kChannels), 1);
  Bytes frame_ = random_.bytes(area(kRows, kCols, kChannels));
  SPoint left_ = {}, right_ = {};
  cv::Mat mosaic_;
  stitchflags flags_ = {};
};

TEST_F(FrameDriverCalls, MotionModeTakesTheOffsetThenTheMotionThenBlends) {
  EXPECT_EQ(first(), 0);
  EXPECT_EQ(script.stages, (Stages{"offset", "motion", "blend"}));
  script.motionValue = 255;
  next();
  EXPECT_EQ(script.stages, (Stages{"offset", "motion"}));
  script.found = false;
  EXPECT_EQ(next(), -1);
  EXPECT_EQ(script.stages, (Stages{"offset"}));
}

TEST_F(FrameDriverCalls, OverlapModeCutsThenMeasuresBrightnessThenSharpness) {
  GStitchMode = 0;
  EXPECT_EQ(first(), 0);
  EXPECT_EQ(script.stages, (Stages{"offset", "cut", "brightness", "sharpness", "blend"}));
  script.found = false;
  EXPECT_EQ(next(), -1);
  EXPECT_EQ(script.stages, (Stages{"offset"}));
}

TEST_F(FrameDriverCalls, RefusedStartOfAFrameReachesNoStage) {
  EXPECT_EQ(call(nullptr, frame_.data(), 0), -1);
  EXPECT_EQ(call(reference_.data(), nullptr, 0), -1);
  EXPECT_EQ(script.stages, Stages{});
}

// --- Offset ---

TEST_F(FrameDriverCalls, OffsetIsTakenOfTheWorkingFramesIntoTheRecord) {
  for (const int factor : {1, 2}) {
    startAgainAtScale(factor);
    script.inOffset = [] {
      EXPECT_EQ(script.offset.img1, theSorImageScale);
      EXPECT_EQ(script.offset.img2, thedestImageScale);
    };
    first();
    EXPECT_EQ(script.stages.front(), "offset");
    expectInfo(script.offset.info, kChannels, kRows / factor, kCols / factor);
    EXPECT_EQ(script.offset.dx, &flagsCpu.offsetX);
    EXPECT_EQ(script.offset.dy, &flagsCpu.offsetY);
    EXPECT_EQ(script.offset.matchCount, &flagsCpu.matchNum);
  }
}

TEST_F(FrameDriverCalls, HintIsStoredBeforeTheOffsetIsTaken) {
  script.inOffset = [] {
    EXPECT_EQ(cpuMotordx, -7);
    EXPECT_EQ(cpuMotordy, 8);
    EXPECT_TRUE(cpuMotorflage);
  };
  stichingImagedJointCpu(reference_.data(), frame_.data(), 0, 1, -7, 8, true, left_, right_,
                         mosaic_, flags_);
  EXPECT_EQ(script.stages.front(), "offset");
  script.inOffset = [] {
    EXPECT_EQ(cpuMotordx, 9);
    EXPECT_EQ(cpuMotordy, -10);
    EXPECT_FALSE(cpuMotorflage);
  };
  stichingImagedJointCpu(nullptr, frame_.data(), 1, 1, 9, -10, false, left_, right_, mosaic_,
                         flags_);
}

TEST_F(FrameDriverCalls, OffsetStageReadsNoHintOfItsOwn) {
  cpuMotordx = 1;
  cpuMotordy = 2;
  cpuMotorflage = false;
  const imgInfo info = {0, kChannels, kRows, kCols};
  EXPECT_TRUE(stitchingImageOffsetCpu(reference_.data(), frame_.data(), 0, 1, 11, 12, true, info,
                                      info, left_, right_, mosaic_, flags_));
  EXPECT_EQ(cpuMotordx, 1);
  EXPECT_EQ(cpuMotordy, 2);
  EXPECT_FALSE(cpuMotorflage);
  EXPECT_EQ(script.offset.dx, &flags_.offsetX) << "outputs are those that it is given";
  EXPECT_EQ(left_, (SPoint{kFirstSide / 2 - kCols / 2, kFirstSide / 2 - kRows / 2}));
  EXPECT_EQ(right_, (SPoint{kFirstSide / 2 + kCols / 2, kFirstSide / 2 + kRows / 2}));
  EXPECT_EQ(flags_.position, left_);
  EXPECT_EQ(mosaic_.size(), cv::Size(kFirstSide, kFirstSide));
  EXPECT_TRUE(mosaicImgCpu.empty());
}

TEST_F(FrameDriverCalls, PlanesOfThePairLiveDuringTheCall) {
  script.inOffset = [] {
    expectRoom(resiz_One, kGrayPlane);
    expectRoom(resiz_Two, kGrayPlane);
    expectRoom(resiz_OneBound, kBoundPlane);
    expectRoom(resiz_TwoBound, kBoundPlane);
    EXPECT_EQ(resiz_OneBoundFilter, nullptr);
    EXPECT_EQ(resiz_TwoBoundFilter, nullptr);
    EXPECT_EQ(PreFrameImageGrayCpu, nullptr);
  };
  for (const int mode : {0, 1}) {
    GStitchMode = mode;
    first();
    EXPECT_EQ(script.stages.front(), "offset");
    for (const unsigned char* plane : {resiz_One, resiz_Two, resiz_OneBound, resiz_TwoBound,
                                       resiz_OneBoundFilter, resiz_TwoBoundFilter}) {
      EXPECT_EQ(plane, nullptr);
    }
  }
}

TEST_F(FrameDriverCalls, PlanesOfThePairStayAfterAFrameWithoutOffset) {
  script.found = false;
  first();
  const std::vector<unsigned char*> left = {resiz_One, resiz_Two, resiz_OneBound, resiz_TwoBound};
  for (const unsigned char* plane : left) EXPECT_NE(plane, nullptr);
  script.found = true;
  script.inOffset = [&] {
    EXPECT_EQ(left,
              (std::vector<unsigned char*>{resiz_One, resiz_Two, resiz_OneBound, resiz_TwoBound}));
  };
  next();
  EXPECT_EQ(resiz_One, nullptr);
  EXPECT_EQ(resiz_TwoBound, nullptr);
}

// --- Motion ---

TEST_F(FrameDriverCalls, MotionOfAStaticSceneIsMeasuredWhereOnePixelDoesNotDecide) {
  GstaticDynamicFlag = 0;
  EXPECT_EQ(first(), 0);
  EXPECT_EQ(script.stages, (Stages{"offset", "blend"}));
  EXPECT_EQ(motionValueThCpu, 255);
  // From black to white.
  std::fill_n(thedestImage_pre, area(kRows, kCols, kChannels), static_cast<unsigned char>(0));
  std::fill(frame_.begin(), frame_.end(), static_cast<unsigned char>(255));
  script.motionValue = 254;
  next();
  EXPECT_EQ(script.stages, (Stages{"offset", "motion", "blend"}));
  std::fill_n(thedestImage_pre, area(kRows, kCols, kChannels), static_cast<unsigned char>(0));
  script.motionValue = 255;
  next();
  EXPECT_EQ(script.stages, (Stages{"offset", "motion"}));
}

TEST_F(FrameDriverCalls, MotionIsMeasuredAtFullSizeAgainstTheFrameBefore) {
  for (const int factor : {1, 2}) {
    startAgainAtScale(factor);
    script.inMotion = [] {
      EXPECT_EQ(script.motion.previous, thedestImage_pre);
      EXPECT_EQ(script.motion.current, thedestImageScale);
    };
    first();
    EXPECT_EQ(script.stages[1], "motion");
    EXPECT_EQ(script.motion.rows, kRows);
    EXPECT_EQ(script.motion.cols, kCols);
    EXPECT_EQ(script.motion.previousChannels, kChannels);
    EXPECT_EQ(script.motion.currentChannels, kChannels);
  }
}

TEST_F(FrameDriverCalls, MotionPlanesLiveAroundTheMeasure) {
  script.inMotion = [] {
    expectRoom(PreFrameImageGrayCpu, area(kRows, kCols));
    expectRoom(CurFrameImageGrayCpu, area(kRows, kCols));
    expectRoom(PreFrameImageGrayBoundCpu, area(kRows + 4, kCols + 4));
    expectRoom(PreFrameImageGrayBoundTempCpu, area(kRows + 4, kCols + 4));
    expectRoom(CurFrameImageGrayBoundCpu, area(kRows + 4, kCols + 4));
    expectRoom(CurFrameImageGrayBoundTempCpu, area(kRows + 4, kCols + 4));
  };
  first();
  EXPECT_EQ(script.stages[1], "motion");
  for (const unsigned char* plane :
       {PreFrameImageGrayCpu, CurFrameImageGrayCpu, PreFrameImageGrayBoundCpu,
        PreFrameImageGrayBoundTempCpu, CurFrameImageGrayBoundCpu, CurFrameImageGrayBoundTempCpu}) {
    EXPECT_EQ(plane, nullptr);
  }
}

TEST_F(FrameDriverCalls, LastFrameSeenIsReplacedOnlyAfterTheMeasure) {
  const auto lastSeen = [] {
    return Bytes(thedestImage_pre, thedestImage_pre + area(kRows, kCols, kChannels));
  };
  script.inMotion = [&] { EXPECT_EQ(lastSeen(), reference_); };
  first();
  EXPECT_EQ(lastSeen(), frame_);
}

TEST_F(FrameDriverCalls, LastFrameSeenIsACopyWhereAHostHasChangedItsSize) {
  script.inMotion = [] { --thedestImageInfoCpu.rows; };
  first();
  EXPECT_EQ(script.stages.back(), "blend");
  EXPECT_EQ(Bytes(thedestImage_pre, thedestImage_pre + area(kRows, kCols, kChannels)), frame_);
}

// --- Overlap ---

TEST_F(FrameDriverCalls, OverlapIsCutOutOfTheMosaicAndTheWorkingFrame) {
  GStitchMode = 0;
  first();
  EXPECT_EQ(script.cut.mosaic, mosaicImgCpu.data);
  EXPECT_EQ(script.cut.frame, thedestImageScale);
  expectInfo(script.cut.mosaicInfo, kChannels, kFirstSide, kFirstSide);
  expectInfo(script.cut.frameInfo, kChannels, kRows, kCols);
  EXPECT_EQ(script.cut.position, (SPoint{kFirstSide / 2 - kCols / 2, kFirstSide / 2 - kRows / 2}));
  EXPECT_EQ(script.cut.offsetX, 20);
  EXPECT_EQ(script.cut.offsetY, -3);
  EXPECT_EQ(script.cut.mosaicPart, reference_.data());
  EXPECT_EQ(script.cut.framePart, frame_.data());
  next();
  EXPECT_EQ(script.cut.mosaicPart, theSorImageTemp) << "from the second call on";
  EXPECT_EQ(script.cut.framePart, frame_.data());
}

void expectMeasure(const Measure& measure, const Bytes& src, const Bytes& dest) {
  EXPECT_EQ(measure.image1, src.data());
  EXPECT_EQ(measure.image2, dest.data());
  EXPECT_EQ(measure.rows1, 11);
  EXPECT_EQ(measure.cols1, 12);
  EXPECT_EQ(measure.rows2, 13);
  EXPECT_EQ(measure.cols2, 14);
}

TEST_F(FrameDriverCalls, MeasuresAreGivenBothPartsAndTheirFieldsOfTheRecord) {
  GStitchMode = 0;
  first();
  expectMeasure(script.brightness, reference_, frame_);
  EXPECT_EQ(script.brightness.channels, 3) << "those of the frame's part";
  EXPECT_EQ(script.brightness.one, &flagsCpu.brightOne);
  EXPECT_EQ(script.brightness.two, &flagsCpu.brightTwo);
  expectMeasure(script.sharpness, reference_, frame_);
  EXPECT_EQ(script.sharpness.one, &flagsCpu.definitionOne);
  EXPECT_EQ(script.sharpness.two, &flagsCpu.definitionTwo);
}

/// The measures read three bytes a pixel. They are given copies: the frame, and 0 behind it.
TEST_F(FrameDriverCalls, MeasuresOfTwoChannelsAreGivenLargerCopies) {
  GStitchMode = 0;
  uninitJointCpu();
  ASSERT_TRUE(initJointCpu(kRows, kCols, 2, 1, 20000, 20000));
  const auto contents = [](const unsigned char* part) {
    return Bytes(part, part + area(kRows, kCols, 3));
  };
  const auto widened = [](Bytes frame) {
    frame.resize(area(kRows, kCols, 2));
    frame.resize(area(kRows, kCols, 3), 0);
    return frame;
  };
  const auto expectCopies = [&](const unsigned char* mosaicPart, const unsigned char* framePart) {
    EXPECT_EQ(contents(mosaicPart), widened(reference_));
    EXPECT_EQ(contents(framePart), widened(frame_));
  };
  script.inCut = [&] { expectCopies(script.cut.mosaicPart, script.cut.framePart); };
  script.inBrightness = [&] { expectCopies(script.brightness.image1, script.brightness.image2); };
  script.inSharpness = [&] { expectCopies(script.sharpness.image1, script.sharpness.image2); };
  first();
  EXPECT_EQ(script.stages, (Stages{"offset", "cut", "brightness", "sharpness", "blend"}));
}

/// Before the brightness all six planes are cleared; before the sharpness the padded gray planes
/// stay, it goes on from them.
TEST_F(FrameDriverCalls, PlanesOfTheOverlapAreClearedBeforeEachMeasure) {
  GStitchMode = 0;
  const auto soil = [](unsigned char* plane, std::size_t bytes) {
    if (plane != nullptr) std::memset(plane, 0xEE, bytes);
  };
  const auto soilAll = [=] {
    for (unsigned char* plane : {resiz_One, resiz_Two}) soil(plane, kGrayPlane);
    for (unsigned char* plane :
         {resiz_OneBound, resiz_TwoBound, resiz_OneBoundFilter, resiz_TwoBoundFilter}) {
      soil(plane, kBoundPlane);
    }
  };
  // A host's own planes are not fresh.
  resiz_OneBoundFilter = fresh<unsigned char>(kBoundPlane, 0xEE);
  resiz_TwoBoundFilter = fresh<unsigned char>(kBoundPlane, 0xEE);
  script.inCut = soilAll;
  script.inBrightness = [&] {
    for (const unsigned char* plane : {resiz_One, resiz_Two}) expectPlane(plane, kGrayPlane, 0);
    for (const unsigned char* plane :
         {resiz_OneBound, resiz_TwoBound, resiz_OneBoundFilter, resiz_TwoBoundFilter}) {
      expectPlane(plane, kBoundPlane, 0);
    }
    soilAll();
  };
  script.inSharpness = [] {
    for (const unsigned char* plane : {resiz_One, resiz_Two}) expectPlane(plane, kGrayPlane, 0);
    for (const unsigned char* plane : {resiz_OneBoundFilter, resiz_TwoBoundFilter}) {
      expectPlane(plane, kBoundPlane, 0);
    }
    for (const unsigned char* plane : {resiz_OneBound, resiz_TwoBound}) {
      expectPlane(plane, kBoundPlane, 0xEE);
    }
  };
  first();
  EXPECT_EQ(script.stages, (Stages{"offset", "cut", "brightness", "sharpness", "blend"}));
  EXPECT_EQ(resiz_OneBoundFilter, nullptr);
  EXPECT_EQ(resiz_TwoBoundFilter, nullptr);
}

// --- Blend ---

TEST_F(FrameDriverCalls, BlendIsGivenTheRunAndWritesItBack) {
  first();
  const Blend& blend = script.blend;
  EXPECT_EQ(blend.mosaic.data, mosaicImgCpu.data);
  EXPECT_EQ(blend.frame, frame_.data());
  expectInfo(blend.info, kChannels, kRows, kCols);
  EXPECT_EQ(blend.flags.position, flagsCpu.position);
  EXPECT_EQ(blend.flags.offsetX, 20);
  EXPECT_EQ(blend.flags.offsetY, -3);
  EXPECT_EQ(blend.flags.matchNum, 11);
  EXPECT_EQ(blend.flags.stitch_flags, 1);
  EXPECT_EQ(blend.topLeft, outbordLeftCpu);
  EXPECT_EQ(blend.bottomRight, outbordRightCpu);
  EXPECT_EQ(blend.topLeftOut, &outbordLeftCpu);
  EXPECT_EQ(blend.bottomRightOut, &outbordRightCpu);
  EXPECT_EQ(blend.positionOut, &flagsCpu.position);
  EXPECT_EQ(blend.regionInfo, &theSorImageInfoCpu);
  EXPECT_EQ(blend.mosaicOut, &mosaicImgCpu);
  EXPECT_EQ(blend.region, theSorImageTemp);
}

/// The blend of this program fails every time.
TEST_F(FrameDriverCalls, FailedBlendIsMarkedAllTheSameAndRestoresNothing) {
  RecordedReports reports;
  EXPECT_EQ(first(), 0);
  EXPECT_EQ(reports.ofCaller(), Lines{"kkkkkkkkkkkkkkkkkkkkkkk20"});
  EXPECT_TRUE(
      std::all_of(theSorImageTemp, theSorImageTemp + area(kRows, kCols, kChannels), isZero));
}

TEST_F(FrameDriverCalls, FrameIsBackInItsPlaceWhenABlendIsCutShort) {
  const auto lastFrame = [] {
    return Bytes(thedestImageScale, thedestImageScale + area(kRows, kCols, kChannels));
  };
  const auto overwrite = [] {
    std::memset(thedestImageScale, 0x55, area(kRows, kCols, kChannels));
  };
  script.inBlend = [=] {
    overwrite();
    throw std::bad_alloc();
  };
  EXPECT_THROW(first(), std::bad_alloc);
  EXPECT_EQ(lastFrame(), frame_);
  script.inBlend = overwrite;
  first();
  EXPECT_EQ(lastFrame(), Bytes(frame_.size(), 0x55)) << "what a blend leaves stays";
}

TEST_F(FrameDriverCalls, FrameThatCannotBeBlendedLeavesTheReferenceOfThisCall) {
  script.matchNum = 10;
  EXPECT_EQ(first(), 0);
  EXPECT_EQ(script.stages, (Stages{"offset", "motion"}));
  EXPECT_EQ(Bytes(theSorImageTemp, theSorImageTemp + area(kRows, kCols, kChannels)), reference_);
  EXPECT_EQ(script.offset.img1, theSorImageScale);
}

TEST_F(FrameDriverCalls, OnlyAFlagOfOneIsBlended) {
  GStitchMode = 0;
  script.inSharpness = [] {
    // Neither raised nor lowered by measures that differ too much.
    flagsCpu.brightOne = 1000.0F;
    flagsCpu.stitch_flags = 2;
  };
  first();
  EXPECT_EQ(flags_.stitch_flags, 2);
  EXPECT_EQ(script.stages.back(), "sharpness");
}

}  // namespace

bool imageMosaicFun(unsigned char* img1, unsigned char* img2, imgInfo info, int& dx, int& dy,
                    int& matchCount) {
  script.offset = {img1, img2, info, &dx, &dy, &matchCount};
  script.enter("offset", script.inOffset);
  if (!script.found) return false;
  dx = script.dx;
  dy = script.dy;
  matchCount = script.matchNum;
  return true;
}

int imageMotionModel(unsigned char* previous, unsigned char* current, int rows, int cols,
                     int previousChannels, int currentChannels) {
  script.motion = {previous, current, rows, cols, previousChannels, currentChannels};
  script.enter("motion", script.inMotion);
  return script.motionValue;
}

void takeOutOverLapImageFromMoasicImage(unsigned char* mosaic, unsigned char* frame,
                                        imgInfo mosaicInfo, imgInfo frameInfo, SPoint position,
                                        int offsetX, int offsetY, imgInfo& mosaicPartInfo,
                                        imgInfo& framePartInfo, unsigned char* mosaicPart,
                                        unsigned char* framePart) {
  script.cut = {mosaic,  frame,   mosaicInfo, frameInfo, position,
                offsetX, offsetY, mosaicPart, framePart};
  mosaicPartInfo = {0, 1, 11, 12};
  framePartInfo = {0, 3, 13, 14};
  script.enter("cut", script.inCut);
}

bool calcOverLapImageBright(unsigned char* image1, unsigned char* image2, int rows1, int cols1,
                            int rows2, int cols2, int channels, float& bright1, float& bright2) {
  script.brightness = {image1, image2, rows1, cols1, rows2, cols2, channels, &bright1, &bright2};
  script.enter("brightness", script.inBrightness);
  return true;
}

bool calcOverLapImageDefinition(unsigned char* image1, unsigned char* image2, int rows1, int cols1,
                                int rows2, int cols2, int channels, float& definition1,
                                float& definition2) {
  script.sharpness = {image1, image2,   rows1,        cols1,       rows2,
                      cols2,  channels, &definition1, &definition2};
  script.enter("sharpness", script.inSharpness);
  return true;
}

bool stitchingImageImageblendCpu(cv::Mat mosaic, unsigned char* frame, imgInfo info,
                                 stitchflags flags, SPoint topLeft, SPoint bottomRight,
                                 SPoint /*ignored*/, SPoint& topLeftOut, SPoint& bottomRightOut,
                                 SPoint& positionOut, imgInfo& regionInfo, cv::Mat& mosaicOut,
                                 unsigned char* region) {
  script.blend = {mosaic,      frame,           info,         flags,       topLeft,    bottomRight,
                  &topLeftOut, &bottomRightOut, &positionOut, &regionInfo, &mosaicOut, region};
  script.enter("blend", script.inBlend);
  return false;
}
