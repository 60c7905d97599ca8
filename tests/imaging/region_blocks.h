// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <framequilt/records.h>
#include <gtest/gtest.h>

/// A half-open rectangle.
struct Rect {
  int row0, row1, col0, col1;
  int rows() const { return row1 - row0; }
  int cols() const { return col1 - col0; }
};

inline void expectInfo(const imgInfo& info, int reserved, int channels, int rows, int cols) {
  EXPECT_EQ(info.reserved, reserved);
  EXPECT_EQ(info.channels, channels);
  EXPECT_EQ(info.rows, rows);
  EXPECT_EQ(info.cols, cols);
}
