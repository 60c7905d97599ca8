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

/// Mosaic rows and columns whose product is a full mosaic; `initJoint` replaces both.
extern FRAMEQUILT_EXPORT int MAXROW, MAXCOL;
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
/// Smallest and largest overlap, as a fraction of the frame, that is blended (both exclusive).
extern FRAMEQUILT_EXPORT float ImageOverlap_minCpu, ImageOverlap_maxCpu;
/// Not used.
extern FRAMEQUILT_EXPORT int countJ;

/// Smoothing taps of the corner response: first image, second image.
extern FRAMEQUILT_EXPORT float filter2DKer[5], filter2DKer1[5];
/// Smoothing taps of the motion measure.
extern FRAMEQUILT_EXPORT float filter2DKerModel[5];
/// 3 x 3 smoothing weights of the brightness measure; handed on, never read.
extern FRAMEQUILT_EXPORT float filterH2Dker[9];
/// The nine fixed taps of the edge response of the sharpness measure; never read.
extern FRAMEQUILT_EXPORT float filterH2DefKer[9];
/// Element 0 is the tap count of the corner and motion smoothing; the run takes at most 5.
extern FRAMEQUILT_EXPORT int filter2DKerSize[4];

// --- Parameters of the OpenCL backend, in the same sense -----------------------------------

extern FRAMEQUILT_EXPORT int MAXROWCL, MAXCOLCL;
extern FRAMEQUILT_EXPORT int scaleCL, pvalueCL;
extern FRAMEQUILT_EXPORT int demesionCL;
extern FRAMEQUILT_EXPORT float brightThCL0, defintThCL0;
extern FRAMEQUILT_EXPORT int motionValueThCL0;
extern FRAMEQUILT_EXPORT float ImageOverlap_minCL, ImageOverlap_maxCL;
extern FRAMEQUILT_EXPORT int filter2DKerSizeCL;
/// Index of the platform whose name starts with "AMD" or "NVI", -1 while unknown.
extern FRAMEQUILT_EXPORT int AMDidx, NVIDIAidx;

// --- Values of the run: a host reads them, the library writes them -------------------------

/// Limits in force, 0 until a frame sets them from the mode of the run.
extern FRAMEQUILT_EXPORT float brightThCpu, defintThCpu;
extern FRAMEQUILT_EXPORT int motionValueThCpu;
extern FRAMEQUILT_EXPORT float brightThCL, defintThCL;
extern FRAMEQUILT_EXPORT int motionValueThCL;

/// Frame size of the run in pixels.
extern FRAMEQUILT_EXPORT int RealImgRow, RealImgCol;
/// Working size: frame size divided by `scale`, truncated.
extern FRAMEQUILT_EXPORT int imgScaleRow, imgScaleCol;
/// Corners wanted per image, and the cap on candidates that are spread out.
extern FRAMEQUILT_EXPORT int numpoint, num5000;
/// Factor and size of the image that corners are searched in: half the working size. Set by
/// every offset estimation while `scale` is 1 or 2; for other scales they keep their values.
extern FRAMEQUILT_EXPORT int pointdownscal, gray_pointdownscal_row, gray_pointdownscal_col;
