// SPDX-License-Identifier: Apache-2.0
// Mirrored borders (reflect-101: the edge pixel is not repeated) of half-width h, in two steps:
// Row copies the image and mirrors it above and below, Col mirrors the padded rows to the left and
// right. TakeOutBound copies the inner part back out; its rows and cols are the inner size.

/// Index in [0, n) that `i` mirrors to, back and forth as often as needed.
static int reflect101(int i, int n) {
  if (n == 1) return 0;
  while (i < 0 || i >= n) i = i < 0 ? -i : 2 * (n - 1) - i;
  return i;
}

/// Whether this item of the padded plane has an image column.
static bool isRowBorderItem(int rows, int cols, int h) {
  return rows > 0 && h >= 0 && inPlane(rows + 2 * h, cols);
}

/// From the image to the padded plane.
static Move rowBorderMove(int rows, int cols, int h) {
  const size_t col = get_global_id(0);
  const int row = (int)get_global_id(1);
  const Move move = {elementAt((size_t)reflect101(row - h, rows), col, cols),
                     elementAt((size_t)row, col + (size_t)h, cols + 2 * h)};
  return move;
}

/// Items are the h columns of one side in each padded row.
static bool isColBorderItem(int paddedRows, int cols, int h) {
  return cols > 0 && inPlane(paddedRows, h);
}

/// Within one padded row, into `column` counted from the image's first one.
static Move colBorderMove(int cols, int h, int column) {
  const size_t start = elementAt(get_global_id(1), 0, cols + 2 * h);
  const Move move = {start + (size_t)(h + reflect101(column, cols)), start + (size_t)(h + column)};
  return move;
}

static Move leftBorderMove(int cols, int h) {
  return colBorderMove(cols, h, (int)get_global_id(0) - h);
}

static Move rightBorderMove(int cols, int h) {
  return colBorderMove(cols, h, cols + (int)get_global_id(0));
}

/// From the padded plane to the image.
static Move takeOutMove(int cols, int h) {
  const Move move = {elementAt(get_global_id(1) + (size_t)h, get_global_id(0) + (size_t)h,
                               cols + 2 * h),
                     itemElement(cols)};
  return move;
}

__kernel void opencvcopyFilter2DBorderRowUhcarMode(__global uchar* image, int rows, int cols, int h,
                                                   __global uchar* tmpA, __global uchar* tmpB) {
  if (!isRowBorderItem(rows, cols, h)) return;
  const Move move = rowBorderMove(rows, cols, h);
  tmpA[move.to] = image[move.from];
  tmpB[move.to] = image[move.from];
}

/// `padded` may be one of the two destinations: no item writes what another reads.
__kernel void opencvcopyFilter2DBorderColUcharMode(__global uchar* padded, int paddedRows, int cols,
                                                   int h, __global uchar* tmpA,
                                                   __global uchar* tmpB) {
  if (!isColBorderItem(paddedRows, cols, h)) return;
  const Move left = leftBorderMove(cols, h);
  const Move right = rightBorderMove(cols, h);
  tmpA[left.to] = padded[left.from];
  tmpB[left.to] = padded[left.from];
  tmpA[right.to] = padded[right.from];
  tmpB[right.to] = padded[right.from];
}

__kernel void opencvcopyFilter2DBorderRowUchar(__global uchar* image, int rows, int cols, int h,
                                               __global uchar* padded) {
  if (!isRowBorderItem(rows, cols, h)) return;
  const Move move = rowBorderMove(rows, cols, h);
  padded[move.to] = image[move.from];
}

__kernel void opencvcopyFilter2DBorderColUchar(__global uchar* padded, int paddedRows, int cols,
                                               int h) {
  if (!isColBorderItem(paddedRows, cols, h)) return;
  const Move left = leftBorderMove(cols, h);
  const Move right = rightBorderMove(cols, h);
  padded[left.to] = padded[left.from];
  padded[right.to] = padded[right.from];
}

__kernel void opencvcopyFilter2DTakeOutBoundUchar(__global uchar* padded, int rows, int cols, int h,
                                                  __global uchar* image) {
  if (!inPlane(rows, cols)) return;
  const Move move = takeOutMove(cols, h);
  image[move.to] = padded[move.from];
}

static void rowBorderFloat(__global const float* image, int rows, int cols, int h,
                           __global float* padded) {
  if (!isRowBorderItem(rows, cols, h)) return;
  const Move move = rowBorderMove(rows, cols, h);
  padded[move.to] = image[move.from];
}

static void colBorderFloat(__global const float* padded, int paddedRows, int cols, int h,
                           __global float* destination) {
  if (!isColBorderItem(paddedRows, cols, h)) return;
  const Move left = leftBorderMove(cols, h);
  const Move right = rightBorderMove(cols, h);
  destination[left.to] = padded[left.from];
  destination[right.to] = padded[right.from];
}

static void takeOutFloat(__global const float* padded, int rows, int cols, int h,
                         __global float* image) {
  if (!inPlane(rows, cols)) return;
  const Move move = takeOutMove(cols, h);
  image[move.to] = padded[move.from];
}

// `temp` stays untouched below: two threads may pass the same buffer at the same time.

__kernel void opencvcopyFilter2DBorderRowFloat(__global float* image, int rows, int cols, int h,
                                               __global float* temp, __global float* padded) {
  (void)temp;
  rowBorderFloat(image, rows, cols, h, padded);
}

__kernel void opencvcopyFilter2DBorderRowFloat2(__global float* image, int rows, int cols, int h,
                                                __global float* temp, __global float* padded) {
  (void)temp;
  rowBorderFloat(image, rows, cols, h, padded);
}

__kernel void opencvcopyFilter2DBorderColFloat(__global float* padded, int paddedRows, int cols,
                                               int h, __global float* temp,
                                               __global float* padded2) {
  (void)temp;
  colBorderFloat(padded, paddedRows, cols, h, padded2);
}

__kernel void opencvcopyFilter2DBorderColFloat2(__global float* padded, int paddedRows, int cols,
                                                int h, __global float* temp,
                                                __global float* padded2) {
  (void)temp;
  colBorderFloat(padded, paddedRows, cols, h, padded2);
}

__kernel void opencvcopyFilter2DTakeOutBoundFloat(__global float* padded, int rows, int cols, int h,
                                                  __global float* image) {
  takeOutFloat(padded, rows, cols, h, image);
}

__kernel void opencvcopyFilter2DTakeOutBoundFloat2(__global float* padded, int rows, int cols,
                                                   int h, __global float* image) {
  takeOutFloat(padded, rows, cols, h, image);
}
