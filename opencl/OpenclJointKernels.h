// SPDX-License-Identifier: Apache-2.0
/// \file
/// The kernels with the types of their parameters; opencl/kernels has their bodies. "Two" are the
/// copies of the second corner thread: no kernel object is used by two threads.
#pragma once

#include "opencl/OpenclJointLaunch.h"
#include "opencl/OpenclJointState.h"

namespace framequilt {

/// image, rows, cols
using InPlaceKernel = Kernel<Bytes, int, int>;
inline constexpr InPlaceKernel preJudgeColour{pretJudgeCh3Kernel};
inline constexpr InPlaceKernel preJudgeGray{pretJudgeCh1Kernel};

/// from, rows, cols, to
using PlaneKernel = Kernel<Bytes, int, int, Bytes>;
inline constexpr PlaneKernel toGrayOne{rgb2GaryUcharKernel};
inline constexpr PlaneKernel toGrayTwo{rgb2GaryUcharKernel2};
inline constexpr PlaneKernel smoothDownModeKernel{opencvFilter2DRowCalcUcharWin5ModeKernel};
inline constexpr PlaneKernel smoothAcrossModeKernel{opencvFilter2DColCalcUcharWin5ModeKernel};
inline constexpr PlaneKernel smooth3x3{opencvfilter2DCalcCharWin3UcharKernel};

/// one, two, rows, cols, result of one, result of two
inline constexpr Kernel<Bytes, Bytes, int, int, Bytes, Bytes> toGrayOfBoth{rgb2GaryTwoUcharKernel};
using MaskKernel = Kernel<Bytes, Bytes, int, int, Floats, Floats>;
inline constexpr MaskKernel maskColour{rgb2GaryFloatTwoCh3Kernel};
inline constexpr MaskKernel maskGray{rgb2GaryFloatTwoCh1Kernel};

/// gray, rows, cols, factor, reduced
using ReduceKernel = Kernel<Bytes, int, int, int, Bytes>;
inline constexpr ReduceKernel reduceOne{opencvInterLineARResizeCh1Kernel};
inline constexpr ReduceKernel reduceTwo{opencvInterLineARResizeCh1Kernel2};

/// gray, rows, cols, products xx, yy, xy
using GradientKernel = Kernel<Bytes, int, int, Floats, Floats, Floats>;
inline constexpr GradientKernel gradientsOne{findGradCrossTermsKernel};
inline constexpr GradientKernel gradientsTwo{findGradCrossTermsKernel2};

/// image, rows, cols, border, scratch, padded: rows are those of `image`, which is the padded plane
/// itself where columns are filled.
using PadBytesKernel = Kernel<Bytes, int, int, int, Bytes, Bytes>;
inline constexpr PadBytesKernel padRowsMode{opencvcopyFilter2DBorderRowUcharModeKernel};
inline constexpr PadBytesKernel padColsMode{opencvcopyFilter2DBorderColUcharModeKernel};
using PadFloatsKernel = Kernel<Floats, int, int, int, Floats, Floats>;
inline constexpr PadFloatsKernel padRowsOne{opencvcopyFilter2DBorderRowFloatKernel};
inline constexpr PadFloatsKernel padRowsTwo{opencvcopyFilter2DBorderRowFloatKernel2};
inline constexpr PadFloatsKernel padColsOne{opencvcopyFilter2DBorderColFloatKernel};
inline constexpr PadFloatsKernel padColsTwo{opencvcopyFilter2DBorderColFloatKernel2};

/// image, rows, cols, border, padded; and the columns of a padded plane, in place
inline constexpr Kernel<Bytes, int, int, int, Bytes> padRows{
    opencvcopyFilter2DBorderRowUcharKernel};
inline constexpr Kernel<Bytes, int, int, int> padCols{opencvcopyFilter2DBorderColUcharKernel};

/// from, rows, cols, to
using FloatPlaneKernel = Kernel<Floats, int, int, Floats>;
inline constexpr FloatPlaneKernel smoothDownOne{opencvFilter2DRowCalcFloatWin5Kernel};
inline constexpr FloatPlaneKernel smoothDownTwo{opencvFilter2DRowCalcFloatWin5Kernel2};
inline constexpr FloatPlaneKernel smoothAcrossOne{opencvFilter2DColCalcFloatWin5Kernel};
inline constexpr FloatPlaneKernel smoothAcrossTwo{opencvFilter2DColCalcFloatWin5Kernel2};

/// padded, rows, cols, border, image: rows and columns are those of `image`
using TakeOutFloatsKernel = Kernel<Floats, int, int, int, Floats>;
inline constexpr TakeOutFloatsKernel takeOutOne{opencvcopyFilter2DTakeOutBoundFloatKernel};
inline constexpr TakeOutFloatsKernel takeOutTwo{opencvcopyFilter2DTakeOutBoundFloatKernel2};
inline constexpr Kernel<Bytes, int, int, int, Bytes> takeOut{
    opencvcopyFilter2DTakeOutBoundUcharKernel};

/// one (receives the result), two, rows, cols
inline constexpr Kernel<Bytes, Bytes, int, int> absoluteDifference{absCalcUcharKernel};

/// gray, rows, cols, first row, first column, row count, column count, strip
using StripKernel = Kernel<Bytes, int, int, int, int, int, int, Bytes>;
inline constexpr StripKernel cutStripOne{getRowRangeKernel};
inline constexpr StripKernel cutStripTwo{getRowRange2Kernel};

/// distances of one, of two, rows, cols, weight
inline constexpr Kernel<Floats, Floats, int, int, Bytes> weigh{getWeightImageClKernel};
/// one, two, weight, rows, cols, result
using FuseKernel = Kernel<Bytes, Bytes, Bytes, int, int, Bytes>;
inline constexpr FuseKernel fuseColour{getFusionImageCh3Kernel};
inline constexpr FuseKernel fuseGray{getFusionImageCh1Kernel};

}  // namespace framequilt
