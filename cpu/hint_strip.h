// SPDX-License-Identifier: Apache-2.0
/// \file
/// The part of an image that the other image of a pair also shows, by the hint of a displacement.
#pragma once

namespace framequilt {

/// A half-open range of rows or columns. The corners found in it move by `shift` into the image.
struct HintRange {
  int start, end, shift;

  int length() const { return end - start; }
};

struct HintStrip {
  HintRange rows, cols;
};

/// Of the reference and of the new frame, rows x cols pixels each, when the new frame is displaced
/// by (dx, dy) pixels. For dx < 0 the vertical sense is inverted, in both alike. A displacement
/// beyond the image leaves an empty strip.
HintStrip stripOfReference(int dx, int dy, int rows, int cols);
HintStrip stripOfNewFrame(int dx, int dy, int rows, int cols);

}  // namespace framequilt
