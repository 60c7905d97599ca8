// SPDX-License-Identifier: Apache-2.0
/// \file
/// Nearest neighbours in descriptor space with a ratio test (Lowe 2004).
#pragma once

#include <vector>

#include "framequilt/export.h"
#include "framequilt/records.h"

/// For each of `countB` descriptors of B (packed, `length` elements each) finds the nearest of
/// `countA` descriptors of A (`strideA` elements apart) by squared distance, and appends the match
/// {x: index in B, y: index in A} when ratio > nearest / second nearest. Two equally near ones
/// never match, nor do two distances of 0. Several B may take the same A.
///
/// Squares are 32-bit integers, added in single precision in element order.
///
/// \param dist  Scratch of `countA` floats.
/// \return False, after the line "calacDistanceIndexFun ptr is null", when a descriptor array is
///         null (after "findMinIndex ptr is null" when `dist` is). True otherwise; without any
///         descriptor in A or B nothing is appended.
FRAMEQUILT_EXPORT bool calacDistanceIndexFun(unsigned short* descA, unsigned short* descB,
                                             float* dist, float ratio, int countA, int strideA,
                                             int countB, int length, std::vector<SPoint>& matches);

/// Minimum, maximum and first index of the minimum of `n` values; with n < 2 only the first value
/// is looked at. For T = float.
/// \return False, after the line "findMinIndex ptr is null", for a null array.
template <class T>
FRAMEQUILT_EXPORT bool findMinIndex(T* values, int n, T& minValue, T& maxValue, int& minIndex);

extern template bool findMinIndex<float>(float*, int, float&, float&, int&);

/// Appends, for each match, cornersA[match.y] to `pointsA` and cornersB[match.x] to `pointsB`.
/// \return Always true.
/// \throws std::out_of_range when an index lies outside its list.
FRAMEQUILT_EXPORT bool roughMatchSPoint(std::vector<SPoint> cornersA, std::vector<SPoint> cornersB,
                                        std::vector<SPoint> matches, std::vector<SPoint>& pointsA,
                                        std::vector<SPoint>& pointsB);
