// SPDX-License-Identifier: Apache-2.0
/// \file
/// From a corner response to a bounded, well-spread corner list: local maxima, a cut to the
/// strongest, then adaptive non-maximal suppression (Brown, Szeliski and Winder 2005).
///
/// Candidates are two parallel lists: response values, and points (x column, y row). Everything
/// works on its arguments alone and may run on several threads.
#pragma once

#include <vector>

#include "framequilt/export.h"
#include "framequilt/records.h"

/// Appends every pixel, at least 20 away from the edges, that is above `threshold` and equals the
/// maximum of its 3 x 3 neighbourhood. Each pixel of a plateau counts.
/// \return False, after the line "responseValueMaxSuppression ptr is null", for a null plane.
FRAMEQUILT_EXPORT bool responseValueMaxSuppression(float* response, float threshold, int rows,
                                                   int cols, std::vector<float>& values,
                                                   std::vector<SPoint>& points);

/// Keeps the `cap` strongest candidates, strongest first; up to `cap` candidates stay as they are.
/// `count` becomes the smaller of `wanted` and the number of candidates before the cut, so that it
/// can exceed what is left. `scale` and `pvalue` are not read.
/// \return True when candidates are left. False for an empty list, after the line
///         "goToGetRidOfSomeSPoints CornervalueIn size is 0".
FRAMEQUILT_EXPORT bool goToFirstGetRidOfSomeSPoints(std::vector<float>& values,
                                                    std::vector<SPoint>& points, int wanted,
                                                    int cap, int scale, int pvalue, int& count);

/// Picks the `count` candidates that are farthest from any clearly stronger one (a candidate j is
/// clearly stronger than i when values[j] * robust > values[i]) and multiplies their coordinates
/// by `factor`. Squared distances are capped at 65535. With fewer candidates than `count`, all are
/// handed over in their order and without the factor. `out` is expected empty.
/// \return True when `out` is not empty. False for an empty list, after the same line as above.
/// \throws std::out_of_range when there are more points than values.
FRAMEQUILT_EXPORT bool goToSecondGetRidOfSomeSPoints(std::vector<float> values,
                                                     std::vector<SPoint> points, int count,
                                                     int factor, float robust,
                                                     std::vector<SPoint>& out);

/// Largest value, never below 0.
/// \return False, after the line "CornervalueIn size is 0", for an empty list.
FRAMEQUILT_EXPORT bool fidMax(std::vector<float> values, float& maxValue);

/// Sorts keys[low..high] in descending order and moves `index` along. A quicksort that moves a hole
/// and takes the first element as pivot: the order of equal keys is the one this scheme leaves, and
/// part of the results. Stack use grows with the logarithm of the range. A range outside either
/// list, or one with a NaN in it, is left as it is.
FRAMEQUILT_EXPORT void qsort(std::vector<float>& keys, std::vector<int>& index, int low, int high);
