// SPDX-License-Identifier: Apache-2.0
// Smoothing passes over padded planes. Row names the vertical pass, Col the horizontal one. Where
// the 5-tap window does not fit along the pass, the element is copied, so that the pass after it
// reads nothing that was never written.

#define TAPS 5

/// The defaults of filter2DKerModel and filter2DKer.
__constant float kModeTaps[TAPS] = {0.0554487f, 0.244201f, 0.40262f, 0.244201f, 0.0554487f};
__constant float kGradientTaps[TAPS] = {0.187627f, 0.206068f, 0.212609f, 0.206068f, 0.187627f};

/// Elements that a tap pass reads for this item: `centre` and those `step` apart around it.
typedef struct {
  size_t centre, step;
  bool fits;
} Window;

static bool windowFits(size_t position, int side) {
  return (long)position >= TAPS / 2 && (long)position < side - TAPS / 2;
}

static Window verticalWindow(int rows, int cols) {
  const Window window = {itemElement(cols), (size_t)cols, windowFits(get_global_id(1), rows)};
  return window;
}

static Window horizontalWindow(int cols) {
  const Window window = {itemElement(cols), 1, windowFits(get_global_id(0), cols)};
  return window;
}

// Both sums are rounded at each step, in the order of the taps.

static void passUchar(__global const uchar* src, Window window, __global uchar* dst) {
  if (!window.fits) {
    dst[window.centre] = src[window.centre];
    return;
  }
  const size_t first = window.centre - TAPS / 2 * window.step;
  float sum = 0.0f;
  for (int j = 0; j < TAPS; ++j) sum += kModeTaps[j] * (float)src[first + (size_t)j * window.step];
  dst[window.centre] = (uchar)(int)sum;
}

static void passFloat(__global const float* src, Window window, __global float* dst) {
  if (!window.fits) {
    dst[window.centre] = src[window.centre];
    return;
  }
  const size_t first = window.centre - TAPS / 2 * window.step;
  float sum = 0.0f;
  for (int j = 0; j < TAPS; ++j) sum += kGradientTaps[j] * src[first + (size_t)j * window.step];
  dst[window.centre] = sum;
}

static void verticalPassFloat(__global const float* src, int rows, int cols, __global float* dst) {
  if (inPlane(rows, cols)) passFloat(src, verticalWindow(rows, cols), dst);
}

static void horizontalPassFloat(__global const float* src, int rows, int cols,
                                __global float* dst) {
  if (inPlane(rows, cols)) passFloat(src, horizontalWindow(cols), dst);
}

__kernel void opencvFilter2DRowCalcUcharWin5Mode(__global uchar* src, int rows, int cols,
                                                 __global uchar* dst) {
  if (inPlane(rows, cols)) passUchar(src, verticalWindow(rows, cols), dst);
}

__kernel void opencvFilter2DColCalcUcharWin5Mode(__global uchar* src, int rows, int cols,
                                                 __global uchar* dst) {
  if (inPlane(rows, cols)) passUchar(src, horizontalWindow(cols), dst);
}

__kernel void opencvFilter2DRowCalcFloatWin5(__global float* src, int rows, int cols,
                                             __global float* dst) {
  verticalPassFloat(src, rows, cols, dst);
}

__kernel void opencvFilter2DRowCalcFloatWin52(__global float* src, int rows, int cols,
                                              __global float* dst) {
  verticalPassFloat(src, rows, cols, dst);
}

__kernel void opencvFilter2DColCalcFloatWin5(__global float* src, int rows, int cols,
                                             __global float* dst) {
  horizontalPassFloat(src, rows, cols, dst);
}

__kernel void opencvFilter2DColCalcFloatWin52(__global float* src, int rows, int cols,
                                              __global float* dst) {
  horizontalPassFloat(src, rows, cols, dst);
}

static bool onEdge(int rows, int cols) {
  const long row = (long)get_global_id(1);
  const long col = (long)get_global_id(0);
  return row == 0 || col == 0 || row == rows - 1 || col == cols - 1;
}

/// 3 x 3 binomial (1 2 1 / 2 4 2 / 1 2 1) >> 4; the outermost pixels become 0.
__kernel void opencvfilter2DCalcCharWin3Kernel(__global uchar* src, int rows, int cols,
                                               __global uchar* dst) {
  if (!inPlane(rows, cols)) return;
  const size_t i = itemElement(cols);
  if (onEdge(rows, cols)) {
    dst[i] = 0;
    return;
  }
  const size_t above = i - (size_t)cols;
  const size_t below = i + (size_t)cols;
  const int sum = (src[above - 1] + 2 * src[above] + src[above + 1]) +
                  (2 * src[i - 1] + 4 * src[i] + 2 * src[i + 1]) +
                  (src[below - 1] + 2 * src[below] + src[below + 1]);
  dst[i] = (uchar)(sum >> 4);
}
