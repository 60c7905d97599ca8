// SPDX-License-Identifier: Apache-2.0
/// \file
/// The two worker threads that find and describe the corners of a pair of images side by side.
#pragma once

#include <vector>

#include "framequilt/export.h"
#include "framequilt/records.h"

/// Thread bodies: serve requests while the run flag is set, then leave through
/// `pthread_exit(nullptr)`. Thread One works on the reference, thread Two on the new frame. The
/// argument is not read.
FRAMEQUILT_EXPORT void* findHarrisCornerCoordianteThreadOne(void* unused);
FRAMEQUILT_EXPORT void* findHarrisCornerCoordianteThreadTwo(void* unused);

/// Corners in the strip of `gray` (rows x cols) that shares content with the other image when the
/// new frame is displaced by (dx, dy); coordinates are those of `gray`. For dx < 0 the vertical
/// sense is inverted against dx >= 0, in both alike.
///
/// The strip buffer (`SorTempGrayImage` / `DestTempGrayImage`) has to be allocated.
/// \return Always true.
FRAMEQUILT_EXPORT bool getRangeCpuOne(int dx, int dy, unsigned char* gray, int rows, int cols,
                                      std::vector<SPoint>& corners);
FRAMEQUILT_EXPORT bool getRangeCpuTwo(int dx, int dy, unsigned char* gray, int rows, int cols,
                                      std::vector<SPoint>& corners);

namespace framequilt {

/// The job of worker two, on the calling thread. False when the caller of the offset estimation has
/// not provided what it works in.
bool findAndDescribeNewFrame();

/// Whether the gray image of the new frame is in its place before the job, whoever does it.
void setNewFrameIsGray(bool isGray) noexcept;

}  // namespace framequilt
