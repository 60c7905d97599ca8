// SPDX-License-Identifier: Apache-2.0
#include <framequilt/records.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>

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
