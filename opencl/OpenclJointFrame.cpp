// SPDX-License-Identifier: Apache-2.0
#include "opencl/OpenclJointFrame.h"

#include <cmath>
#include <cstddef>
#include <cstring>
#include <mutex>

#include "cpu/mosaic_blend.h"
#include "cpu/placement_rules.h"
#include "framequilt/framequilt.h"
#include "framequilt/tuning.h"
#include "imaging/pixel_math.h"
#include "imaging/region.h"
#include "imaging/run_buffer.h"
#include "interface/debug.h"
#include "interface/mosaic_lock.h"
#include "interface/report.h"
#include "opencl/OpenclJointCallRecord.h"
#include "opencl/OpenclJointFusion.h"
#include "opencl/OpenclJointKernels.h"
#include "opencl/OpenclJointMotion.h"
#include "opencl/OpenclJointOffset.h"
#include "opencl/OpenclJointOverlap.h"

namespace {

using framequilt::debug;
using framequilt::drop;
using framequilt::ensure;
using framequilt::HostBuffer;
using framequilt::Mapping;
using framequilt::planeSize;
using framequilt::report;

/// A response that runs over the end of a narrow plane stays within this margin.
constexpr std::size_t kResponseMargin = 16;

std::size_t workingBytes(int channels) { return planeSize(imgScaleRowCL, imgScaleColCL, channels); }

cl_int launchPreJudgement(const HostBuffer& frame, imgInfo info) {
  const auto& kernel =
      framequilt::isColour(info.channels) ? framequilt::preJudgeColour : framequilt::preJudgeGray;
  return kernel(framequilt::pixelGrid(info.rows, info.cols), frame.bytes(), info.rows, info.cols);
}

/// Pre-judges the new frame where it lies.
bool preJudgeNewFrame(unsigned char* dest, imgInfo info) {
  const std::size_t bytes = planeSize(info.rows, info.cols, info.channels);
  HostBuffer frame(dest, bytes);
  errNum = frame.status();
  if (errNum != CL_SUCCESS) {
    debug("failed clEnqueueReadBuffer111");
    return false;
  }
  errNum = launchPreJudgement(frame, info);
  if (errNum != CL_SUCCESS) {
    debug(framequilt::isColour(info.channels) ? "failed pretJudgeCh3Kernel"
                                              : "failed pretJudgeCh1Kernel");
    return false;
  }
  report("pretJudgeCh1Kernel::::::::::::::", errNum);

  Mapping mapped(frame.bytes().memory, bytes, CL_MAP_READ, Mapping::Wait::kForAll);
  thedestImageHostMap = mapped.bytes();
  errNum = mapped.status();
  if (errNum == CL_SUCCESS) frame.settle();
  errNum |= mapped.unmap();
  errNum |= frame.release();
  if (errNum == CL_SUCCESS) return true;
  debug("failed pretJudgeCh1Kernel");
  return false;
}

/// The same for the first frame of a run, with messages of its own.
bool preJudgeReference(unsigned char* src, imgInfo info) {
  const std::size_t bytes = planeSize(info.rows, info.cols, info.channels);
  HostBuffer frame(src, bytes);
  errNum = launchPreJudgement(frame, info);
  if (errNum != CL_SUCCESS) {
    debug("failed pretJudgeCh1Kernel");
    return false;
  }
  Mapping mapped(frame.bytes().memory, bytes, CL_MAP_READ, Mapping::Wait::kForAll);
  theSorImageHostMap = mapped.bytes();
  errNum = mapped.status();
  if (errNum != CL_SUCCESS) {
    debug("failed pretJudgeCh1Kernell");
    return false;
  }
  frame.settle();
  errNum = mapped.unmap();
  errNum |= frame.release();
  if (errNum == CL_SUCCESS) return true;
  framequilt::reportUnended("failed pretJudgeCh1Kernel");
  return false;
}

void setStitchFlag(bool qualifies, stitchflags& flags) {
  flags.stitch_flags = qualifies ? 1 : 0;
  debug(qualifies ? "flags.stitch_flags = 1;" : "flags.stitch_flags = 0;");
}

/// Planes of the overlap measures, for the length of a call.
class OverlapPlanes {
 public:
  explicit OverlapPlanes(int channels) {
    ensure(resiz_OneCL, workingBytes(1) + kResponseMargin);
    ensure(resiz_TwoCL, workingBytes(1) + kResponseMargin);
    ensure(resiz_OneBoundCL, boundBytes(channels));
    ensure(resiz_TwoBoundCL, boundBytes(channels));
    ensure(resiz_OneBoundFilterCL, boundBytes(1));
    ensure(resiz_TwoBoundFilterCL, boundBytes(1));
  }
  ~OverlapPlanes() {
    drop(resiz_OneCL);
    drop(resiz_TwoCL);
    drop(resiz_OneBoundCL);
    drop(resiz_TwoBoundCL);
    drop(resiz_OneBoundFilterCL);
    drop(resiz_TwoBoundFilterCL);
  }
  OverlapPlanes(const OverlapPlanes&) = delete;
  OverlapPlanes& operator=(const OverlapPlanes&) = delete;

 private:
  static std::size_t boundBytes(int channels) {
    return planeSize(imgScaleRowCL + 8, imgScaleColCL + 8, channels);
  }
};

/// Has the view moved little enough?
void judgeByMotion(int channels, stitchflags& flags) {
  motionValueThCL = GstaticDynamicFlag != 0 ? motionValueThCL0 : framequilt::kStaticMotionLimit;
  debug("1== GStitchMode");
  const int motion = imageMotionModelCL(thedestImage_preCL, thedestImageHostMap, imgScaleRowCL,
                                        imgScaleColCL, channels, channels);
  framequilt::setMotionOfCallCL(motion);
  // A limit above the highest difference takes every frame, but none that was not measured.
  const bool measured = motion != kUnmeasuredMotionCL || errNum == CL_SUCCESS;
  setStitchFlag(measured && motion < motionValueThCL, flags);
  std::memcpy(thedestImage_preCL, thedestImageHostMap, workingBytes(channels));
}

/// Are both sides of the overlap equally bright and sharp? One pair of limits for every scene.
void judgeByOverlap(int channels, const cv::Mat& mosaic, stitchflags& flags) {
  brightThCL = framequilt::kStaticOverlapLimit;
  defintThCL = framequilt::kStaticOverlapLimit;
  debug("0 == GStitchMode");
  const OverlapPlanes planes(channels);
  const bool holds =
      framequilt::holdsFrame(mosaic, flags.position, imgScaleRowCL, imgScaleColCL, channels);
  imgInfo mosaicPart{};
  imgInfo framePart{};
  takeOutOverLapImageFromMoasicImage(
      holds ? mosaic.data : nullptr, thedestImageHostMap, {0, channels, mosaic.rows, mosaic.cols},
      {0, channels, imgScaleRowCL, imgScaleColCL}, flags.position, flags.offsetX, flags.offsetY,
      mosaicPart, framePart, resiz_OneBoundCL, resiz_TwoBoundCL);
  calcOverLapImageBrightCL(resiz_OneBoundCL, resiz_TwoBoundCL, mosaicPart.rows, mosaicPart.cols,
                           framePart.rows, framePart.cols, channels, flags.brightOne,
                           flags.brightTwo);
  calcOverLapImageDefinitionCL(resiz_OneBoundCL, resiz_TwoBoundCL, mosaicPart.rows, mosaicPart.cols,
                               framePart.rows, framePart.cols, channels, flags.definitionOne,
                               flags.definitionTwo);
  setStitchFlag(flags.offsetX < imgScaleColCL && flags.offsetY < imgScaleRowCL &&
                    std::fabs(flags.brightOne - flags.brightTwo) < brightThCL &&
                    std::fabs(flags.definitionOne - flags.definitionTwo) < defintThCL,
                flags);
}

/// Blends a frame that qualified; where it cannot, the next frame is matched against the reference
/// of this call again. False when the device refused.
bool blendOrKeepReference(unsigned char* dest) {
  const framequilt::Shift shift = framequilt::largerShift(flagsCL, imgScaleRowCL, imgScaleColCL);
  const int channels = thedestImageInfoCL.channels;
  if (framequilt::canBlend(shift, flagsCL.matchNum, ImageOverlap_minCL, ImageOverlap_maxCL) &&
      framequilt::holdsFrame(mosaicImgCL, flagsCL.position, imgScaleRowCL, imgScaleColCL,
                             channels)) {
    const std::lock_guard lock(framequilt::mosaicMutex());
    bool blended = false;
    const framequilt::AtScopeEnd putBack([&] {
      if (!blended) framequilt::restoreReferenceCL();
    });
    blended = stitchingImageImageblendCL(mosaicImgCL, dest, thedestImageInfoCL, flagsCL,
                                         outbordLeftCL, outbordRightCL, {}, outbordLeftCL,
                                         outbordRightCL, flagsCL.position, theSorImageInfoCL,
                                         mosaicImgCL, theSorImageTempCL);
    if (!blended) return false;
    report("kkkkkkkkkkkkkkkkkkkkkkk", shift.distance);
  } else if (theSorImageTempCL != theSorImageHostMap) {
    std::memcpy(theSorImageTempCL, theSorImageHostMap, workingBytes(channels));
  }
  return true;
}

/// A run is open.
bool runIsOpen() {
  return context != nullptr && commandQueue != nullptr && theSorImageTempCL != nullptr &&
         thedestImage_preCL != nullptr && imgScaleRowCL >= 0 && imgScaleColCL >= 0;
}

}  // namespace

int stichingImagedJointCL(unsigned char* src, unsigned char* dest, int frameIndex, int unused,
                          int motorDx, int motorDy, bool motorFlag, SPoint& outLeft,
                          SPoint& outRight, cv::Mat& outMosaic, stitchflags& outFlags) {
  if (dest == nullptr) report("thedestImage is NULL");
  clMotordx = motorDx;
  clMotordy = motorDy;
  clMotorflage = motorFlag;

  const bool first = frameIndex == 0;
  debug(first ? "stitchingImageOffsetCL 0" : "stitchingImageOffsetCL 1");
  bool done = stitchingImageOffsetCL(
      first ? src : theSorImageTempCL, dest, frameIndex, unused, motorDx, motorDy, motorFlag,
      theSorImageInfoCL, thedestImageInfoCL, outbordLeftCL, outbordRightCL, mosaicImgCL, flagsCL);
  if (done && flagsCL.stitch_flags == 1) done = blendOrKeepReference(dest);

  outMosaic = mosaicImgCL;
  outLeft = outbordLeftCL;
  outRight = outbordRightCL;
  outFlags = flagsCL;
  if (!done) return -1;
  return framequilt::isFull(mosaicImgCL, MAXROWCL, MAXCOLCL) ? 1 : 0;
}

bool stitchingImageOffsetCL(unsigned char* src, unsigned char* dest, int frameIndex, int /*unused*/,
                            int motorDx, int motorDy, bool motorFlag, imgInfo srcInfo,
                            imgInfo destInfo, SPoint& outLeft, SPoint& outRight, cv::Mat& mosaic,
                            stitchflags& flags) {
  if (src == nullptr || dest == nullptr || !runIsOpen()) {
    report("stitchingImageOffset ptr is null");
    return false;
  }
  if (!preJudgeNewFrame(dest, destInfo)) return false;
  const int channels = srcInfo.channels;
  if (frameIndex != 0) {
    theSorImageHostMap = src;
  } else {
    if (!preJudgeReference(src, destInfo)) return false;
    if (!framequilt::startMosaic(theSorImageHostMap, imgScaleRowCL, imgScaleColCL, channels,
                                 outLeft, outRight, mosaic, flags)) {
      debug(framequilt::kNotPlaced);
      return false;
    }
    std::memcpy(thedestImage_preCL, theSorImageHostMap, workingBytes(channels));
  }

  clMotordx = motorDx;
  clMotordy = motorDy;
  clMotorflage = motorFlag;
  if (!imageMosaicFunCL(theSorImageHostMap, thedestImageHostMap,
                        {0, channels, imgScaleRowCL, imgScaleColCL}, flags.offsetX, flags.offsetY,
                        flags.matchNum)) {
    return false;
  }
  if (GStitchMode != 0) {
    judgeByMotion(channels, flags);
  } else {
    judgeByOverlap(channels, mosaic, flags);
  }
  return true;
}

bool stitchingImageImageblendCL(cv::Mat mosaic, unsigned char* dest, imgInfo destInfo,
                                stitchflags flags, SPoint left, SPoint right, SPoint /*unused*/,
                                SPoint& outLeft, SPoint& outRight, SPoint& outPosition,
                                imgInfo& workInfo, cv::Mat& outMosaic, unsigned char* work) {
  if (dest == nullptr) {
    report("stitchingImageImageblend ptr is null");
    return false;
  }
  const auto fuse = [dest](unsigned char* part, int channels) {
    return twoImageFusionCL(part, dest, channels, 0, imgScaleRowCL, imgScaleColCL);
  };
  framequilt::BlendResult result = {outLeft, outRight, outPosition, workInfo, outMosaic, work};
  return framequilt::blendFrame(
      {mosaic, imgScaleRowCL, imgScaleColCL, destInfo, flags, left, right}, nullptr, fuse, result);
}
