// SPDX-License-Identifier: Apache-2.0
// Products of the Sobel gradients, for the Harris response.

/// The outer ring becomes 0. The cross term is built from magnitudes, so it has no sign.
static void gradientProducts(__global const uchar* gray, int rows, int cols, __global float* gx2,
                             __global float* gy2, __global float* gxy) {
  if (!inPlane(rows, cols)) return;
  const size_t i = itemElement(cols);
  uint gx = 0;
  uint gy = 0;
  if (!onEdge(rows, cols)) {
    __global const uchar* above = gray + i - (size_t)cols - 1;
    __global const uchar* here = gray + i - 1;
    __global const uchar* below = gray + i + (size_t)cols - 1;
    const int sx = (above[2] + 2 * here[2] + below[2]) - (above[0] + 2 * here[0] + below[0]);
    const int sy = (below[0] + 2 * below[1] + below[2]) - (above[0] + 2 * above[1] + above[2]);
    gx = abs(sx) >> 2;
    gy = abs(sy) >> 2;
  }
  gx2[i] = (float)(gx * gx);
  gy2[i] = (float)(gy * gy);
  gxy[i] = (float)(gx * gy);
}

__kernel void findGradSquareCrossTermsKernel(__global uchar* gray, int rows, int cols,
                                             __global float* gx2, __global float* gy2,
                                             __global float* gxy) {
  gradientProducts(gray, rows, cols, gx2, gy2, gxy);
}

__kernel void findGradSquareCrossTermsKernel2(__global uchar* gray, int rows, int cols,
                                              __global float* gx2, __global float* gy2,
                                              __global float* gxy) {
  gradientProducts(gray, rows, cols, gx2, gy2, gxy);
}
