// SPDX-License-Identifier: Apache-2.0
#include "cpu/frame_driver.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <mutex>
#include <vector>

#include "cpu/call_record.h"
#include "cpu/mosaic_blend.h"
#include "cpu/offset_estimation.h"
#include "cpu/placement_rules.h"
#include "cpu/run_state.h"
#include "cpu/working_buffers.h"
#include "framequilt/framequilt.h"
#include "framequilt/tuning.h"
#include "imaging/disjoint.h"
#include "imaging/imaging_state.h"
#include "imaging/motion.h"
#include "imaging/overlap.h"
#include "imaging/pixel_math.h"
#include "imaging/region.h"
#include "imaging/resize.h"
#include "imaging/run_buffer.h"
#include "interface/mosaic_lock.h"
#include "interface/report.h"

namespace {

using framequilt::AtScopeEnd;
using framequilt::planeSize;

void clear(unsigned char* plane, std::size_t bytes) { std::memset(plane, 0, bytes); }

std::size_t workingBytes(int channels) { return planeSize(imgScaleRow, imgScaleCol, channels); }

void bringToWorkingSize(unsigned char* frame, imgInfo info, int frameScale, unsigned char* working,
                        std::size_t capacity) {
  if (frameScale == 1) {
    std::memcpy(working, frame, workingBytes(info.channels));
    return;
  }
  clear(working, workingBytes(info.channels));
  framequilt::resizeWithinFrame(frame, info.rows, info.cols, frameScale, info.channels, working,
                                capacity);
}

bool canHoldFrame(const cv::Mat& mosaic, SPoint position, int channels) {
  return framequilt::holdsFrame(mosaic, position, imgScaleRow, imgScaleCol, channels);
}

int measureMotion(imgInfo info) {
  const AtScopeEnd release([] { framequilt::releaseMotionPlanes(); });
  framequilt::allocateMotionPlanes();
  const int motion = imageMotionModel(thedestImage_pre, thedestImageScale, info.rows, info.cols,
                                      info.channels, info.channels);
  framequilt::setMotionOfCall(motion);
  return motion;
}

/// Has the view moved little enough?
void judgeByMotion(imgInfo destInfo, stitchflags& flags) {
  motionValueThCpu = GstaticDynamicFlag != 0 ? motionValueThCpu0 : framequilt::kStaticMotionLimit;
  // A static scene refuses the largest difference alone, which one pixel shows not to be there.
  const bool staysBelow =
      motionValueThCpu >= framequilt::kLargestMotion &&
      framequilt::movesLessThanLargest(thedestImage_pre, thedestImageScale, destInfo.rows,
                                       destInfo.cols, destInfo.channels);
  flags.stitch_flags = staysBelow || measureMotion(destInfo) < motionValueThCpu ? 1 : 0;
}

/// The next frame's motion is measured against this one.
void rememberFrame(int channels) {
  std::memcpy(thedestImage_pre, thedestImageScale, workingBytes(channels));
}

/// The parts of the overlap that the measures read; the caller's own frames, unless the measures
/// touch more bytes a pixel than those have.
class OverlapParts {
 public:
  OverlapParts(unsigned char* src, unsigned char* dest, int channels) : src_(src), dest_(dest) {
    if (framequilt::workingPixelBytes(channels) == channels) return;
    copies_[0] = widened(src, channels);
    copies_[1] = widened(dest, channels);
    src_ = copies_[0].data();
    dest_ = copies_[1].data();
  }

  unsigned char* ofMosaic() const { return src_; }
  unsigned char* ofFrame() const { return dest_; }

 private:
  static std::vector<unsigned char> widened(const unsigned char* frame, int channels) {
    std::vector<unsigned char> copy(workingBytes(framequilt::workingPixelBytes(channels)));
    std::memcpy(copy.data(), frame, workingBytes(channels));
    return copy;
  }

  unsigned char* src_;
  unsigned char* dest_;
  std::vector<unsigned char> copies_[2];
};

/// Are both sides of the overlap equally bright and sharp? The flag is only ever raised here.
void judgeByOverlap(unsigned char* src, unsigned char* dest, int channels, const cv::Mat& mosaic,
                    stitchflags& flags) {
  const bool dynamic = GstaticDynamicFlag != 0;
  brightThCpu = dynamic ? brightThCpu0 : framequilt::kStaticOverlapLimit;
  defintThCpu = dynamic ? defintThCpu0 : framequilt::kStaticOverlapLimit;

  const OverlapParts parts(src, dest, channels);
  unsigned char* const ground =
      canHoldFrame(mosaic, flags.position, channels) ? mosaic.data : nullptr;
  imgInfo mosaicPart = {};
  imgInfo framePart = {};
  takeOutOverLapImageFromMoasicImage(
      ground, thedestImageScale, {0, channels, mosaic.rows, mosaic.cols},
      {0, channels, imgScaleRow, imgScaleCol}, flags.position, flags.offsetX, flags.offsetY,
      mosaicPart, framePart, parts.ofMosaic(), parts.ofFrame());

  const AtScopeEnd release([] { framequilt::releaseOverlapPlanes(); });
  framequilt::allocateOverlapPlanes();
  const std::size_t plane = framequilt::framePlane(2);
  const std::size_t bound = framequilt::framePlane(8);
  clear(resiz_One, plane);
  clear(resiz_Two, plane);
  clear(resiz_OneBound, bound);
  clear(resiz_TwoBound, bound);
  clear(resiz_OneBoundFilter, bound);
  clear(resiz_TwoBoundFilter, bound);
  calcOverLapImageBright(parts.ofMosaic(), parts.ofFrame(), mosaicPart.rows, mosaicPart.cols,
                         framePart.rows, framePart.cols, framePart.channels, flags.brightOne,
                         flags.brightTwo);

  clear(resiz_One, plane);
  clear(resiz_Two, plane);
  clear(resiz_OneBoundFilter, bound);
  clear(resiz_TwoBoundFilter, bound);
  calcOverLapImageDefinition(parts.ofMosaic(), parts.ofFrame(), mosaicPart.rows, mosaicPart.cols,
                             framePart.rows, framePart.cols, framePart.channels,
                             flags.definitionOne, flags.definitionTwo);

  if (flags.offsetX < imgScaleCol && flags.offsetY < imgScaleRow &&
      std::fabs(flags.brightOne - flags.brightTwo) < brightThCpu &&
      std::fabs(flags.definitionOne - flags.definitionTwo) < defintThCpu) {
    flags.stitch_flags = 1;
  }
}

void blend(unsigned char* dest) {
  const std::lock_guard lock(framequilt::mosaicMutex());
  stitchingImageImageblendCpu(mosaicImgCpu, dest, thedestImageInfoCpu, flagsCpu, outbordLeftCpu,
                              outbordRightCpu, {}, outbordLeftCpu, outbordRightCpu,
                              flagsCpu.position, theSorImageInfoCpu, mosaicImgCpu, theSorImageTemp);
}

/// Blends the frame, which lies in `thedestImageScale`, where it is wanted blended, and by motion
/// is to be remembered as it is in `thedestImage_pre`. Buffers that change places spare a copy
/// where they hold the same.
void blendAndRemember(unsigned char* dest) {
  const imgInfo& info = thedestImageInfoCpu;
  const bool changePlaces = GStitchMode != 0 && imgScaleRow == info.rows &&
                            imgScaleCol == info.cols &&
                            theSorImageInfoCpu.channels == info.channels;
  if (!changePlaces) {
    if (GStitchMode != 0) rememberFrame(theSorImageInfoCpu.channels);
    blend(dest);
    return;
  }
  framequilt::exchange(thedestImage_pre, thedestImageScale);
  bool blended = false;
  const AtScopeEnd putBack([&] {
    if (!blended) {
      std::memcpy(thedestImageScale, thedestImage_pre, workingBytes(info.channels));
    }
  });
  const framequilt::BlendFrom original(thedestImage_pre);
  blend(dest);
  blended = true;
}

bool canBlend() {
  const framequilt::Shift shift = framequilt::largerShift(flagsCpu, imgScaleRow, imgScaleCol);
  return framequilt::canBlend(shift, flagsCpu.matchNum, ImageOverlap_minCpu, ImageOverlap_maxCpu) &&
         canHoldFrame(mosaicImgCpu, flagsCpu.position, thedestImageInfoCpu.channels);
}

/// A run is open and its frames have a size that its buffers were made for.
bool runIsOpen() {
  return theSorImageScale != nullptr && thedestImageScale != nullptr &&
         theSorImageTemp != nullptr && thedestImage_pre != nullptr && imgScaleRow >= 0 &&
         imgScaleCol >= 0;
}

/// The reference of a later call lies in `theSorImageTemp`, is wanted in `theSorImageScale`, and
/// has to be in both afterwards unless a blend has left the next one in the first. Buffers that
/// change places spare a copy where it does. Not with the overlap criterion, which writes to the
/// image it is given.
class LentReference {
 public:
  explicit LentReference(bool isLater) : lent_(isLater && GStitchMode != 0 && runIsOpen()) {
    if (lent_) framequilt::exchange(theSorImageTemp, theSorImageScale);
  }
  ~LentReference() {
    if (lent_) restore();
  }
  LentReference(const LentReference&) = delete;
  LentReference& operator=(const LentReference&) = delete;

  unsigned char* image() const { return lent_ ? theSorImageScale : theSorImageTemp; }

  /// The next frame is matched against the reference of this call again.
  void restore() {
    lent_ = false;
    std::memcpy(theSorImageTemp, theSorImageScale, workingBytes(thedestImageInfoCpu.channels));
  }

  /// The next reference is in its place.
  void forget() { lent_ = false; }

 private:
  bool lent_;
};

/// All but the blend of a frame that qualifies. By motion, the frame is still to be remembered.
bool estimateOffset(unsigned char* src, unsigned char* dest, int frameIndex, int frameScale,
                    imgInfo srcInfo, imgInfo destInfo, SPoint& outLeft, SPoint& outRight,
                    cv::Mat& mosaic, stitchflags& flags) {
  if (src == nullptr || dest == nullptr || !runIsOpen()) {
    framequilt::report("stitchingImageOffset ptr is null");
    return false;
  }
  const int channels = srcInfo.channels;
  const imgInfo working = {0, channels, imgScaleRow, imgScaleCol};
  const bool copiesBeside =
      frameIndex != 0 && frameScale == 1 && destInfo.channels == channels &&
      framequilt::paysToCopyBeside(working) &&
      framequilt::disjoint(src, workingBytes(channels), thedestImageScale,
                           workingBytes(channels)) &&
      framequilt::disjoint(dest, workingBytes(channels), thedestImageScale, workingBytes(channels));
  if (!copiesBeside) {
    bringToWorkingSize(dest, destInfo, frameScale, thedestImageScale,
                       framequilt::newFrameCapacity(destInfo.channels));
  }
  if (frameIndex != 0) {
    if (src != theSorImageScale) std::memcpy(theSorImageScale, src, workingBytes(channels));
  } else {
    pretJudgeImageCh(src, srcInfo.rows, srcInfo.cols, channels);
    bringToWorkingSize(src, srcInfo, frameScale, theSorImageScale,
                       framequilt::referenceCapacity(channels));
    std::memcpy(thedestImage_pre, theSorImageScale, workingBytes(channels));
    if (!framequilt::startMosaic(theSorImageScale, imgScaleRow, imgScaleCol, channels, outLeft,
                                 outRight, mosaic, flags)) {
      framequilt::report(framequilt::kNotPlaced);
      return false;
    }
  }

  framequilt::allocatePairPlanes();
  const bool found = copiesBeside ? framequilt::offsetWhileCopying(
                                        theSorImageScale, dest, thedestImageScale, working,
                                        flags.offsetX, flags.offsetY, flags.matchNum)
                                  : imageMosaicFun(theSorImageScale, thedestImageScale, working,
                                                   flags.offsetX, flags.offsetY, flags.matchNum);
  if (!found) return false;
  if (GStitchMode != 0) {
    judgeByMotion(destInfo, flags);
  } else {
    judgeByOverlap(src, dest, channels, mosaic, flags);
  }
  framequilt::releasePairPlanes();
  return true;
}

}  // namespace

int stichingImagedJointCpu(unsigned char* src, unsigned char* dest, int frameIndex, int frameScale,
                           int motorDx, int motorDy, bool motorFlag, SPoint& outLeft,
                           SPoint& outRight, cv::Mat& outMosaic, stitchflags& outFlags) {
  if (dest == nullptr) framequilt::report("thedestImage is NULL");
  cpuMotordx = motorDx;
  cpuMotordy = motorDy;
  cpuMotorflage = motorFlag;

  bool estimated = false;
  {
    LentReference reference(frameIndex != 0);
    unsigned char* const first = frameIndex != 0 ? reference.image() : src;
    estimated =
        estimateOffset(first, dest, frameIndex, frameScale, theSorImageInfoCpu, thedestImageInfoCpu,
                       outbordLeftCpu, outbordRightCpu, mosaicImgCpu, flagsCpu);
    const bool qualifies = estimated && flagsCpu.stitch_flags == 1;
    if (qualifies && canBlend()) {
      const unsigned distance =
          framequilt::largerShift(flagsCpu, imgScaleRow, imgScaleCol).distance;
      blendAndRemember(dest);
      reference.forget();
      framequilt::report("kkkkkkkkkkkkkkkkkkkkkkk", distance);
    } else {
      if (estimated && GStitchMode != 0) rememberFrame(theSorImageInfoCpu.channels);
      if (qualifies) reference.restore();
    }
  }

  outMosaic = mosaicImgCpu;
  outLeft = outbordLeftCpu;
  outRight = outbordRightCpu;
  outFlags = flagsCpu;
  if (!estimated) return -1;
  return framequilt::isFull(mosaicImgCpu, MAXROW, MAXCOL) ? 1 : 0;
}

bool stitchingImageOffsetCpu(unsigned char* src, unsigned char* dest, int frameIndex,
                             int frameScale, int /*motorDx*/, int /*motorDy*/, bool /*motorFlag*/,
                             imgInfo srcInfo, imgInfo destInfo, SPoint& outLeft, SPoint& outRight,
                             cv::Mat& mosaic, stitchflags& flags) {
  if (!estimateOffset(src, dest, frameIndex, frameScale, srcInfo, destInfo, outLeft, outRight,
                      mosaic, flags)) {
    return false;
  }
  if (GStitchMode != 0) rememberFrame(srcInfo.channels);
  return true;
}
