// SPDX-License-Identifier: Apache-2.0
#include "cpu/working_buffers.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <new>

namespace {

using framequilt::imageBytes;

constexpr int kMost = std::numeric_limits<int>::max();

TEST(ImageBytes, UpToThoseThatAnIntCounts) {
  EXPECT_EQ(imageBytes(30, 40, 3), 3600U);
  EXPECT_EQ(imageBytes(0, 40, 3), 0U);
  EXPECT_EQ(imageBytes(1, kMost, 1), std::size_t{kMost});
  EXPECT_THROW(imageBytes(1 << 15, 1 << 16, 1), std::bad_alloc);
  EXPECT_THROW(imageBytes(2, kMost, 1), std::bad_alloc);
  EXPECT_THROW(imageBytes(kMost, kMost, kMost), std::bad_alloc) << "beyond 64 bits";
  EXPECT_THROW(imageBytes(-1, 40, 3), std::bad_alloc);
}

TEST(WorkingPixelBytes, TwoChannelsTakeTheRoomOfThree) {
  EXPECT_EQ(framequilt::workingPixelBytes(1), 1);
  EXPECT_EQ(framequilt::workingPixelBytes(2), 3);
  EXPECT_EQ(framequilt::workingPixelBytes(3), 3);
  EXPECT_EQ(framequilt::workingPixelBytes(0), 1);
}

}  // namespace
