// SPDX-License-Identifier: Apache-2.0
#include <framequilt/records.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <opencv2/core/types.hpp>
#include <type_traits>

#include "tests/support/same_types.h"

namespace {

template <class Record>
constexpr bool kIsPlain = std::is_aggregate_v<Record>&& std::is_trivially_copyable_v<Record>&&
    std::is_standard_layout_v<Record>;

TEST(Records, AreAggregatesThatAHostCanCopyWhole) {
  EXPECT_TRUE(kIsPlain<imgInfo>);
  EXPECT_TRUE(kIsPlain<SPoint>);
  EXPECT_TRUE(kIsPlain<stitchflags>);
}

TEST(Records, ImageShapeIsFourWords) {
  EXPECT_EQ(sizeof(imgInfo), 16U);
  EXPECT_EQ(offsetof(imgInfo, reserved), 0U);
  EXPECT_EQ(offsetof(imgInfo, channels), 4U);
  EXPECT_EQ(offsetof(imgInfo, rows), 8U);
  EXPECT_EQ(offsetof(imgInfo, cols), 12U);
}

TEST(Records, PointIsColumnThenRow) {
  EXPECT_EQ(sizeof(SPoint), 8U);
  EXPECT_EQ(offsetof(SPoint, x), 0U);
  EXPECT_EQ(offsetof(SPoint, y), 4U);
}

TEST(Records, PointIsLaidOutLikeThatOfOpencv) {
  ASSERT_EQ(sizeof(SPoint), sizeof(cv::Point_<int>));
  const cv::Point_<int> point(-3, 70000);
  SPoint same = {};
  std::memcpy(&same, &point, sizeof same);
  EXPECT_EQ(same.x, -3);
  EXPECT_EQ(same.y, 70000);
}

TEST(Records, FieldsAreWholeNumbersButForTheMeasures) {
  EXPECT_TRUE((kAreAll<int, decltype(imgInfo::reserved), decltype(imgInfo::channels),
                       decltype(imgInfo::rows), decltype(imgInfo::cols)>));
  EXPECT_TRUE((kAreAll<int, decltype(SPoint::x), decltype(SPoint::y)>));
  EXPECT_TRUE(
      (kAreAll<float, decltype(stitchflags::brightOne), decltype(stitchflags::brightTwo),
               decltype(stitchflags::definitionOne), decltype(stitchflags::definitionTwo)>));
  EXPECT_TRUE((kAreAll<int, decltype(stitchflags::matchNum), decltype(stitchflags::offsetX),
                       decltype(stitchflags::offsetY), decltype(stitchflags::stitch_flags)>));
  EXPECT_TRUE((std::is_same_v<SPoint, decltype(stitchflags::position)>));
}

TEST(Records, ResultIsTenWords) {
  EXPECT_EQ(sizeof(stitchflags), 40U);
  EXPECT_EQ(offsetof(stitchflags, brightOne), 0U);
  EXPECT_EQ(offsetof(stitchflags, brightTwo), 4U);
  EXPECT_EQ(offsetof(stitchflags, definitionOne), 8U);
  EXPECT_EQ(offsetof(stitchflags, definitionTwo), 12U);
  EXPECT_EQ(offsetof(stitchflags, matchNum), 16U);
  EXPECT_EQ(offsetof(stitchflags, offsetX), 20U);
  EXPECT_EQ(offsetof(stitchflags, offsetY), 24U);
  EXPECT_EQ(offsetof(stitchflags, position), 28U);
  EXPECT_EQ(offsetof(stitchflags, stitch_flags), 36U);
}

}  // namespace
