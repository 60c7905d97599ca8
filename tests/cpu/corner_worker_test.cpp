// SPDX-License-Identifier: Apache-2.0
#include "cpu/corner_worker.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <vector>

#include "features/descriptor.h"
#include "features/harris.h"
#include "imaging/gray.h"
#include "tests/cpu/run_fixture.h"
#include "tests/support/recorded_reports.h"

namespace {

using Descriptors = std::vector<unsigned short>;

/// The state that one worker reads and writes.
struct Lane {
  std::atomic<bool>& request;
  unsigned char*& input;
  unsigned char*& gray;
  Points& corners;
  unsigned short*& descriptors;
  unsigned short*& scratch;
  unsigned char*& strip;
  bool (*harris)(unsigned char*, imgInfo, Points&);
  bool (*range)(int, int, unsigned char*, int, int, Points&);
};

Lane lane(int number) {
  if (number == 1) {
    return {threadOneCalcFlag, SorImageOneIn,   resiz_One,        HarrissCornerSPointOneArray,
            FeatureDescriber1, DescribleSymbol, SorTempGrayImage, findHarrisCornerCoordianteFun1,
            getRangeCpuOne};
  }
  return {threadTwoCalcFlag, DestImageTwoIn,   resiz_Two,         HarrissCornerSPointTwoArray,
          FeatureDescriber2, DescribleSymbol1, DestTempGrayImage, findHarrisCornerCoordianteFun2,
          getRangeCpuTwo};
}

constexpr unsigned short kUntouched = 0xABCD;

/// Raises the request flags itself, as a program without the offset estimation would.
class CornerWorker : public RunForPairs, public testing::WithParamInterface<int> {
 protected:
  void SetUp() override {
    RunForPairs::SetUp();
    lane_.corners.clear();
  }

  void TearDown() override {
    for (unsigned short** slot : {&FeatureDescriber1, &FeatureDescriber2}) {
      delete[] * slot;
      *slot = nullptr;
    }
    RunForPairs::TearDown();
  }

  void work(Bytes& image, int channels) {
    const std::size_t elements = area(numpoint, demesion);
    delete[] lane_.descriptors;
    lane_.descriptors = fresh<unsigned short>(elements, kUntouched);
    lane_.input = image.data();
    InfoTh = {0, channels, kRows, kCols};
    lane_.request = true;
    waitUntilClear(lane_.request);
    descriptors_.assign(lane_.descriptors, lane_.descriptors + elements);
    EXPECT_EQ(lane_.scratch, nullptr);
    EXPECT_EQ(lane_.strip, nullptr);
  }

  Bytes workedOn() const { return {lane_.gray, lane_.gray + area(kRows, kCols)}; }

  /// The described corners first, then elements that nobody wrote.
  Descriptors describedByHand(Bytes gray) const {
    Descriptors expected(area(numpoint, demesion), kUntouched), scratch(area(1, demesion));
    noRotaFeatureDescriber(gray.data(), kRows, kCols, demesion, 20, lane_.corners, scratch.data(),
                           expected.data());
    return expected;
  }

  Lane lane_ = lane(GetParam());
  Descriptors descriptors_;
};

INSTANTIATE_TEST_SUITE_P(Both, CornerWorker, testing::Values(1, 2));

TEST_P(CornerWorker, RequestRaisedDirectlyIsServed) {
  Bytes image = texture(kRows, kCols, 3);
  work(image, 1);
  Points expected;
  ASSERT_TRUE(lane_.harris(image.data(), {0, 1, kRows, kCols}, expected));
  EXPECT_EQ(lane_.corners, expected);
  EXPECT_EQ(descriptors_, describedByHand(image));
}

TEST_P(CornerWorker, GrayInputIsUsedAsItIs) {
  Bytes image = texture(kRows, kCols, 4);
  work(image, 1);
  EXPECT_EQ(workedOn(), image);
  EXPECT_EQ(lane_.gray[area(kRows, kCols)], 77) << "only the image's bytes are written";
}

TEST_P(CornerWorker, ColourInputIsConverted) {
  Random random(5);
  Bytes image = random.bytes(area(kRows, kCols, 3)), expected(area(kRows, kCols));
  ASSERT_TRUE(rgb2Gray(image.data(), kRows, kCols, expected.data()));
  work(image, 3);
  EXPECT_EQ(workedOn(), expected);
}

TEST_P(CornerWorker, AnyOtherChannelCountIsCopied) {
  Bytes image = texture(kRows * 2, kCols, 6);
  work(image, 2);
  image.resize(area(kRows, kCols));
  EXPECT_EQ(workedOn(), image);
}

TEST_P(CornerWorker, DescriptorLengthFollowsTheTuning) {
  for (const int length : {40, 200, 260}) {
    demesion = length;
    lane_.corners.clear();
    Bytes image = texture(kRows, kCols, 7);
    work(image, 1);
    ASSERT_FALSE(lane_.corners.empty());
    EXPECT_EQ(descriptors_, describedByHand(image)) << length;
  }
}

TEST_P(CornerWorker, HintLimitsTheSearchToTheStrip) {
  cpuMotorflage = true;
  cpuMotordx = -24;
  cpuMotordy = 18;
  Bytes image = texture(kRows, kCols, 8);
  work(image, 1);
  const Points hinted = lane_.corners;
  EXPECT_EQ(descriptors_, describedByHand(image)) << "described in the whole image";

  lane_.strip = fresh<unsigned char>(area(kRows, kCols));
  Points expected;
  lane_.range(-24, 18, image.data(), kRows, kCols, expected);
  delete[] lane_.strip;
  lane_.strip = nullptr;
  ASSERT_FALSE(expected.empty());
  EXPECT_EQ(hinted, expected);
}

TEST_P(CornerWorker, HintOfNoDisplacementSearchesTheWholeImage) {
  Bytes image = texture(kRows, kCols, 9);
  work(image, 1);
  const Points whole = lane_.corners;
  ASSERT_FALSE(whole.empty());
  lane_.corners.clear();
  cpuMotorflage = true;
  work(image, 1);
  EXPECT_EQ(lane_.corners, whole);
}

TEST_P(CornerWorker, ImageWithoutCornersDescribesNothing) {
  const RecordedReports reports;
  Bytes flat(area(kRows, kCols), 100);
  work(flat, 1);
  EXPECT_TRUE(lane_.corners.empty());
  EXPECT_EQ(descriptors_, Descriptors(descriptors_.size(), kUntouched));
  EXPECT_TRUE(reports.ofCaller().empty());
  const Lines lines = reports.ofWorkers();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "HarrissCornerSPoint size is 0"), 1);
}

TEST_P(CornerWorker, ManyJobsInARowAreAllServed) {
  Bytes images[] = {texture(kRows, kCols, 10), Bytes(area(kRows, kCols), 1)};
  for (int job = 0; job < 20; ++job) {
    lane_.corners.clear();
    work(images[job % 2], 1);
    ASSERT_EQ(lane_.corners.empty(), job % 2 == 1);
  }
}

/// The descriptors have room for the corners of one job.
TEST_P(CornerWorker, CornersOfTheJobBeforeAreForgotten) {
  Bytes image = texture(kRows, kCols, 12);
  work(image, 1);
  const Points once = lane_.corners;
  ASSERT_FALSE(once.empty());
  work(image, 1);
  EXPECT_EQ(lane_.corners, once);
}

TEST_P(CornerWorker, RequestWithoutItsMemoryIsClearedToo) {
  lane_.input = nullptr;
  InfoTh = {0, 1, kRows, kCols};
  lane_.request = true;
  waitUntilClear(lane_.request);
  EXPECT_TRUE(lane_.corners.empty());
}

/// The bodies as threads of the test's own.
TEST(CornerWorkerBody, LeavesWithoutAResultOrAJobWhenItsRunFlagIsClear) {
  struct Body {
    void* (*body)(void*);
    std::atomic<bool>& request;
  };
  for (const Body& worker : {Body{findHarrisCornerCoordianteThreadOne, threadOneCalcFlag},
                             Body{findHarrisCornerCoordianteThreadTwo, threadTwoCalcFlag}}) {
    worker.request = true;
    pthread_t thread = 0;
    ASSERT_EQ(pthread_create(&thread, nullptr, worker.body, nullptr), 0);
    void* result = &thread;
    EXPECT_EQ(pthread_join(thread, &result), 0);
    EXPECT_EQ(result, nullptr);
    EXPECT_TRUE(worker.request);
    worker.request = false;
  }
}

TEST(CornerWorkerBody, TheSecondAloneAnnouncesItself) {
  const auto linesOf = [](void* (*body)(void*)) {
    const RecordedReports reports;
    pthread_t thread = 0;
    EXPECT_EQ(pthread_create(&thread, nullptr, body, nullptr), 0);
    EXPECT_EQ(pthread_join(thread, nullptr), 0);
    return reports.ofWorkers();
  };
  EXPECT_EQ(linesOf(findHarrisCornerCoordianteThreadOne), Lines{});
  EXPECT_EQ(linesOf(findHarrisCornerCoordianteThreadTwo),
            Lines{"findHarrisCornerCoordianteThreadTwo in"});
}

TEST_P(CornerWorker, TheOtherWorkersDataIsLeftAlone) {
  const Lane other = lane(3 - GetParam());
  other.corners.assign(3, SPoint{1, 2});
  other.descriptors = fresh<unsigned short>(4, kUntouched);
  Bytes image = texture(kRows, kCols, 11);
  work(image, 1);
  EXPECT_EQ(other.corners, Points(3, SPoint{1, 2}));
  EXPECT_EQ(Descriptors(other.descriptors, other.descriptors + 4), Descriptors(4, kUntouched));
  EXPECT_EQ(Bytes(other.gray, other.gray + area(kRows + 2, kCols + 2)),
            Bytes(area(kRows + 2, kCols + 2), 77));
}

}  // namespace
