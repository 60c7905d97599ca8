// SPDX-License-Identifier: Apache-2.0
/// \file
/// Corners of a pair of images on two threads: image-wide steps as kernels, the steps of single
/// corners on the host.
#pragma once

#include <CL/cl.h>

#include <vector>

#include "cpu/corner_lane.h"
#include "framequilt/export.h"
#include "framequilt/records.h"

/// Thread bodies: serve requests while the run flag is set, then leave through
/// `pthread_exit(nullptr)`. A job that the device refuses ends the thread: it returns and its
/// request stays raised. Thread One works on the reference, thread Two on the new frame. The
/// argument is not read.
FRAMEQUILT_EXPORT void* findHarrisCornerCoordianteThreadClOne(void* unused);
FRAMEQUILT_EXPORT void* findHarrisCornerCoordianteThreadClTwo(void* unused);

/// Finds the corners of a gray image on the device, info.rows x info.cols pixels, and appends them
/// to `corners` (expected empty), in pixels of `gray`; otherwise as
/// `findHarrisCornerCoordianteFun1` with the OpenCL backend's sizes and the planes of one thread.
/// \return True when at least one corner was found. False after one of the lines "errNum failed"
///         (the device refused), "HarrissCornerSPoint22222222222 size is 0".
FRAMEQUILT_EXPORT bool findHarrisCornerCoordianteFunClOne(cl_mem gray, imgInfo info,
                                                          std::vector<SPoint>& corners);
FRAMEQUILT_EXPORT bool findHarrisCornerCoordianteFunClTwo(cl_mem gray, imgInfo info,
                                                          std::vector<SPoint>& corners);

/// Corners in the strip of `gray` (rows x cols) that a hint of (dx, dy) selects; as
/// `getRangeCpuOne` and `getRangeCpuTwo`.
/// \return False when the strip could not be cut; true otherwise.
FRAMEQUILT_EXPORT bool getRangeTh1(int dx, int dy, cl_mem gray, int rows, int cols,
                                   std::vector<SPoint>& corners);
FRAMEQUILT_EXPORT bool getRangeTh2(int dx, int dy, cl_mem gray, int rows, int cols,
                                   std::vector<SPoint>& corners);

namespace framequilt {

/// Reference image, new frame. Never destroyed: a thread that nobody stopped outlives `main`.
CornerLane& openclLaneOne();
CornerLane& openclLaneTwo();

}  // namespace framequilt
