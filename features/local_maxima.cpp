// SPDX-License-Identifier: Apache-2.0
#include "features/local_maxima.h"

#include <algorithm>
#include <limits>

#include "imaging/cpu_level.h"

namespace framequilt {
namespace {

/// Pixels of a row at once, so that what is kept of them stays on the stack.
constexpr std::ptrdiff_t kRun = 1024;

/// Maxima of the three pixels of a column, and of two neighbouring columns.
struct Scratch {
  float columns[kRun + 2];
  float pairs[kRun + 1];
};

/// The number of the two if only `b` may be none.
FRAMEQUILT_ROUTINE float larger(float a, float b) { return a < b ? b : a; }

/// In three passes, each over at most two neighbours of one array: compilers turn those into
/// vectors.
struct MarkRun {
  FRAMEQUILT_ROUTINE void run(const float* __restrict row, std::ptrdiff_t cols,
                              std::ptrdiff_t count, float threshold, Scratch* scratch,
                              unsigned char* __restrict marks) {
    float* __restrict columns = scratch->columns;
    float* __restrict pairs = scratch->pairs;
    const float* const before = row - 1;
    for (std::ptrdiff_t c = 0; c < count + 2; ++c) {
      float maximum = larger(-std::numeric_limits<float>::infinity(), before[c - cols]);
      maximum = larger(maximum, before[c]);
      columns[c] = larger(maximum, before[c + cols]);
    }
    for (std::ptrdiff_t c = 0; c < count + 1; ++c) pairs[c] = larger(columns[c], columns[c + 1]);
    for (std::ptrdiff_t c = 0; c < count; ++c) {
      const float maximum = larger(pairs[c], pairs[c + 1]);
      const bool isMaximum = (maximum > threshold) & (maximum == row[c]);
      marks[c] = static_cast<unsigned char>(isMaximum);
    }
  }
};

}  // namespace

void markLocalMaxima(const float* row, std::ptrdiff_t cols, std::ptrdiff_t count, float threshold,
                     unsigned char* marks) {
  Scratch scratch;
  for (std::ptrdiff_t c = 0; c < count; c += kRun) {
    Leveled<MarkRun>::call(row + c, cols, std::min(kRun, count - c), threshold, &scratch,
                           marks + c);
  }
}

}  // namespace framequilt
