// SPDX-License-Identifier: Apache-2.0
// Conditioning of an incoming frame, and the difference of two.

static void zeroToOne(__global uchar* byte) {
  if (*byte == 0) *byte = 1;
}

// 0 is left to mean "no data".

__kernel void pretJudgeImageCh3Kernel(__global uchar* image, int rows, int cols) {
  if (!inPlane(rows, cols)) return;
  const size_t i = 3 * itemElement(cols);
  for (size_t k = 0; k < 3; ++k) zeroToOne(image + i + k);
}

__kernel void pretJudgeImageCh1Kernel(__global uchar* image, int rows, int cols) {
  if (inPlane(rows, cols)) zeroToOne(image + itemElement(cols));
}

/// Leaves the absolute difference in `a`.
__kernel void absCalcKernel(__global uchar* a, __global uchar* b, int rows, int cols) {
  if (!inPlane(rows, cols)) return;
  const size_t i = itemElement(cols);
  a[i] = (uchar)abs(a[i] - b[i]);
}
