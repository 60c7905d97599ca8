// SPDX-License-Identifier: Apache-2.0
#include "cpu/mosaic_blend.h"

#include <cstring>

#include "cpu/mosaic_growth.h"
#include "cpu/placement_rules.h"
#include "cpu/run_state.h"
#include "framequilt/tuning.h"
#include "imaging/feather.h"
#include "imaging/fusion.h"
#include "imaging/pixel_math.h"
#include "imaging/region.h"
#include "interface/report.h"

namespace framequilt {
namespace {

/// Null: the frame lies in `thedestImageScale`.
const unsigned char* originalOfBlend = nullptr;

}  // namespace

bool blendFrame(const BlendJob& job, const FuseInMosaic& fuseInMosaic, const Fuse& fuse,
                BlendResult& result) {
  const int dx = job.flags.offsetX;
  const int dy = job.flags.offsetY;
  cv::Mat mosaic = job.mosaic;
  SPoint position = job.flags.position;
  SPoint topLeft = job.topLeft;
  SPoint bottomRight = job.bottomRight;
  BorderExpand(mosaic, job.info.rows, job.info.cols, dx, dy, job.info.rows, job.info.cols,
               mosaic.cols, mosaic.rows, position, mosaic, position, topLeft, bottomRight, topLeft,
               bottomRight);

  const int row0 = position.y + dy;
  const int col0 = position.x + dx;
  const bool inMosaic =
      fuseInMosaic && result.region != nullptr &&
      holdsFrame(mosaic, {col0, row0}, job.rows, job.cols, job.info.channels) &&
      fuseInMosaic(mosaic.ptr(row0, col0), static_cast<std::ptrdiff_t>(mosaic.step[0]),
                   result.region, job.info.channels);
  if (!inMosaic) {
    willBigImgAssignRowColToSmallImg(mosaic.data, row0, row0 + job.rows, col0, col0 + job.cols,
                                     mosaic.rows, mosaic.cols, job.info.channels, result.regionInfo,
                                     result.region);
    if (!fuse(result.region, result.regionInfo.channels)) return false;
    willSmallImgToBigImgAssignRowCol(result.region, job.rows, job.cols, row0, row0 + job.rows, col0,
                                     col0 + job.cols, mosaic.rows, mosaic.cols, job.info.channels,
                                     mosaic.data);
  }
  result.regionInfo.channels = job.info.channels;
  result.regionInfo.rows = job.rows;
  result.regionInfo.cols = job.cols;

  position = {col0, row0};
  outputImageCoordate(topLeft, bottomRight, dx, dy, job.rows, job.cols, position, result.topLeft,
                      result.bottomRight);
  result.position = position;
  result.mosaic = mosaic;
  return true;
}

BlendFrom::BlendFrom(const unsigned char* original) noexcept { originalOfBlend = original; }
BlendFrom::~BlendFrom() { originalOfBlend = nullptr; }

}  // namespace framequilt

bool stitchingImageImageblendCpu(cv::Mat mosaic, unsigned char* frame, imgInfo info,
                                 stitchflags flags, SPoint topLeft, SPoint bottomRight,
                                 SPoint /*ignored*/, SPoint& topLeftOut, SPoint& bottomRightOut,
                                 SPoint& positionOut, imgInfo& regionInfo, cv::Mat& mosaicOut,
                                 unsigned char* region) {
  if (frame == nullptr) {
    framequilt::report("stitchingImageImageblend ptr is null");
    return false;
  }
  const unsigned char* const original = framequilt::originalOfBlend;
  const auto fuseInMosaic = [original](unsigned char* ground, std::ptrdiff_t stride,
                                       unsigned char* part, int channels) {
    const framequilt::Feathering job = {ground,      stride,      thedestImageScale, part,
                                        imgScaleRow, imgScaleCol, channels,          original};
    if (thedestImageScale == nullptr || !framequilt::canFeather(job)) return false;
    framequilt::feather(job);
    return true;
  };
  // Its result is not looked at: it fails for null images only.
  const auto fuse = [original](unsigned char* part, int channels) {
    if (original != nullptr) {
      std::memcpy(thedestImageScale, original,
                  framequilt::planeSize(imgScaleRow, imgScaleCol, channels));
    }
    twoImageFusion(part, thedestImageScale, channels, 0, imgScaleRow, imgScaleCol);
    return true;
  };
  framequilt::BlendResult result = {topLeftOut, bottomRightOut, positionOut,
                                    regionInfo, mosaicOut,      region};
  return framequilt::blendFrame(
      {mosaic, imgScaleRow, imgScaleCol, info, flags, topLeft, bottomRight}, fuseInMosaic, fuse,
      result);
}
