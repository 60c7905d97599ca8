// SPDX-License-Identifier: Apache-2.0
#include "imaging/region.h"

#include <cstddef>
#include <cstring>

#include "imaging/pixel_math.h"
#include "interface/report.h"

namespace {

using framequilt::difference32;
using framequilt::rowStart;
using framequilt::sum32;

/// The bytes A1 A2 are an ideographic comma in the GB2312 code page and go out as they are.
constexpr char kRefusal[] =
    "ptr is null or endBigRow \xA1\xA2"
    "endBigCol overSize";

/// A rectangle of an image that is `stride` pixels wide.
struct Block {
  int row, col, stride;

  std::ptrdiff_t offset(int r, int channels) const {
    return rowStart(row + r, stride, channels) + static_cast<std::ptrdiff_t>(col) * channels;
  }
};

bool refuses(int endRow, int endCol, int bigRows, int bigCols, const void* big, const void* small) {
  if (endCol <= bigCols && endRow <= bigRows && big != nullptr && small != nullptr) return false;
  framequilt::report(kRefusal);
  return true;
}

void copyBlock(const unsigned char* from, Block source, unsigned char* to, Block target, int rows,
               int cols, int channels) {
  if ((channels != 1 && channels != 3) || cols < 1) return;
  const std::size_t rowBytes = framequilt::planeSize(1, cols, channels);
  for (int r = 0; r < rows; ++r) {
    std::memcpy(to + target.offset(r, channels), from + source.offset(r, channels), rowBytes);
  }
}

/// Where the overlap starts, on one axis, in a frame and in the frame placed before it, when the
/// new one lies `offset` further on; and how long it is. Offsets that no frame has wrap.
struct AxisOverlap {
  int inPrevious, inNew, length;

  AxisOverlap(int offset, int side)
      : inPrevious(offset >= 0 ? offset : 0),
        inNew(offset >= 0 ? 0 : difference32(0, offset)),
        length(offset >= 0 ? difference32(side, offset) : sum32(side, offset)) {}
};

}  // namespace

bool willBigImgAssignRowColToSmallImg(unsigned char* big, int startRow, int endRow, int startCol,
                                      int endCol, int bigRows, int bigCols, int channels,
                                      imgInfo& smallInfo, unsigned char* small) {
  if (refuses(endRow, endCol, bigRows, bigCols, big, small)) return false;
  smallInfo.cols = difference32(endCol, startCol);
  smallInfo.rows = difference32(endRow, startRow);
  smallInfo.channels = channels;
  copyBlock(big, {startRow, startCol, bigCols}, small, {0, 0, smallInfo.cols}, smallInfo.rows,
            smallInfo.cols, channels);
  return true;
}

bool willSmallImgToBigImgAssignRowCol(unsigned char* small, int /*smallRows*/, int smallCols,
                                      int startRow, int endRow, int startCol, int endCol,
                                      int bigRows, int bigCols, int channels, unsigned char* big) {
  if (refuses(endRow, endCol, bigRows, bigCols, big, small)) return false;
  copyBlock(small, {0, 0, smallCols}, big, {startRow, startCol, bigCols},
            difference32(endRow, startRow), difference32(endCol, startCol), channels);
  return true;
}

void takeOutOverLapImageFromMoasicImage(unsigned char* mosaic, unsigned char* frame,
                                        imgInfo mosaicInfo, imgInfo frameInfo, SPoint position,
                                        int offsetX, int offsetY, imgInfo& mosaicPartInfo,
                                        imgInfo& framePartInfo, unsigned char* mosaicPart,
                                        unsigned char* framePart) {
  if (mosaic == nullptr || frame == nullptr || mosaicPart == nullptr || framePart == nullptr) {
    framequilt::report("ptr is null");
    return;
  }
  mosaicPartInfo.channels = mosaicInfo.channels;
  framePartInfo.channels = frameInfo.channels;

  const AxisOverlap y(offsetY, frameInfo.rows);
  const AxisOverlap x(offsetX, frameInfo.cols);
  const int row0 = sum32(position.y, y.inPrevious);
  const int col0 = sum32(position.x, x.inPrevious);
  willBigImgAssignRowColToSmallImg(mosaic, row0, sum32(row0, y.length), col0, sum32(col0, x.length),
                                   mosaicInfo.rows, mosaicInfo.cols, mosaicInfo.channels,
                                   mosaicPartInfo, mosaicPart);
  willBigImgAssignRowColToSmallImg(frame, y.inNew, sum32(y.inNew, y.length), x.inNew,
                                   sum32(x.inNew, x.length), frameInfo.rows, frameInfo.cols,
                                   frameInfo.channels, framePartInfo, framePart);
}
