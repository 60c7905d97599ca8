// SPDX-License-Identifier: Apache-2.0
// Brightness and sharpness of the record, worked out a second time from the frames themselves.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/run/captures.h"
#include "tests/run/scripted_offset.h"

namespace {

constexpr int kRows = 150;
constexpr int kCols = 210;

/// A gray image that mirrors at its edges without repeating them.
struct Gray {
  int rows, cols;
  std::vector<int> values;

  Gray(int rowCount, int colCount)
      : rows(rowCount),
        cols(colCount),
        values(static_cast<std::size_t>(rowCount) * static_cast<std::size_t>(colCount)) {}

  int& at(int r, int c) {
    return values[static_cast<std::size_t>(r) * static_cast<std::size_t>(cols) +
                  static_cast<std::size_t>(c)];
  }
  int mirrored(int r, int c) const {
    r = r < 0 ? -r : r >= rows ? 2 * rows - 2 - r : r;
    c = c < 0 ? -c : c >= cols ? 2 * cols - 2 - c : c;
    return values[static_cast<std::size_t>(r * cols + c)];
  }
};

Gray grayPart(const Frame& frame, int row0, int col0, int rows, int cols) {
  Gray gray(rows, cols);
  for (int r = 0; r < rows; ++r) {
    for (int c = 0; c < cols; ++c) {
      const auto byte = [&](int k) { return int{frame.at(row0 + r, col0 + c, k)}; };
      gray.at(r, c) = frame.channels == 1
                          ? byte(0)
                          : (114 * byte(0) + 587 * byte(1) + 299 * byte(2) + 500) / 1000;
    }
  }
  return gray;
}

Gray smoothed(const Gray& gray) {
  Gray result(gray.rows, gray.cols);
  for (int r = 0; r < gray.rows; ++r) {
    for (int c = 0; c < gray.cols; ++c) {
      int sum = 0;
      for (int i = -1; i <= 1; ++i) {
        for (int j = -1; j <= 1; ++j) {
          sum += (2 - i * i) * (2 - j * j) * gray.mirrored(r + i, c + j);
        }
      }
      result.at(r, c) = sum / 16;
    }
  }
  return result;
}

float brightnessOf(Gray image) {
  int sum = 0;
  int count = 0;
  for (int r = 2; r < image.rows - 2; r += 2) {
    for (int c = 2; c < image.cols - 2; c += 2) {
      sum += image.at(r, c);
      ++count;
    }
  }
  return static_cast<float>(sum) / static_cast<float>(count);
}

/// Every second pixel of the top-left quarter, in a plane of half the size that is 0 elsewhere.
Gray sampledQuarter(Gray image) {
  Gray half(image.rows / 2, image.cols / 2);
  for (int r = 0; 2 * r < half.rows; ++r) {
    for (int c = 0; 2 * c < half.cols; ++c) half.at(r, c) = image.at(2 * r, 2 * c);
  }
  return half;
}

/// A byte `distance` columns from `c`; past the right edge the row goes on with its columns from
/// the fifth last to the second last.
int tap(Gray& plane, int r, int c, int distance) {
  int column = c + distance;
  if (column < 0) column = -column;
  if (column >= plane.cols) column -= 5;
  return plane.at(r, column);
}

/// Edge response, blank near the edges of the plane.
Gray responseOf(Gray plane) {
  constexpr int kTaps[9] = {-1, -2, -1, 2, 4, 2, -1, -2, -1};
  Gray response(plane.rows, plane.cols);
  for (int r = 1; r < plane.rows - 1; ++r) {
    for (int c = 10; c < plane.cols - 11; ++c) {
      int sum = 0;
      for (int d = -4; d <= 4; ++d) sum += kTaps[d + 4] * tap(plane, r, c, d);
      response.at(r, c) = ((sum % 256) + 256) % 256;
    }
  }
  return response;
}

/// Mean of the responses above 10. With an odd width the rows are read half a pixel further each.
float sharpnessOf(const Gray& image) {
  const Gray response = responseOf(sampledQuarter(image));
  int sum = 0;
  int count = 0;
  for (int r = 0; r < response.rows; ++r) {
    for (int c = 0; c < response.cols; ++c) {
      const auto index = static_cast<std::size_t>(r * image.cols / 2 + c);
      const int value = index < response.values.size() ? response.values[index] : 0;
      if (value <= 10) continue;
      sum += value;
      ++count;
    }
  }
  return static_cast<float>(sum) / static_cast<float>(count);
}

void expectMeasuresOfFrames(int channels, int dx, int dy) {
  SCOPED_TRACE(std::to_string(channels) + " channels, offset " + std::to_string(dx) + ", " +
               std::to_string(dy));
  const Frame reference = Scene(kRows, kCols, channels, 21).picture();
  const Frame frame = withGain(Scene(kRows, kCols, channels, 22).picture(), 200, 30);
  RunSettings settings = RunSettings::forFrame(frame);
  settings.stitchMode = 0;
  CaptureRun run(settings);
  scriptOffset({dx, dy});
  const stitchflags record = run.first(reference, frame).flags;

  const int rows = kRows - std::abs(dy);
  const int cols = kCols - std::abs(dx);
  const Gray one = smoothed(grayPart(reference, std::max(0, dy), std::max(0, dx), rows, cols));
  const Gray two = smoothed(grayPart(frame, std::max(0, -dy), std::max(0, -dx), rows, cols));
  EXPECT_EQ(record.brightOne, brightnessOf(one));
  EXPECT_EQ(record.brightTwo, brightnessOf(two));
  EXPECT_EQ(record.definitionOne, sharpnessOf(one));
  EXPECT_EQ(record.definitionTwo, sharpnessOf(two));
}

TEST(OverlapMeasures, AreThoseOfTheFramesInEveryDirection) {
  for (const int channels : {1, 3}) {
    expectMeasuresOfFrames(channels, 40, 30);
    expectMeasuresOfFrames(channels, -40, 30);
    expectMeasuresOfFrames(channels, 40, -30);
    expectMeasuresOfFrames(channels, -40, -30);
  }
}

TEST(OverlapMeasures, AreThoseOfTheFramesAtOddOffsets) {
  expectMeasuresOfFrames(1, 41, 0);
  expectMeasuresOfFrames(1, -73, 35);
  expectMeasuresOfFrames(3, 37, -51);
}

TEST(OverlapMeasures, ReadTheMosaicRatherThanTheReference) {
  // The second frame overlaps with what was blended, in gray darkened by the fusion.
  const Frame reference(kRows, kCols, 1, 200);
  RunSettings settings = RunSettings::forFrame(reference);
  settings.stitchMode = 0;
  CaptureRun run(settings);
  scriptOffset({60, 0});
  run.first(Scene(kRows, kCols, 1, 21).picture(), Scene(kRows, kCols, 1, 21).picture());
  const FrameOutcome blended = run.next(Scene(kRows, kCols, 1, 21).picture());
  ASSERT_TRUE(blended.joined());
  scriptOffset({0, 0});
  const stitchflags record = run.next(reference).flags;
  Frame underFrame(kRows, kCols, 1);
  for (int r = 0; r < kRows; ++r) {
    for (int c = 0; c < kCols; ++c) {
      underFrame.at(r, c) =
          *blended.mosaic.ptr(blended.flags.position.y + r, blended.flags.position.x + c);
    }
  }
  EXPECT_EQ(record.brightOne, brightnessOf(smoothed(grayPart(underFrame, 0, 0, kRows, kCols))));
  EXPECT_EQ(record.brightTwo, 200.0F);
}

}  // namespace
