// SPDX-License-Identifier: Apache-2.0
// Colour to gray. Sources are packed rows of blue, green, red bytes.

/// 1000 times the gray value of a pixel.
static uint weightedSum(__global const uchar* bgr, size_t pixel) {
  __global const uchar* p = bgr + 3 * pixel;
  return 299u * p[2] + 587u * p[1] + 114u * p[0];
}

/// The gray value, rounded half up.
static uchar integerGray(__global const uchar* bgr, size_t pixel) {
  return (uchar)((weightedSum(bgr, pixel) + 500u) / 1000u);
}

static float maskOf(bool hasContent) { return hasContent ? 255.0f : 0.0f; }

static void toGray(__global const uchar* bgr, int rows, int cols, __global uchar* gray) {
  if (!inPlane(rows, cols)) return;
  const size_t i = itemElement(cols);
  gray[i] = integerGray(bgr, i);
}

__kernel void rgb2GaryKernel(__global uchar* bgr, int rows, int cols, __global uchar* gray) {
  toGray(bgr, rows, cols, gray);
}

__kernel void rgb2GaryKernel2(__global uchar* bgr, int rows, int cols, __global uchar* gray) {
  toGray(bgr, rows, cols, gray);
}

__kernel void rgb2GaryTwoKernel(__global uchar* bgrA, __global uchar* bgrB, int rows, int cols,
                                __global uchar* grayA, __global uchar* grayB) {
  toGray(bgrA, rows, cols, grayA);
  toGray(bgrB, rows, cols, grayB);
}

// Masks of the pixels that are not black: 255 where there is content, else 0.

__kernel void rgb2GaryFloatTwoCh3Kernel(__global uchar* a, __global uchar* b, int rows, int cols,
                                        __global float* maskA, __global float* maskB) {
  if (!inPlane(rows, cols)) return;
  const size_t i = itemElement(cols);
  maskA[i] = maskOf(weightedSum(a, i) >= 500u);
  maskB[i] = maskOf(weightedSum(b, i) >= 500u);
}

__kernel void rgb2GaryFloatTwoCh1Kernel(__global uchar* a, __global uchar* b, int rows, int cols,
                                        __global float* maskA, __global float* maskB) {
  if (!inPlane(rows, cols)) return;
  const size_t i = itemElement(cols);
  maskA[i] = maskOf(a[i] != 0);
  maskB[i] = maskOf(b[i] != 0);
}
