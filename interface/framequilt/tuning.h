// SPDX-License-Identifier: Apache-2.0
/// \file
/// The library's parameters and the values a run derives from them.
///
/// A host may write the parameters before `initJoint`; while a run is open they are only read.
/// The names live in the global namespace and are exported: a host that defines a global of the
/// same name (`scale` is a likely one) replaces the library's.
#pragma once

#include "export.h"

// --- Parameters of the host backend --------------------------------------------------------

/// Mosaic rows, which times `MAXCOL` are a full mosaic; `initJoint` replaces both.
extern FRAMEQUILT_EXPORT int MAXROW;
/// Mosaic columns, see `MAXROW`.
extern FRAMEQUILT_EXPORT int MAXCOL;
/// Whole-number divisor from frame size to working size. 1 and 2 find corners; 0 divides by zero
/// at the start of a run.
extern FRAMEQUILT_EXPORT int scale;
/// Corner budget; `initJoint` replaces it. One step more is about 31 corners at scale 1.
extern FRAMEQUILT_EXPORT int pvalue;
/// Elements of one corner descriptor. The patch fills 200; further elements stay 0, fewer cut the
/// descriptor short.
extern FRAMEQUILT_EXPORT int demesion;
/// Largest difference of overlap brightness that is blended, in dynamic mode (gray values).
extern FRAMEQUILT_EXPORT float brightThCpu0;
/// Largest difference of overlap sharpness that is blended, in dynamic mode.
extern FRAMEQUILT_EXPORT float defintThCpu0;
/// Motion value from which a frame is refused, in dynamic mode (mean gray difference, 0..255).
extern FRAMEQUILT_EXPORT int motionValueThCpu0;
/// Smallest overlap, as a fraction of the frame, that is blended (exclusive).
extern FRAMEQUILT_EXPORT float ImageOverlap_minCpu;
/// Largest overlap, likewise.
extern FRAMEQUILT_EXPORT float ImageOverlap_maxCpu;
/// Not used.
extern FRAMEQUILT_EXPORT int countJ;

/// Smoothing taps of the corner response of the first image.
extern FRAMEQUILT_EXPORT float filter2DKer[5];
/// The same of the second image.
extern FRAMEQUILT_EXPORT float filter2DKer1[5];
/// Smoothing taps of the motion measure.
extern FRAMEQUILT_EXPORT float filter2DKerModel[5];
/// 3 x 3 smoothing weights of the brightness measure; handed on, never read.
extern FRAMEQUILT_EXPORT float filterH2Dker[9];
/// The nine fixed taps of the edge response of the sharpness measure; never read.
extern FRAMEQUILT_EXPORT float filterH2DefKer[9];
/// Element 0 is the tap count of the corner and motion smoothing; the run takes at most 5.
extern FRAMEQUILT_EXPORT int filter2DKerSize[4];

// --- Parameters of the OpenCL backend, in the same sense -----------------------------------

/// As `MAXROW`.
extern FRAMEQUILT_EXPORT int MAXROWCL;
/// As `MAXCOL`.
extern FRAMEQUILT_EXPORT int MAXCOLCL;
/// As `scale`.
extern FRAMEQUILT_EXPORT int scaleCL;
/// As `pvalue`.
extern FRAMEQUILT_EXPORT int pvalueCL;
/// As `demesion`.
extern FRAMEQUILT_EXPORT int demesionCL;
/// As `brightThCpu0`.
extern FRAMEQUILT_EXPORT float brightThCL0;
/// As `defintThCpu0`.
extern FRAMEQUILT_EXPORT float defintThCL0;
/// As `motionValueThCpu0`.
extern FRAMEQUILT_EXPORT int motionValueThCL0;
/// As `ImageOverlap_minCpu`.
extern FRAMEQUILT_EXPORT float ImageOverlap_minCL;
/// As `ImageOverlap_maxCpu`.
extern FRAMEQUILT_EXPORT float ImageOverlap_maxCL;
/// As element 0 of `filter2DKerSize`.
extern FRAMEQUILT_EXPORT int filter2DKerSizeCL;
/// Index of the platform whose name starts with "AMD", -1 while unknown.
extern FRAMEQUILT_EXPORT int AMDidx;
/// Index of the platform whose name starts with "NVI", -1 while unknown.
extern FRAMEQUILT_EXPORT int NVIDIAidx;

// --- Values of the run: a host reads them, the library writes them -------------------------

/// Limit in force for the brightness, 0 until a frame sets it from the mode of the run.
extern FRAMEQUILT_EXPORT float brightThCpu;
/// Limit in force for the sharpness, likewise.
extern FRAMEQUILT_EXPORT float defintThCpu;
/// Limit in force for the motion, likewise.
extern FRAMEQUILT_EXPORT int motionValueThCpu;
/// `brightThCpu` of the OpenCL backend.
extern FRAMEQUILT_EXPORT float brightThCL;
/// `defintThCpu` of the OpenCL backend.
extern FRAMEQUILT_EXPORT float defintThCL;
/// `motionValueThCpu` of the OpenCL backend.
extern FRAMEQUILT_EXPORT int motionValueThCL;

/// Rows of a frame of the run, in pixels.
extern FRAMEQUILT_EXPORT int RealImgRow;
/// Columns of a frame of the run, in pixels.
extern FRAMEQUILT_EXPORT int RealImgCol;
/// Rows at working size: those of a frame divided by `scale`, truncated.
extern FRAMEQUILT_EXPORT int imgScaleRow;
/// Columns at working size, likewise.
extern FRAMEQUILT_EXPORT int imgScaleCol;
/// Corners wanted per image.
extern FRAMEQUILT_EXPORT int numpoint;
/// Cap on the candidates for corners that are spread out.
extern FRAMEQUILT_EXPORT int num5000;
/// Factor from the working size to the image that corners are searched in, which has half of it.
/// Set by every offset estimation while `scale` is 1 or 2, as are the two sizes below; for other
/// scales they keep their values.
extern FRAMEQUILT_EXPORT int pointdownscal;
/// Rows of the image that corners are searched in.
extern FRAMEQUILT_EXPORT int gray_pointdownscal_row;
/// Columns of the image that corners are searched in.
extern FRAMEQUILT_EXPORT int gray_pointdownscal_col;
