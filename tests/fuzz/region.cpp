// SPDX-License-Identifier: Apache-2.0
// Copies of rectangles against a pixel at a time. Ends of a range and offsets may be anything;
// starts lie in the image or behind it, as the routines ask for.
#include "imaging/region.h"

#include <array>

#include "imaging/pixel_math.h"
#include "tests/fuzz/input_bytes.h"
#include "tests/fuzz/target.h"
#include "tests/imaging/reference.h"

namespace {

using framequilt::fuzz::InputBytes;
using Bytes = std::vector<unsigned char>;

constexpr std::array<int, 8> kChannels = {1, 3, 1, 3, 0, 2, 4, -1};
constexpr std::size_t kSlack = 1;  // No vector is empty, so that no pointer is null.

/// A half-open rectangle.
struct Rect {
  int row0, row1, col0, col1;
  int rows() const { return framequilt::difference32(row1, row0); }
  int cols() const { return framequilt::difference32(col1, col0); }
};

/// An image and what it is.
struct Image {
  int rows, cols, channels;
  Bytes bytes;

  Image(int r, int c, int n, InputBytes& in)
      : rows(r), cols(c), channels(n), bytes(in.image(area(r, c, std::max(n, 0)) + kSlack)) {}
};

bool isCopied(int channels) { return channels == 1 || channels == 3; }

/// A range that begins in [0, side] and ends anywhere.
void takeRange(InputBytes& in, int side, int& start, int& end) {
  start = in.between(0, side);
  end = in.byte() < 250 ? in.between(-1, side + 1) : in.anyInt();
}

Rect takeRect(InputBytes& in, const Image& big) {
  Rect rect{};
  takeRange(in, big.rows, rect.row0, rect.row1);
  takeRange(in, big.cols, rect.col0, rect.col1);
  return rect;
}

bool fits(const Rect& rect, const Image& big) {
  return rect.row1 <= big.rows && rect.col1 <= big.cols;
}

bool sameInfo(const imgInfo& a, const imgInfo& b) {
  return a.reserved == b.reserved && a.channels == b.channels && a.rows == b.rows &&
         a.cols == b.cols;
}

/// What the cut of a rectangle gives, pixel by pixel; leaves both alone where it is refused.
void cutPlainly(const Image& big, const Rect& rect, imgInfo& info, Bytes& small) {
  if (!fits(rect, big)) return;
  info.channels = big.channels;
  info.rows = rect.rows();
  info.cols = rect.cols();
  if (!isCopied(big.channels) || info.rows < 1 || info.cols < 1) return;
  std::size_t to = 0;
  for (int r = rect.row0; r < rect.row1; ++r) {
    for (int c = rect.col0; c < rect.col1; ++c) {
      for (int k = 0; k < big.channels; ++k) {
        small[to++] = big.bytes[area(r, big.cols, big.channels) + area(1, c, big.channels) +
                                static_cast<std::size_t>(k)];
      }
    }
  }
}

void checkCut(InputBytes& in) {
  Image big(in.between(0, 9), in.between(0, 40), in.oneOf(kChannels), in);
  const Rect rect = takeRect(in, big);
  const std::size_t room =
      fits(rect, big) && isCopied(big.channels) && rect.rows() > 0 && rect.cols() > 0
          ? area(rect.rows(), rect.cols(), big.channels)
          : 0;
  imgInfo expectedInfo = {7, 8, 9, 10};
  imgInfo info = expectedInfo;
  Bytes expected(room + kSlack, 171);
  Bytes small = expected;
  cutPlainly(big, rect, expectedInfo, expected);
  const bool done =
      willBigImgAssignRowColToSmallImg(big.bytes.data(), rect.row0, rect.row1, rect.col0, rect.col1,
                                       big.rows, big.cols, big.channels, info, small.data());
  FRAMEQUILT_HOLDS(done == fits(rect, big));
  FRAMEQUILT_HOLDS(sameInfo(info, expectedInfo));
  FRAMEQUILT_HOLDS(small == expected);
}

void checkWrite(InputBytes& in) {
  Image big(in.between(0, 9), in.between(0, 40), in.oneOf(kChannels), in);
  const Rect rect = takeRect(in, big);
  const int smallCols = in.between(0, 50);
  const bool copies =
      fits(rect, big) && isCopied(big.channels) && rect.rows() > 0 && rect.cols() > 0;
  // Rows of the small image may overlap; the last one is as long as what is written.
  const std::size_t room =
      copies ? area(rect.rows() - 1, smallCols, big.channels) + area(1, rect.cols(), big.channels)
             : 0;
  Bytes small = in.image(room + kSlack);
  Bytes expected = big.bytes;
  for (int r = 0; copies && r < rect.rows(); ++r) {
    for (int c = 0; c < rect.cols() * big.channels; ++c) {
      expected[area(rect.row0 + r, big.cols, big.channels) + area(1, rect.col0, big.channels) +
               static_cast<std::size_t>(c)] =
          small[area(r, smallCols, big.channels) + static_cast<std::size_t>(c)];
    }
  }
  const bool done = willSmallImgToBigImgAssignRowCol(
      small.data(), in.anyInt(), smallCols, rect.row0, rect.row1, rect.col0, rect.col1, big.rows,
      big.cols, big.channels, big.bytes.data());
  FRAMEQUILT_HOLDS(done == fits(rect, big));
  FRAMEQUILT_HOLDS(big.bytes == expected);
}

/// The part of an axis that a frame of `side` shares with one `offset` further on: where it begins
/// in both and ends in both, as 32 bits hold it.
struct Shared {
  int inPrevious, inNew, end, endOfNew;

  Shared(int position, int offset, int side) {
    using framequilt::sum32;
    const int length = offset >= 0 ? framequilt::difference32(side, offset) : sum32(side, offset);
    inPrevious = sum32(position, offset >= 0 ? offset : 0);
    inNew = offset >= 0 ? 0 : framequilt::difference32(0, offset);
    end = sum32(inPrevious, length);
    endOfNew = sum32(inNew, length);
  }
};

void checkOverlapCut(InputBytes& in) {
  const int channels = in.oneOf(kChannels);
  Image mosaic(in.between(0, 12), in.between(0, 40), channels, in);
  Image frame(in.between(0, 9), in.between(0, 30), channels, in);
  const SPoint position = {in.between(0, mosaic.cols), in.between(0, mosaic.rows)};
  const auto takeOffset = [&in](int side) {
    return in.byte() < 250 ? in.between(-side - 1, side + 1) : in.anyInt();
  };
  const int dx = takeOffset(frame.cols);
  const int dy = takeOffset(frame.rows);
  const Shared x(position.x, dx, frame.cols);
  const Shared y(position.y, dy, frame.rows);

  imgInfo info[2] = {{1, 2, 3, 4}, {5, 6, 7, 8}};
  imgInfo expectedInfo[2] = {{1, channels, 3, 4}, {5, channels, 7, 8}};
  Bytes expected[2];
  for (Bytes& part : expected) part.assign(frame.bytes.size(), 171);
  Bytes part[2] = {expected[0], expected[1]};
  cutPlainly(mosaic, {y.inPrevious, y.end, x.inPrevious, x.end}, expectedInfo[0], expected[0]);
  cutPlainly(frame, {y.inNew, y.endOfNew, x.inNew, x.endOfNew}, expectedInfo[1], expected[1]);
  takeOutOverLapImageFromMoasicImage(mosaic.bytes.data(), frame.bytes.data(),
                                     {0, channels, mosaic.rows, mosaic.cols},
                                     {0, channels, frame.rows, frame.cols}, position, dx, dy,
                                     info[0], info[1], part[0].data(), part[1].data());
  for (int k = 0; k < 2; ++k) {
    FRAMEQUILT_HOLDS(sameInfo(info[k], expectedInfo[k]));
    FRAMEQUILT_HOLDS(part[k] == expected[k]);
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  framequilt::fuzz::silenceReports();
  InputBytes in(data, size);
  switch (in.byte() % 3) {
    case 0:
      checkCut(in);
      break;
    case 1:
      checkWrite(in);
      break;
    default:
      checkOverlapCut(in);
  }
  return 0;
}
