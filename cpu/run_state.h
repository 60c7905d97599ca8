// SPDX-License-Identifier: Apache-2.0
/// \file
/// State of the host backend's run. docs/state.md lists every global with its extent, when it is
/// allocated and who writes it.
#pragma once

#include <pthread.h>

#include <atomic>
#include <opencv2/core/mat.hpp>

#include "framequilt/export.h"
#include "framequilt/records.h"

/// Worker threads; 0 while there is none to join.
extern FRAMEQUILT_EXPORT pthread_t one_pid, two_pid;
/// Run flags: a worker ends once its flag is clear.
extern FRAMEQUILT_EXPORT std::atomic<bool> startOneThFlag, startTwoThFlag;
/// Work requests: the caller raises them, each worker clears its own when its job is done.
extern FRAMEQUILT_EXPORT std::atomic<bool> threadOneCalcFlag, threadTwoCalcFlag;
static_assert(sizeof(std::atomic<bool>) == 1 && std::atomic<bool>::is_always_lock_free);

/// Previous and new frame at working size.
extern FRAMEQUILT_EXPORT unsigned char *theSorImageScale, *thedestImageScale;
/// Reference for the next frame; the region buffer of a blend.
extern FRAMEQUILT_EXPORT unsigned char *theSorImageTemp;
/// Last frame seen, for the motion measure.
extern FRAMEQUILT_EXPORT unsigned char *thedestImage_pre;

/// The mosaic, the corners of its filled box, the record of the run.
extern FRAMEQUILT_EXPORT cv::Mat mosaicImgCpu;
extern FRAMEQUILT_EXPORT SPoint outbordLeftCpu, outbordRightCpu;
extern FRAMEQUILT_EXPORT stitchflags flagsCpu;
/// Full-size shape of the reference and the new frame.
extern FRAMEQUILT_EXPORT imgInfo theSorImageInfoCpu, thedestImageInfoCpu;

/// Displacement hint of the current call, and whether it holds.
extern FRAMEQUILT_EXPORT int cpuMotordx, cpuMotordy;
extern FRAMEQUILT_EXPORT bool cpuMotorflage;

/// The pair being worked on, published before the requests are raised.
extern FRAMEQUILT_EXPORT unsigned char *SorImageOneIn, *DestImageTwoIn;
extern FRAMEQUILT_EXPORT imgInfo InfoTh;
/// Strip of each gray image that the hint selects.
extern FRAMEQUILT_EXPORT unsigned char *SorTempGrayImage, *DestTempGrayImage;

/// Never allocated by the library: a host may have filled them; the stop releases them.
extern FRAMEQUILT_EXPORT unsigned char *SorImageOnergb_gray, *DestImageTworgb_gray;
extern FRAMEQUILT_EXPORT unsigned char *gray_pointdownscal, *gray_pointdownscal1;
extern FRAMEQUILT_EXPORT unsigned char *OverlapImageOne, *OverlapImageTwo;
extern FRAMEQUILT_EXPORT float *Coonervalue, *Coonervalue1;
extern FRAMEQUILT_EXPORT unsigned char *OverLapImageOneGray, *OverLapImageTwoGray;
extern FRAMEQUILT_EXPORT unsigned char *OverLapImageOneGrayTemp, *OverLapImageTwoGrayTemp;
extern FRAMEQUILT_EXPORT float *dst_row_bound_out1, *dst_out1;
extern FRAMEQUILT_EXPORT float *dst_row_bound_out2, *dst_out2;
