// SPDX-License-Identifier: Apache-2.0
// Cuts a rectangle out of a gray image, packed.

/// Pixels outside the image are neither read nor written.
static void cutOut(__global const uchar* gray, int rows, int cols, int rowStart, int colStart,
                   int rowCount, int colCount, __global uchar* out) {
  if (!inPlane(rowCount, colCount)) return;
  const long row = rowStart + (long)get_global_id(1);
  const long col = colStart + (long)get_global_id(0);
  if (row < 0 || col < 0 || row >= rows || col >= cols) return;
  out[itemElement(colCount)] = gray[elementAt((size_t)row, (size_t)col, cols)];
}

__kernel void getRowRange(__global uchar* gray, int rows, int cols, int rowStart, int colStart,
                          int rowCount, int colCount, __global uchar* out) {
  cutOut(gray, rows, cols, rowStart, colStart, rowCount, colCount, out);
}

__kernel void getRowRange2(__global uchar* gray, int rows, int cols, int rowStart, int colStart,
                           int rowCount, int colCount, __global uchar* out) {
  cutOut(gray, rows, cols, rowStart, colStart, rowCount, colCount, out);
}
