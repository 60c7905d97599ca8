// SPDX-License-Identifier: Apache-2.0
/// \file
/// The translation that most matched pairs agree on.
#pragma once

#include <vector>

#include "framequilt/export.h"
#include "framequilt/records.h"

/// Tries the offset A - B of every pair in turn (no random sampling) and takes the one with most
/// pairs within 4 pixels of it (exclusive); of equal ones the earlier.
///
/// \param pointsA,pointsB      Pair k is pointsA[k], pointsB[k]; equal lengths.
/// \param inliersA,inliersB    Receive the agreeing pairs, appended in pair order.
/// \param dx,dy                Receive the winning pair's own offset: whole numbers, no mean.
/// \return False, after the line "ransacMatchSPointArrayFun size 0", for an empty list.
/// \throws std::out_of_range when `pointsB` is the shorter list.
FRAMEQUILT_EXPORT bool ransacMatchSPointArrayFun(std::vector<SPoint> pointsA,
                                                 std::vector<SPoint> pointsB,
                                                 std::vector<SPoint>& inliersA,
                                                 std::vector<SPoint>& inliersB, float& dx,
                                                 float& dy);
