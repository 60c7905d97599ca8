// SPDX-License-Identifier: Apache-2.0
/// \file
/// State of the OpenCL backend: the device's objects and the run. docs/state.md lists every global
/// with its extent, when it is made and who writes it.
#pragma once

#include <CL/cl.h>
#include <pthread.h>

#include <atomic>
#include <opencv2/core/mat.hpp>
#include <vector>

#include "framequilt/export.h"
#include "framequilt/records.h"

// --- The device. Null until created; a host may fill them before a start -------------------

extern FRAMEQUILT_EXPORT cl_device_id device;
extern FRAMEQUILT_EXPORT cl_context context;
/// In order, without properties.
extern FRAMEQUILT_EXPORT cl_command_queue commandQueue;
extern FRAMEQUILT_EXPORT cl_program program;
/// Last status on the caller's thread; the corner threads keep theirs to themselves.
extern FRAMEQUILT_EXPORT cl_int errNum;

// --- The run -------------------------------------------------------------------------------

/// Working size: frame size divided by `scaleCL`, truncated.
extern FRAMEQUILT_EXPORT int imgScaleRowCL, imgScaleColCL;
/// Corners wanted per image, and the cap on candidates that are spread out.
extern FRAMEQUILT_EXPORT int numpointCL, num5000CL;
/// Factor and size of the image that corners are searched in.
extern FRAMEQUILT_EXPORT int pointdownscalCL, gray_pointdownscal_rowCL, gray_pointdownscal_colCL;

/// Full-size shape of the reference and the new frame.
extern FRAMEQUILT_EXPORT imgInfo theSorImageInfoCL, thedestImageInfoCL;
/// Reference for the next frame; the region buffer of a blend.
extern FRAMEQUILT_EXPORT unsigned char *theSorImageTempCL;
/// Last frame seen, for the motion measure.
extern FRAMEQUILT_EXPORT unsigned char *thedestImage_preCL;
/// Host addresses of the reference and the new frame, once the device has pre-judged them. Not
/// owned: the caller's frames or `theSorImageTempCL`.
extern FRAMEQUILT_EXPORT unsigned char *theSorImageHostMap, *thedestImageHostMap;

/// The mosaic, the corners of its filled box, the record of the run.
extern FRAMEQUILT_EXPORT cv::Mat mosaicImgCL;
extern FRAMEQUILT_EXPORT SPoint outbordLeftCL, outbordRightCL;
extern FRAMEQUILT_EXPORT stitchflags flagsCL;

/// Displacement hint of the current call, and whether it holds.
extern FRAMEQUILT_EXPORT int clMotordx, clMotordy;
extern FRAMEQUILT_EXPORT bool clMotorflage;

// --- The corner threads --------------------------------------------------------------------

/// Run flags: a thread ends once its flag is clear.
extern FRAMEQUILT_EXPORT std::atomic<bool> startOneThFlagCL, startTwoThFlagCL;
/// Work requests: the caller raises them, each thread clears its own when its job is done. One
/// that fails leaves it raised and ends.
extern FRAMEQUILT_EXPORT std::atomic<bool> threadOneCalcFlagCL, threadTwoCalcFlagCL;
/// The threads, and whether there is one to join.
extern FRAMEQUILT_EXPORT pthread_t one_pidCL, two_pidCL;
extern FRAMEQUILT_EXPORT bool one_pidCLFlag, two_pidCLFlag;

/// The pair being worked on, published before the requests are raised.
extern FRAMEQUILT_EXPORT unsigned char *clSorImageOneIn, *clDestImageTwoIn;
extern FRAMEQUILT_EXPORT imgInfo InfoThCL;
/// Corners of the pair, in working pixels.
extern FRAMEQUILT_EXPORT std::vector<SPoint> HarrissCornerSPointOneArrayCL;
extern FRAMEQUILT_EXPORT std::vector<SPoint> HarrissCornerSPointTwoArrayCL;
/// Corner responses of the search size.
extern FRAMEQUILT_EXPORT float *CoonervalueOneCL, *CoonervalueTwoCL;
/// Descriptors of the pair and one descriptor of scratch per thread.
extern FRAMEQUILT_EXPORT unsigned short *FeatureDescriberOneCL, *FeatureDescriberTwoCL;
extern FRAMEQUILT_EXPORT unsigned short *DescribleSymbolOneCL, *DescribleSymbolTwoCL;
/// Distances of one descriptor to all of the first image.
extern FRAMEQUILT_EXPORT float *dist_valueCL;

// --- The overlap measures ------------------------------------------------------------------

/// Planes of the sharpness measure.
extern FRAMEQUILT_EXPORT unsigned char *resiz_OneCL, *resiz_TwoCL;
/// The two sides of the overlap, cut out of the mosaic and the new frame.
extern FRAMEQUILT_EXPORT unsigned char *resiz_OneBoundCL, *resiz_TwoBoundCL;
/// Filtered planes of the sharpness measure.
extern FRAMEQUILT_EXPORT unsigned char *resiz_OneBoundFilterCL, *resiz_TwoBoundFilterCL;
/// Host addresses of `OverLapImageOneGrayCl` and `OverLapImageTwoGrayCl` while these are mapped:
/// from the brightness measure to the end of the sharpness measure.
extern FRAMEQUILT_EXPORT unsigned char *OverLapImageOneGrayCL, *OverLapImageTwoGrayCL;

/// Never allocated by the library: a host may have filled them; the stop releases them.
extern FRAMEQUILT_EXPORT unsigned char *OverlapImageOneCL, *OverlapImageTwoCL;

// --- Kernels, null until created (OpenclJointObjects.cpp has their names) -------------------

extern FRAMEQUILT_EXPORT cl_kernel opencvcopyFilter2DBorderRowUcharModeKernel;
extern FRAMEQUILT_EXPORT cl_kernel opencvcopyFilter2DBorderColUcharModeKernel;
extern FRAMEQUILT_EXPORT cl_kernel opencvFilter2DRowCalcUcharWin5ModeKernel;
extern FRAMEQUILT_EXPORT cl_kernel opencvFilter2DColCalcUcharWin5ModeKernel;
extern FRAMEQUILT_EXPORT cl_kernel pretJudgeCh3Kernel, pretJudgeCh1Kernel;
extern FRAMEQUILT_EXPORT cl_kernel opencvInterLineARResizeCh3Kernel;
extern FRAMEQUILT_EXPORT cl_kernel opencvInterLineARResizeCh1Kernel;
extern FRAMEQUILT_EXPORT cl_kernel opencvInterLineARResizeCh1Kernel2;
extern FRAMEQUILT_EXPORT cl_kernel rgb2GaryUcharKernel, rgb2GaryUcharKernel2;
extern FRAMEQUILT_EXPORT cl_kernel rgb2GaryTwoUcharKernel;
extern FRAMEQUILT_EXPORT cl_kernel rgb2GaryFloatTwoCh3Kernel, rgb2GaryFloatTwoCh1Kernel;
extern FRAMEQUILT_EXPORT cl_kernel findGradCrossTermsKernel, findGradCrossTermsKernel2;
extern FRAMEQUILT_EXPORT cl_kernel opencvcopyFilter2DBorderRowUcharKernel;
extern FRAMEQUILT_EXPORT cl_kernel opencvcopyFilter2DBorderColUcharKernel;
extern FRAMEQUILT_EXPORT cl_kernel absCalcUcharKernel;
extern FRAMEQUILT_EXPORT cl_kernel opencvcopyFilter2DBorderRowFloatKernel;
extern FRAMEQUILT_EXPORT cl_kernel opencvcopyFilter2DBorderRowFloatKernel2;
extern FRAMEQUILT_EXPORT cl_kernel opencvcopyFilter2DBorderColFloatKernel;
extern FRAMEQUILT_EXPORT cl_kernel opencvcopyFilter2DBorderColFloatKernel2;
extern FRAMEQUILT_EXPORT cl_kernel opencvFilter2DRowCalcFloatWin5Kernel;
extern FRAMEQUILT_EXPORT cl_kernel opencvFilter2DRowCalcFloatWin5Kernel2;
extern FRAMEQUILT_EXPORT cl_kernel opencvFilter2DColCalcFloatWin5Kernel;
extern FRAMEQUILT_EXPORT cl_kernel opencvFilter2DColCalcFloatWin5Kernel2;
extern FRAMEQUILT_EXPORT cl_kernel opencvcopyFilter2DTakeOutBoundFloatKernel;
extern FRAMEQUILT_EXPORT cl_kernel opencvcopyFilter2DTakeOutBoundFloatKernel2;
extern FRAMEQUILT_EXPORT cl_kernel opencvfilter2DCalcCharWin3UcharKernel;
extern FRAMEQUILT_EXPORT cl_kernel opencvcopyFilter2DTakeOutBoundUcharKernel;
extern FRAMEQUILT_EXPORT cl_kernel getFusionImageCh3Kernel, getFusionImageCh1Kernel;
extern FRAMEQUILT_EXPORT cl_kernel getRowRangeKernel, getRowRange2Kernel;
extern FRAMEQUILT_EXPORT cl_kernel getWeightImageClKernel;
/// Never created.
extern FRAMEQUILT_EXPORT cl_kernel rgb2GaryUcharKernelTwo, rgb2GaryFloatKernel;

// --- Buffers, null until created (OpenclJointObjects.cpp has their sizes) -------------------

/// Gray planes of the motion measure, and its padded planes.
extern FRAMEQUILT_EXPORT cl_mem PreFrameImageGrayCL, CurFrameImageGrayCL;
extern FRAMEQUILT_EXPORT cl_mem PreFrameImageGrayBoundTempCL, CurFrameImageGrayBoundTempCL;
extern FRAMEQUILT_EXPORT cl_mem PreFrameImageGrayBoundCL, CurFrameImageGrayBoundCL;
/// Each corner thread's gray image, strip of it, reduced image, gradient products, padded planes.
extern FRAMEQUILT_EXPORT cl_mem SorImageOnergb_grayCl, DestImageTworgb_grayCl;
extern FRAMEQUILT_EXPORT cl_mem SorTempImageCL, DestTempImageCL;
extern FRAMEQUILT_EXPORT cl_mem gray_pointdownscalClOne, gray_pointdownscalClTwo;
extern FRAMEQUILT_EXPORT cl_mem grad_x2ClOne, grad_y2ClOne, grad_xyClOne;
extern FRAMEQUILT_EXPORT cl_mem grad_x2ClTwo, grad_y2ClTwo, grad_xyClTwo;
extern FRAMEQUILT_EXPORT cl_mem grad_bound_tempOneCl, grad_boundOneCl;
extern FRAMEQUILT_EXPORT cl_mem grad_bound_tempTwoCl, grad_boundTwoCl;
/// Gray overlaps, smoothed gray overlaps, padded planes between them.
extern FRAMEQUILT_EXPORT cl_mem OverLapImageOneGrayCl, OverLapImageTwoGrayCl;
extern FRAMEQUILT_EXPORT cl_mem OverLapImageOneGrayTempCl, OverLapImageTwoGrayTempCl;
extern FRAMEQUILT_EXPORT cl_mem dst_row_bound_outOneCl, dst_row_bound_outTwoCl;
extern FRAMEQUILT_EXPORT cl_mem dst_outOneCl, dst_outTwoCl;
/// Distance maps, weights and result of the fusion.
extern FRAMEQUILT_EXPORT cl_mem AreaImageOneGaryFloatCL, AreaImageTwoGaryFloatCL;
extern FRAMEQUILT_EXPORT cl_mem AreaImageOneWeightCL, ImageReCL;
