// SPDX-License-Identifier: Apache-2.0
/// \file
/// Stitches the frames of a camera that moves over a scene into one mosaic.
///
/// A run is `initJoint`, then `stichingImagedJoint` once per new frame, then `uinitJoint`, all
/// from one thread; the library adds two worker threads of its own while a run is open. All state
/// is process-wide: one run at a time. Parameters stand in tuning.h.
///
/// Fixed one-line reports of the engine go to standard output.
#pragma once

#include <opencv2/core/mat.hpp>

#include "export.h"
#include "records.h"

extern "C" {

/// Opens a run.
///
/// \param rows,cols          Size of every frame of the run, in pixels.
/// \param channels           Bytes per pixel: 3 (blue, green, red) or 1 (gray).
/// \param cornerBudget       Stored in `pvalue`; 1 asks for 181 corners per frame at scale 1.
/// \param maxRow,maxCol      Frames report a full mosaic from maxRow * maxCol pixels on. The
///                           product is taken in 32 bits: keep it below 2^31.
/// \param stitchMode         Not 0: a frame is judged by how much the view changed. 0: by
///                           brightness and sharpness of the overlap; frame buffers are then
///                           overwritten, see `stichingImagedJoint`.
/// \param staticDynamicFlag  0: static scene, wide limits. Not 0: dynamic scene, the limits of
///                           tuning.h.
/// \return False when a worker thread could not be started; `uinitJoint` cleans up.
/// \throws std::bad_alloc when a working buffer would exceed 2^31 - 1 bytes, has a negative size
///         or cannot be had; `uinitJoint` cleans up.
///
/// A run that is still open is stopped first: its two threads end, its buffers are kept where
/// they are large enough and the same backend serves the next one.
FRAMEQUILT_EXPORT bool initJoint(int rows, int cols, int channels, int cornerBudget, int maxRow,
                                 int maxCol, int stitchMode, int staticDynamicFlag);

/// Stitches one frame into the mosaic.
///
/// \param src         Reference frame of the first call (`frameIndex` 0); not read afterwards,
///                    may be null then. rows * cols * channels bytes. Bytes of value 0 become 1,
///                    so that 0 can mean "no data"; with stitch mode 0 it is then overwritten
///                    with the mosaic's part of the overlap.
/// \param dest        New frame, same shape; owned by the caller. With stitch mode 0 it is
///                    overwritten with the frame's part of the overlap, otherwise left alone.
/// \param frameIndex  0 on the first call of a run, which places `src` in the middle of a new
///                    mosaic of 6000 x 6000 pixels; anything else afterwards.
/// \param frameScale  Divisor from frame to working size; give the value of `scale`.
/// \param motorDx,motorDy  Known displacement of the new frame, in working pixels. It limits the
///                    corner search to the strip where the frames overlap. For dx < 0 the
///                    vertical sense is inverted against dx >= 0.
/// \param motorFlag   Whether motorDx and motorDy hold.
/// \param outLeft,outRight  Receive the top-left and the exclusive bottom-right corner of the
///                    mosaic's filled box.
/// \param outMosaic   Receives the mosaic: 8-bit, 3 or 1 channels, 0 where no frame lies. It
///                    shares its pixels with the run: later frames change it. `clone()` it to
///                    keep a state.
/// \param outFlags    Receives the record of the run; fields that this frame did not reach keep
///                    the values of earlier frames.
/// \return -1 when no offset could be estimated or a worker ran out of memory, else 1 when the
///         mosaic has reached the maxRow * maxCol of `initJoint`, else 0. Also 0 or 1 for a frame
///         that was understood but not blended: `outFlags.position` tells, it changes with every
///         blend. The outputs are filled in every case.
/// \throws std::bad_alloc, cv::Exception when memory runs out; the frame is not in the mosaic then,
///         and the run can still be stopped.
FRAMEQUILT_EXPORT int stichingImagedJoint(unsigned char* src, unsigned char* dest, int frameIndex,
                                          int frameScale, int motorDx, int motorDy, bool motorFlag,
                                          SPoint& outLeft, SPoint& outRight, cv::Mat& outMosaic,
                                          stitchflags& outFlags);

/// Closes the run: ends the worker threads and releases every buffer and the mosaic (a matrix
/// that the caller received stays valid). Takes no memory. Harmless without a run.
/// \return Always true.
FRAMEQUILT_EXPORT bool uinitJoint();

}  // extern "C"

/// Receives the engine's debug texts (no line end). Its body does nothing; a program that defines
/// a function of this name and type receives the texts instead.
FRAMEQUILT_EXPORT void CrossPlatformOutputDebugString(char* text);

/// The `stitchMode` of the run, as given to `initJoint`; kept until the next call of it.
extern FRAMEQUILT_EXPORT int GStitchMode;
/// The `staticDynamicFlag` of the run, likewise.
extern FRAMEQUILT_EXPORT int GstaticDynamicFlag;
/// True while the OpenCL backend serves the run.
extern FRAMEQUILT_EXPORT bool openclDeviceFlag;
/// Always false after `uinitJoint`; nothing sets it.
extern FRAMEQUILT_EXPORT bool cudaDeviceFlag;
