// SPDX-License-Identifier: Apache-2.0
// What the kernels share. An item stands for column get_global_id(0) and row get_global_id(1);
// launches are rounded up to whole work-groups, so items outside the image do nothing. Planes may
// exceed 2^31 elements: an index is a size_t.
//
// Twins, named "...2", are the same kernel once more: kernel objects hold their arguments, so each
// of two threads needs one of its own.

/// Index of an element that is read and of the one it is written to.
typedef struct {
  size_t from, to;
} Move;

/// Whether this item lies in a plane of rows x cols; none does when a side is below 1.
static bool inPlane(int rows, int cols) {
  return (long)get_global_id(0) < cols && (long)get_global_id(1) < rows;
}

static size_t elementAt(size_t row, size_t col, int cols) { return row * (size_t)cols + col; }

/// Index of this item's element in a plane that is `cols` wide.
static size_t itemElement(int cols) { return elementAt(get_global_id(1), get_global_id(0), cols); }
