// SPDX-License-Identifier: Apache-2.0
// This program looks at what the corner workers and the offset estimation hand to the stages of the
// corner search: each stage is the library's, behind a definition of this program's.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstddef>

#include "cpu/offset_estimation.h"
#include "features/descriptor.h"
#include "features/harris.h"
#include "features/matching.h"
#include "imaging/gray.h"
#include "tests/cpu/run_fixture.h"
#include "tests/support/library_definition.h"

namespace {

using Descriptors = std::vector<unsigned short>;

/// What one worker handed on in its last job.
struct Job {
  // To the conversion to gray.
  unsigned char *colour = nullptr, *converted = nullptr;
  bool clearedBefore = false;
  // To the corner search.
  unsigned char* searched = nullptr;
  imgInfo info = {};
  bool foundBefore = true;
  std::size_t stripBytes = 0;
  // To the descriptor.
  unsigned char* described = nullptr;
  int rows = 0, cols = 0, length = 0, patch = 0;
  Points corners;
  unsigned short *scratch = nullptr, *descriptors = nullptr;
  Descriptors scratchBefore, descriptorsBefore;
};

Job jobs[2];

struct Matching {
  unsigned short *descA = nullptr, *descB = nullptr;
  float* dist = nullptr;
  float ratio = 0.0F;
  int countA = 0, strideA = 0, countB = 0, length = 0;
  std::size_t matchesBefore = 1;
  bool requested = true;
  std::size_t bytesA = 0, bytesB = 0;
  std::vector<float> distBefore;
};

Matching matching;

struct Lane {
  unsigned char*& gray;
  unsigned char*& strip;
  Points& corners;
  unsigned short*& descriptors;
  unsigned short*& scratch;
};

const Lane kLanes[] = {
    {resiz_One, SorTempGrayImage, HarrissCornerSPointOneArray, FeatureDescriber1, DescribleSymbol},
    {resiz_Two, DestTempGrayImage, HarrissCornerSPointTwoArray, FeatureDescriber2,
     DescribleSymbol1},
};

std::size_t bytesOf(void* memory) { return memory == nullptr ? 0 : malloc_usable_size(memory); }

class PairCalls : public RunForPairs {
 protected:
  void SetUp() override {
    RunForPairs::SetUp();
    for (Job& job : jobs) job = {};
    matching = {};
  }

  bool estimate(int channels) {
    Bytes& image = channels == 1 ? gray_ : colour_;
    int dx = 0, dy = 0, matchCount = 0;
    return imageMosaicFun(image.data(), image.data(), {0, channels, kRows, kCols}, dx, dy,
                          matchCount);
  }

  Bytes gray_ = texture(kRows, kCols, 71);
  Bytes colour_ = tripled(gray_);
};

TEST_F(PairCalls, ColourIsConvertedIntoAClearedWorkingImage) {
  ASSERT_TRUE(estimate(3));
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(jobs[i].colour, colour_.data());
    EXPECT_EQ(jobs[i].converted, kLanes[i].gray);
    EXPECT_TRUE(jobs[i].clearedBefore);
  }
}

TEST_F(PairCalls, GrayIsNotConverted) {
  ASSERT_TRUE(estimate(1));
  for (const Job& job : jobs) EXPECT_EQ(job.colour, nullptr);
}

TEST_F(PairCalls, CornersAreSearchedInTheWorkingImage) {
  for (const int channels : {1, 3}) {
    ASSERT_TRUE(estimate(channels));
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(jobs[i].searched, kLanes[i].gray);
      EXPECT_EQ(jobs[i].info.reserved, 0);
      EXPECT_EQ(jobs[i].info.channels, 1) << "gray, whatever the frames are";
      EXPECT_EQ(jobs[i].info.rows, kRows);
      EXPECT_EQ(jobs[i].info.cols, kCols);
      EXPECT_FALSE(jobs[i].foundBefore);
      EXPECT_EQ(jobs[i].stripBytes, 0U) << "no strip without a hint";
    }
  }
}

TEST_F(PairCalls, HintedCornersAreSearchedInAStrip) {
  cpuMotorflage = true;
  cpuMotordx = 20;
  cpuMotordy = -10;
  unsigned char* hostStrip = fresh<unsigned char>(area(kRows, kCols));
  SorTempGrayImage = hostStrip;  // The other is allocated by its worker.
  estimate(1);
  EXPECT_EQ(jobs[0].searched, hostStrip);
  for (int i = 0; i < 2; ++i) {
    EXPECT_NE(jobs[i].searched, kLanes[i].gray);
    EXPECT_GE(jobs[i].stripBytes, area(kRows, kCols));
    EXPECT_EQ(jobs[i].info.channels, 1);
    EXPECT_EQ(jobs[i].info.rows, kRows - 10);
    EXPECT_EQ(jobs[i].info.cols, kCols - 20);
    EXPECT_EQ(kLanes[i].strip, nullptr) << "released, also a host's";
    EXPECT_EQ(jobs[i].described, kLanes[i].gray) << "described in the whole image";
  }
}

TEST_F(PairCalls, DescriptorGetsTheImageItsCornersAndClearedMemory) {
  for (const int length : {200, 60}) {
    demesion = length;
    const std::size_t all = area(numpoint, length);
    FeatureDescriber1 = fresh<unsigned short>(all, 0xABCD);
    FeatureDescriber2 = fresh<unsigned short>(all, 0xABCD);
    ASSERT_TRUE(estimate(1));
    for (int i = 0; i < 2; ++i) {
      const Job& job = jobs[i];
      EXPECT_EQ(job.described, kLanes[i].gray);
      EXPECT_EQ(job.rows, kRows);
      EXPECT_EQ(job.cols, kCols);
      EXPECT_EQ(job.length, length);
      EXPECT_EQ(job.patch, 20);
      EXPECT_EQ(job.corners, kLanes[i].corners);
      ASSERT_GE(job.corners.size(), 11U);
      EXPECT_EQ(job.scratchBefore, Descriptors(area(1, length), 0));
      Descriptors expected(all, 0xABCD);
      std::fill_n(expected.begin(), job.corners.size() * area(1, length), 0);
      EXPECT_EQ(job.descriptorsBefore, expected) << "cleared as far as there are corners";
      EXPECT_EQ(kLanes[i].scratch, nullptr);
    }
  }
}

TEST_F(PairCalls, ScratchOfTheHostIsUsedClearedAndReleased) {
  for (const Lane& lane : kLanes) lane.scratch = fresh<unsigned short>(200, 0xABCD);
  unsigned short* const given[] = {DescribleSymbol, DescribleSymbol1};
  ASSERT_TRUE(estimate(1));
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(jobs[i].scratch, given[i]);
    EXPECT_EQ(kLanes[i].scratch, nullptr);
  }
}

TEST_F(PairCalls, MatchingGetsBothDescriptorSetsOnceBothWorkersAreDone) {
  ASSERT_TRUE(estimate(1));
  EXPECT_FALSE(matching.requested);
  EXPECT_EQ(matching.descA, jobs[0].descriptors);
  EXPECT_EQ(matching.descB, jobs[1].descriptors);
  EXPECT_NE(matching.dist, nullptr);
  EXPECT_EQ(matching.ratio, 0.98F);
  EXPECT_EQ(matching.countA, static_cast<int>(HarrissCornerSPointOneArray.size()));
  EXPECT_EQ(matching.countB, static_cast<int>(HarrissCornerSPointTwoArray.size()));
  EXPECT_EQ(matching.strideA, demesion);
  EXPECT_EQ(matching.length, demesion);
  EXPECT_EQ(matching.matchesBefore, 0U);
}

TEST_F(PairCalls, DescriptorsHaveRoomForTheWholeBudgetAndStartAtZero) {
  // Nothing is described in flat images.
  gray_.assign(gray_.size(), 100);
  EXPECT_FALSE(estimate(1));
  const std::size_t all = area(numpoint, demesion);
  for (const Job& job : jobs) EXPECT_EQ(job.descriptorsBefore, Descriptors(all, 0));
  EXPECT_GE(matching.bytesA, all * sizeof(unsigned short));
  EXPECT_GE(matching.bytesB, all * sizeof(unsigned short));
  EXPECT_EQ(matching.distBefore, std::vector<float>(area(1, numpoint), 0.0F));
}

int laneOf(const unsigned char* gray) { return gray == resiz_One ? 0 : 1; }

bool search(Job& job, const Lane& lane, unsigned char* gray, imgInfo info, Points& corners,
            const char* mangled) {
  job.searched = gray;
  job.info = info;
  job.foundBefore = !corners.empty();
  job.stripBytes = bytesOf(lane.strip);
  return libraryDefinition(&findHarrisCornerCoordianteFun1, mangled)(gray, info, corners);
}

}  // namespace

bool rgb2Gray(unsigned char* src, int rows, int cols, unsigned char* dst) {
  Job& job = jobs[laneOf(dst)];
  job.colour = src;
  job.converted = dst;
  job.clearedBefore =
      std::all_of(dst, dst + area(rows, cols), [](unsigned char byte) { return byte == 0; });
  return libraryDefinition(&rgb2Gray, "_Z8rgb2GrayPhiiS_")(src, rows, cols, dst);
}

bool findHarrisCornerCoordianteFun1(unsigned char* gray, imgInfo info, Points& corners) {
  return search(jobs[0], kLanes[0], gray, info, corners,
                "_Z30findHarrisCornerCoordianteFun1Ph7imgInfoRSt6vectorI6SPointSaIS2_EE");
}

bool findHarrisCornerCoordianteFun2(unsigned char* gray, imgInfo info, Points& corners) {
  return search(jobs[1], kLanes[1], gray, info, corners,
                "_Z30findHarrisCornerCoordianteFun2Ph7imgInfoRSt6vectorI6SPointSaIS2_EE");
}

bool noRotaFeatureDescriber(unsigned char* image, int rows, int cols, int length, int patch,
                            std::vector<SPoint> corners, unsigned short* scratch,
                            unsigned short* descriptors) {
  Job& job = jobs[laneOf(image)];
  job.described = image;
  job.rows = rows;
  job.cols = cols;
  job.length = length;
  job.patch = patch;
  job.corners = corners;
  job.scratch = scratch;
  job.descriptors = descriptors;
  job.scratchBefore.assign(scratch, scratch + length);
  job.descriptorsBefore.assign(descriptors, descriptors + area(numpoint, length));
  return libraryDefinition(&noRotaFeatureDescriber,
                           "_Z22noRotaFeatureDescriberPhiiiiSt6vectorI6SPointSaIS1_EEPtS4_")(
      image, rows, cols, length, patch, corners, scratch, descriptors);
}

bool calacDistanceIndexFun(unsigned short* descA, unsigned short* descB, float* dist, float ratio,
                           int countA, int strideA, int countB, int length,
                           std::vector<SPoint>& matches) {
  matching = {descA,  descB,          dist, ratio, countA, strideA, countB,
              length, matches.size(), {},   {},    {},     {}};
  matching.requested = threadOneCalcFlag || threadTwoCalcFlag;
  matching.bytesA = bytesOf(descA);
  matching.bytesB = bytesOf(descB);
  matching.distBefore.assign(dist, dist + numpoint);
  return libraryDefinition(&calacDistanceIndexFun,
                           "_Z21calacDistanceIndexFunPtS_PffiiiiRSt6vectorI6SPointSaIS2_EE")(
      descA, descB, dist, ratio, countA, strideA, countB, length, matches);
}
