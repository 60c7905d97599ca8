// SPDX-License-Identifier: Apache-2.0
// Reduction by a whole number. An odd factor takes pixel (scale * i, scale * j) and rounds the
// output sides half up; an even one takes pixel number (i * cols + j) << (scale / 2 modulo 32) and
// truncates them. What lies outside the source is not written.

/// Source and output pixel of this item; false when it has none.
static bool reducedPixel(int rows, int cols, int scale, Move* pixel) {
  if (rows < 1 || cols < 1 || scale < 1) return false;
  const bool odd = scale % 2 == 1;
  const long outRows = odd ? (2L * rows + scale) / (2L * scale) : rows / scale;
  const long outCols = odd ? (2L * cols + scale) / (2L * scale) : cols / scale;
  const long row = (long)get_global_id(1);
  const long col = (long)get_global_id(0);
  if (row >= outRows || col >= outCols) return false;

  const long from = odd ? row * scale * cols + col * scale : (row * cols + col)
                                                                 << (scale / 2 % 32);
  if (from >= (long)rows * cols) return false;
  pixel->from = (size_t)from;
  pixel->to = (size_t)(row * outCols + col);
  return true;
}

static void reduceCh1(__global const uchar* src, int rows, int cols, int scale,
                      __global uchar* dst) {
  Move pixel;
  if (reducedPixel(rows, cols, scale, &pixel)) dst[pixel.to] = src[pixel.from];
}

__kernel void opencvInterLineARResizeDownCh1Kernel(__global uchar* src, int rows, int cols,
                                                   int scale, __global uchar* dst) {
  reduceCh1(src, rows, cols, scale, dst);
}

__kernel void opencvInterLineARResizeDownCh1Kernel2(__global uchar* src, int rows, int cols,
                                                    int scale, __global uchar* dst) {
  reduceCh1(src, rows, cols, scale, dst);
}

__kernel void opencvInterLineARResizeDownCh3Kernel(__global uchar* src, int rows, int cols,
                                                   int scale, __global uchar* dst) {
  Move pixel;
  if (!reducedPixel(rows, cols, scale, &pixel)) return;
  for (size_t k = 0; k < 3; ++k) dst[3 * pixel.to + k] = src[3 * pixel.from + k];
}
