// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framequilt/export.h"
#include "framequilt/records.h"

/// The translation between two frames: as `imageMosaicFun`, with corners from the device.
///
/// \param first,second  Reference and new frame, info.rows x info.cols pixels of info.channels
///                      bytes; must stay until the call returns.
/// \return Also false when a corner thread is not there or the device refused it.
FRAMEQUILT_EXPORT bool imageMosaicFunCL(unsigned char* first, unsigned char* second, imgInfo info,
                                        int& dx, int& dy, int& count);
