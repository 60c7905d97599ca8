// SPDX-License-Identifier: Apache-2.0
/// \file
/// Copies of rectangles between a large interleaved 8-bit image (the mosaic) and small packed ones.
/// Rows and columns are half-open ranges. Images of 1 and 3 channels are copied; with any other
/// count nothing is, and the call succeeds.
#pragma once

#include "framequilt/export.h"
#include "framequilt/records.h"

/// Cuts big[startRow, endRow) x [startCol, endCol) out into `small`, packed, and describes it in
/// `smallInfo` (`reserved` stays as it is). Start values are not checked.
///
/// \return False, after a fixed line, when endRow or endCol exceeds the big image or a pointer is
///         null; nothing is written then. True otherwise, also for an empty range.
FRAMEQUILT_EXPORT bool willBigImgAssignRowColToSmallImg(unsigned char* big, int startRow,
                                                        int endRow, int startCol, int endCol,
                                                        int bigRows, int bigCols, int channels,
                                                        imgInfo& smallInfo, unsigned char* small);

/// Writes `small`, whose rows are `smallCols` pixels long, into big[startRow, endRow) x
/// [startCol, endCol). `smallRows` is not read. Results as for the cut.
FRAMEQUILT_EXPORT bool willSmallImgToBigImgAssignRowCol(unsigned char* small, int smallRows,
                                                        int smallCols, int startRow, int endRow,
                                                        int startCol, int endCol, int bigRows,
                                                        int bigCols, int channels,
                                                        unsigned char* big);

/// Cuts the overlap of a new frame and the mosaic out of both: the frame placed last lies at
/// `position` in the mosaic, the new one offsetX columns and offsetY rows from there. Both parts
/// have the same size. A null image pointer gives the line "ptr is null" and nothing else.
FRAMEQUILT_EXPORT void takeOutOverLapImageFromMoasicImage(
    unsigned char* mosaic, unsigned char* frame, imgInfo mosaicInfo, imgInfo frameInfo,
    SPoint position, int offsetX, int offsetY, imgInfo& mosaicPartInfo, imgInfo& framePartInfo,
    unsigned char* mosaicPart, unsigned char* framePart);
