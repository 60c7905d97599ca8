// SPDX-License-Identifier: Apache-2.0
#include "cpu/mosaic_blend.h"

#include "cpu/mosaic_growth.h"
#include "cpu/run_state.h"
#include "framequilt/tuning.h"
#include "imaging/fusion.h"
#include "imaging/region.h"
#include "interface/report.h"

bool stitchingImageImageblendCpu(cv::Mat mosaic, unsigned char* frame, imgInfo info,
                                 stitchflags flags, SPoint topLeft, SPoint bottomRight,
                                 SPoint /*ignored*/, SPoint& topLeftOut, SPoint& bottomRightOut,
                                 SPoint& positionOut, imgInfo& regionInfo, cv::Mat& mosaicOut,
                                 unsigned char* region) {
  if (frame == nullptr) {
    framequilt::report("stitchingImageImageblend ptr is null");
    return false;
  }
  const int dx = flags.offsetX;
  const int dy = flags.offsetY;
  SPoint position = flags.position;
  BorderExpand(mosaic, info.rows, info.cols, dx, dy, info.rows, info.cols, mosaic.cols, mosaic.rows,
               position, mosaic, position, topLeft, bottomRight, topLeft, bottomRight);

  const int row0 = position.y + dy;
  const int col0 = position.x + dx;
  willBigImgAssignRowColToSmallImg(mosaic.data, row0, row0 + imgScaleRow, col0, col0 + imgScaleCol,
                                   mosaic.rows, mosaic.cols, info.channels, regionInfo, region);
  twoImageFusion(region, thedestImageScale, regionInfo.channels, 0, imgScaleRow, imgScaleCol);
  regionInfo.channels = info.channels;
  regionInfo.rows = imgScaleRow;
  regionInfo.cols = imgScaleCol;
  willSmallImgToBigImgAssignRowCol(region, imgScaleRow, imgScaleCol, row0, row0 + imgScaleRow, col0,
                                   col0 + imgScaleCol, mosaic.rows, mosaic.cols, info.channels,
                                   mosaic.data);

  position = {col0, row0};
  outputImageCoordate(topLeft, bottomRight, dx, dy, imgScaleRow, imgScaleCol, position, topLeftOut,
                      bottomRightOut);
  positionOut = position;
  mosaicOut = mosaic;
  return true;
}
