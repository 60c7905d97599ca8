// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <framequilt/tuning.h>

#include "imaging/imaging_state.h"
#include "tests/imaging/host_state.h"
#include "tests/imaging/reference.h"
#include "tests/support/guarded.h"
#include "tests/support/scoped_value.h"

/// What the six planes of the overlap measures hold, one side each.
struct SidePlanes {
  Bytes plane, bound, filtered;
};

/// The six planes for a frame of rows x cols, with given contents, in force for one scope.
class OverlapPlanes {
 public:
  static std::size_t bytes(int rows, int cols) { return area(rows + 8, cols + 8); }

  OverlapPlanes(int rows, int cols, const SidePlanes& one, const SidePlanes& two)
      : rows_(imgScaleRow, rows),
        cols_(imgScaleCol, cols),
        one_(resiz_One, one.plane),
        two_(resiz_Two, two.plane),
        oneBound_(resiz_OneBound, one.bound),
        twoBound_(resiz_TwoBound, two.bound),
        oneFiltered_(resiz_OneBoundFilter, one.filtered),
        twoFiltered_(resiz_TwoBoundFilter, two.filtered) {}

  /// All planes hold 0.
  OverlapPlanes(int rows, int cols)
      : OverlapPlanes(rows, cols, zeros(rows, cols), zeros(rows, cols)) {}

  SidePlanes one() const { return {one_.values(), oneBound_.values(), oneFiltered_.values()}; }
  SidePlanes two() const { return {two_.values(), twoBound_.values(), twoFiltered_.values()}; }

 private:
  static SidePlanes zeros(int rows, int cols) {
    const Bytes plane(bytes(rows, cols), 0);
    return {plane, plane, plane};
  }

  ScopedValue<int> rows_, cols_;
  HostPlane<unsigned char> one_, two_, oneBound_, twoBound_, oneFiltered_, twoFiltered_;
};
