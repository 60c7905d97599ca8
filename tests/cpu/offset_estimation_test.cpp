// SPDX-License-Identifier: Apache-2.0
#include "cpu/offset_estimation.h"

#include <gtest/gtest.h>

#include "tests/cpu/run_fixture.h"
#include "tests/support/recorded_reports.h"

namespace {

struct Estimate {
  bool found = false;
  int dx = 1001, dy = 1002, matchCount = 1003;
};

Estimate estimate(Bytes& reference, Bytes& frame, imgInfo info) {
  Estimate result;
  result.found =
      imageMosaicFun(reference.data(), frame.data(), info, result.dx, result.dy, result.matchCount);
  return result;
}

/// Of the pairs that support each other the first one gives the offset: it may be off by less than
/// the distance at which they still do.
void expectOffset(const Estimate& result, int dx, int dy) {
  ASSERT_TRUE(result.found);
  EXPECT_NEAR(result.dx, dx, 3);
  EXPECT_NEAR(result.dy, dy, 3);
}

void expectUntouched(const Estimate& result) {
  EXPECT_FALSE(result.found);
  EXPECT_EQ(result.dx, 1001);
  EXPECT_EQ(result.dy, 1002);
  EXPECT_EQ(result.matchCount, 1003);
}

void expectNothingLeft() {
  EXPECT_EQ(FeatureDescriber1, nullptr);
  EXPECT_EQ(FeatureDescriber2, nullptr);
  EXPECT_EQ(dist_valueCpu, nullptr);
  EXPECT_FALSE(threadOneCalcFlag);
  EXPECT_FALSE(threadTwoCalcFlag);
}

class OffsetEstimation : public RunForPairs {
 protected:
  static constexpr imgInfo kGray = {0, 1, kRows, kCols};
  static constexpr imgInfo kColour = {0, 3, kRows, kCols};

  /// The view of the scene from a camera that stands at (col, row).
  static Bytes view(int col, int row) { return texture(kRows, kCols, 21, row, col); }

  Bytes reference_ = view(0, 0);
};

TEST_F(OffsetEstimation, DisplacementOfTheNewFrameIsFound) {
  for (const auto& [dx, dy] : std::vector<SPoint>{{0, 0},
                                                  {30, 0},
                                                  {-30, 0},
                                                  {0, 24},
                                                  {0, -24},
                                                  {40, 20},
                                                  {-40, 20},
                                                  {40, -20},
                                                  {-40, -20}}) {
    SCOPED_TRACE(testing::Message() << dx << ", " << dy);
    Bytes frame = view(dx, dy);
    const Estimate result = estimate(reference_, frame, kGray);
    expectOffset(result, dx, dy);
    EXPECT_GE(result.matchCount, 11);
    expectNothingLeft();
  }
}

TEST_F(OffsetEstimation, ColourFramesAreComparedByTheirGray) {
  Bytes frame = view(30, -24);
  const Estimate gray = estimate(reference_, frame, kGray);
  Bytes colourReference = tripled(reference_), colourFrame = tripled(frame);
  const Estimate colour = estimate(colourReference, colourFrame, kColour);
  expectOffset(colour, 30, -24);
  EXPECT_EQ(colour.dx, gray.dx);
  EXPECT_EQ(colour.dy, gray.dy);
  EXPECT_EQ(colour.matchCount, gray.matchCount);
}

TEST_F(OffsetEstimation, HintLimitsTheSearchToTheCommonPart) {
  cpuMotorflage = true;
  for (const auto& [dx, dy] : std::vector<SPoint>{{30, 24}, {30, -24}, {-30, 0}}) {
    SCOPED_TRACE(testing::Message() << dx << ", " << dy);
    cpuMotordx = dx;
    cpuMotordy = dy;
    Bytes frame = view(dx, dy);
    expectOffset(estimate(reference_, frame, kGray), dx, dy);
  }
}

TEST_F(OffsetEstimation, NullImageIsReportedBeforeAnyWork) {
  const RecordedReports reports;
  Estimate result;
  unsigned char* const image = reference_.data();
  EXPECT_FALSE(imageMosaicFun(nullptr, image, kGray, result.dx, result.dy, result.matchCount));
  EXPECT_FALSE(imageMosaicFun(image, nullptr, kGray, result.dx, result.dy, result.matchCount));
  EXPECT_EQ(reports.ofCaller(), Lines(2, "imageMosaicFun ptr is null"));
  expectUntouched(result);
  expectNothingLeft();
}

TEST_F(OffsetEstimation, WorkIsAnnouncedOnce) {
  const RecordedReports reports;
  ASSERT_TRUE(estimate(reference_, reference_, kGray).found);
  EXPECT_EQ(reports.ofCaller(), Lines{"imageMosaicFun in"});
}

TEST_F(OffsetEstimation, ImageWithoutCornersHasNoOffset) {
  Bytes flat(area(kRows, kCols), 100);
  const RecordedReports reports;
  expectUntouched(estimate(reference_, flat, kGray));
  expectUntouched(estimate(flat, reference_, kGray));
  expectUntouched(estimate(flat, flat, kGray));
  EXPECT_EQ(reports.ofCaller(), Lines(3, "imageMosaicFun in"));
  expectNothingLeft();
}

/// Every corner has a twin, so that its nearest neighbours are equally near.
TEST_F(OffsetEstimation, CornersWithoutMatchesHaveNoOffset) {
  Bytes squares(area(kRows, kCols), 30);
  for (int r = 0; r < kRows; ++r) {
    for (int c = 0; c < kCols; ++c) {
      if (r % 40 >= 16 && r % 40 < 28 && c % 40 >= 16 && c % 40 < 28) {
        squares[area(r, kCols) + area(1, c)] = 200;
      }
    }
  }
  const RecordedReports reports;
  expectUntouched(estimate(squares, squares, kGray));
  EXPECT_GE(HarrissCornerSPointOneArray.size(), 8U);
  EXPECT_EQ(reports.ofCaller(), Lines{"imageMosaicFun in"}) << "an empty list is not handed on";
}

TEST_F(OffsetEstimation, CornerListsOfThePairBeforeAreForgotten) {
  HarrissCornerSPointOneArray.assign(500, SPoint{5, 5});
  HarrissCornerSPointTwoArray.assign(500, SPoint{5, 5});
  ASSERT_TRUE(estimate(reference_, reference_, kGray).found);
  EXPECT_LE(HarrissCornerSPointOneArray.size(), static_cast<std::size_t>(numpoint));
  EXPECT_EQ(HarrissCornerSPointOneArray, HarrissCornerSPointTwoArray);
}

TEST_F(OffsetEstimation, CornerListsKeepTheirStorage) {
  HarrissCornerSPointOneArray.reserve(5000);
  HarrissCornerSPointTwoArray.reserve(6000);
  const SPoint* const one = HarrissCornerSPointOneArray.data();
  const SPoint* const two = HarrissCornerSPointTwoArray.data();
  ASSERT_TRUE(estimate(reference_, reference_, kGray).found);
  EXPECT_EQ(HarrissCornerSPointOneArray.data(), one);
  EXPECT_EQ(HarrissCornerSPointTwoArray.data(), two);
}

TEST_F(OffsetEstimation, PairIsPublished) {
  InfoTh.reserved = 12;
  Bytes frame = view(6, 6);
  estimate(reference_, frame, kGray);
  EXPECT_EQ(SorImageOneIn, reference_.data());
  EXPECT_EQ(DestImageTwoIn, frame.data());
  EXPECT_EQ(InfoTh.rows, kRows);
  EXPECT_EQ(InfoTh.cols, kCols);
  EXPECT_EQ(InfoTh.channels, 1);
  EXPECT_EQ(InfoTh.reserved, 12);
}

TEST_F(OffsetEstimation, DescriptorsOfTheHostAreUsedAndReleased) {
  FeatureDescriber1 = fresh<unsigned short>(area(numpoint, demesion), 7);
  FeatureDescriber2 = fresh<unsigned short>(area(numpoint, demesion), 7);
  dist_valueCpu = fresh<float>(area(1, numpoint), 7.0F);
  EXPECT_TRUE(estimate(reference_, reference_, kGray).found);
  expectNothingLeft();
}

TEST_F(OffsetEstimation, SearchSizeIsSetForScaleOneAndTwoOnly) {
  Bytes flat(area(kRows, kCols), 100);
  struct Case {
    int scale, factor, rows, cols;
  };
  imgScaleRow = 101;
  imgScaleCol = 59;
  for (const Case& expected :
       {Case{1, 2, 50, 29}, Case{2, 2, 50, 29}, Case{3, 1, 5, 6}, Case{4, 1, 5, 6}}) {
    pointdownscal = 1;
    gray_pointdownscal_row = 5;
    gray_pointdownscal_col = 6;
    scale = expected.scale;
    estimate(flat, flat, kGray);
    EXPECT_EQ(pointdownscal, expected.factor);
    EXPECT_EQ(gray_pointdownscal_row, expected.rows);
    EXPECT_EQ(gray_pointdownscal_col, expected.cols);
  }
}

TEST(OffsetEstimationWithoutARun, ReturnsInsteadOfWaiting) {
  const RecordedReports reports;
  Bytes image(area(60, 70), 100);
  expectUntouched(estimate(image, image, {0, 1, 60, 70}));
  expectNothingLeft();
  EXPECT_EQ(reports.ofCaller(), Lines{"imageMosaicFun in"});
}

TEST(OffsetEstimationWithoutARun, ReturnsAfterAStopToo) {
  ASSERT_TRUE(initJointCpu(60, 70, 1, 1, 10, 10));
  uninitJointCpu();
  Bytes image(area(60, 70), 100);
  expectUntouched(estimate(image, image, {0, 1, 60, 70}));
  expectNothingLeft();
}

}  // namespace
