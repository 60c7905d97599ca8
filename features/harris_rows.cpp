// SPDX-License-Identifier: Apache-2.0
#include "features/harris_rows.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <vector>

#include "imaging/cpu_level.h"
#include "imaging/pixel_math.h"

namespace framequilt {
namespace {

constexpr int kHalf = kHarrisTaps / 2;
/// First and last column, counted from the edge, whose gradients have a part in a response.
constexpr int kReach = kHarrisMargin - kHalf;

/// Three planes of one row: gradient products, or these smoothed downwards.
struct Products {
  float *xx, *yy, *xy;
};

/// What two rows of responses are made of and where they go. Products begin `kHalf` columns before
/// the response.
struct ResponseRows {
  Products rows[kHarrisTaps + 1];  ///< The first five for one row, the last five for the other.
  Products smooth[2];
  float* response[2];
  int count;  ///< Of responses in a row.
};

/// Responses whose sum is still to come, in the order of the pixels.
struct Pending {
  const float* first;
  std::ptrdiff_t count;
};

struct AddProducts {
  FRAMEQUILT_ROUTINE void run(const unsigned char* __restrict above,
                              const unsigned char* __restrict here,
                              const unsigned char* __restrict below, int count,
                              const Products& to) {
    float* __restrict xx = to.xx;
    float* __restrict yy = to.yy;
    float* __restrict xy = to.xy;
    for (int c = 0; c < count; ++c) {
      const int sx = (above[c + 1] + 2 * here[c + 1] + below[c + 1]) -
                     (above[c - 1] + 2 * here[c - 1] + below[c - 1]);
      const int sy = (below[c - 1] + 2 * below[c] + below[c + 1]) -
                     (above[c - 1] + 2 * above[c] + above[c + 1]);
      const int gx = std::abs(sx) >> 2;
      const int gy = std::abs(sy) >> 2;
      xx[c] = static_cast<float>(gx * gx);
      yy[c] = static_cast<float>(gy * gy);
      xy[c] = static_cast<float>(gx * gy);
    }
  }
};

/// Two rows, which share most of what they are made of. Returns `sum` and the pending responses,
/// added one after the other: that chain of additions takes as long as all the rest, so both go on
/// side by side. Whole blocks of columns are written; what follows a row has room for one.
template <int Bytes>
struct AddResponses {
  typedef float Floats __attribute__((vector_size(Bytes)));
  static constexpr int kBlock = Bytes / 4;
  /// Blocks that the responses are behind the smoothing downwards: what that wrote has left the
  /// write buffer.
  static constexpr int kLag = 2;
  /// Responses that are added beside each block.
  static constexpr std::ptrdiff_t kAdded = std::ptrdiff_t{2} * kBlock;

  struct Weights {
    Floats tap[kHarrisTaps];
  };

  FRAMEQUILT_ROUTINE void load(const float* from, Floats& to) {
    __builtin_memcpy(&to, from, sizeof(to));
  }
  FRAMEQUILT_ROUTINE void store(const Floats& from, float* to) {
    __builtin_memcpy(to, &from, sizeof(from));
  }

  /// Adds in the order of the taps.
  FRAMEQUILT_ROUTINE void weigh(const Weights& weights, const Floats* values, Floats& sum) {
    sum = weights.tap[0] * values[0];
    for (int i = 1; i < kHarrisTaps; ++i) sum += weights.tap[i] * values[i];
  }

  FRAMEQUILT_ROUTINE void smoothDown(const Weights& weights, const ResponseRows& job,
                                     float* Products::*plane, int c) {
    Floats values[kHarrisTaps + 1];
    for (int i = 0; i <= kHarrisTaps; ++i) load(job.rows[i].*plane + c, values[i]);
    for (int i = 0; i < 2; ++i) {
      Floats sum = {};
      weigh(weights, values + i, sum);
      store(sum, job.smooth[i].*plane + c);
    }
  }

  FRAMEQUILT_ROUTINE void smoothAcross(const Weights& weights, const float* from, Floats& sum) {
    Floats values[kHarrisTaps];
    for (int i = 0; i < kHarrisTaps; ++i) load(from + i, values[i]);
    weigh(weights, values, sum);
  }

  FRAMEQUILT_ROUTINE void respond(const Weights& weights, float k, const Products& smooth, int c,
                                  float* response) {
    Floats a = {}, b = {}, x = {};
    smoothAcross(weights, smooth.xx + c, a);
    smoothAcross(weights, smooth.yy + c, b);
    smoothAcross(weights, smooth.xy + c, x);
    const Floats value = (a * b - x * x) - ((a + b) * k) * (a + b);
    const Floats positive = value > 0.0F ? value : Floats{};
    store(positive, response + c);
  }

  FRAMEQUILT_ROUTINE float run(const ResponseRows& job, const HarrisTuning& tuning, Pending pending,
                               float sum) {
    Weights weights = {};
    for (int i = 0; i < kHarrisTaps; ++i) weights.tap[i] = Floats{} + tuning.kernel[i];
    const int smoothed = job.count + 2 * kHalf;
    const float* next = pending.first;
    const float* const end = next + pending.count;
    for (int c = 0; c - kLag * kBlock < job.count; c += kBlock) {
      if (c < smoothed) {
        smoothDown(weights, job, &Products::xx, c);
        smoothDown(weights, job, &Products::yy, c);
        smoothDown(weights, job, &Products::xy, c);
      }
      const int ready = c - kLag * kBlock;
      if (ready >= 0) {
        respond(weights, tuning.k, job.smooth[0], ready, job.response[0]);
        respond(weights, tuning.k, job.smooth[1], ready, job.response[1]);
      }
      if (end - next < kAdded) continue;
      for (std::ptrdiff_t i = 0; i < kAdded; ++i) sum += next[i];
      next += kAdded;
    }
    for (; next < end; ++next) sum += *next;
    return sum;
  }
};

/// The last six rows of products, two rows of them smoothed downwards, and a row of responses that
/// nobody asked for. Every row begins at a multiple of the widest vector.
class Ring {
 public:
  explicit Ring(int width)
      : width_((static_cast<std::size_t>(width) + 2 * kAligned - 1) / kAligned * kAligned),
        floats_(width_ * 3 * (kRows + 3) + kAligned) {
    std::size_t room = floats_.size() * sizeof(float);
    void* start = floats_.data();
    start_ = static_cast<float*>(
        std::align(kAligned * sizeof(float), room - kAligned * sizeof(float), start, room));
  }

  Products row(int r) { return at(static_cast<std::size_t>(r) % kRows); }
  Products smoothed(std::size_t which) { return at(kRows + which); }
  float* unused() { return at(kRows + 2).xx; }

 private:
  /// Floats of the widest vector. Blocks of columns are taken whole, so that there is room for
  /// another one behind a row.
  static constexpr std::size_t kAligned = 16;
  static constexpr std::size_t kRows = kHarrisTaps + 1;

  Products at(std::size_t place) {
    float* const start = start_ + place * 3 * width_;
    return {start, start + width_, start + 2 * width_};
  }

  std::size_t width_;
  std::vector<float> floats_;
  float* start_;
};

}  // namespace

float harrisResponse(const unsigned char* gray, int rows, int cols, const HarrisTuning& tuning,
                     float* response) {
  const int count = cols - 2 * kHarrisMargin;
  if (rows <= 2 * kHarrisMargin || count < 1) {
    std::fill_n(response, planeSize(rows, cols), 0.0F);
    return 0.0F;
  }
  const int width = count + 2 * kHalf;
  const int end = rows - kHarrisMargin;
  Ring ring(width);
  const auto addProducts = [&](int r) {
    const unsigned char* const row = gray + rowStart(r, cols) + kReach;
    Leveled<AddProducts>::call(row - cols, row, row + cols, width, ring.row(r));
  };
  for (int r = kReach; r < kHarrisMargin + kHalf; ++r) addProducts(r);

  std::fill_n(response, rowStart(kHarrisMargin, cols), 0.0F);
  float sum = 0.0F;
  Pending pending = {};
  for (int r = kHarrisMargin; r < end; r += 2) {
    const bool both = r + 1 < end;
    float* const first = response + rowStart(r, cols) + kHarrisMargin;
    ResponseRows job = {};
    addProducts(r + kHalf);
    if (both) addProducts(r + 1 + kHalf);
    for (int i = 0; i <= kHarrisTaps; ++i) job.rows[i] = ring.row(r - kHalf + i);
    job.smooth[0] = ring.smoothed(0);
    job.smooth[1] = ring.smoothed(1);
    job.response[0] = first;
    job.response[1] = both ? first + cols : ring.unused();
    job.count = count;
    sum = LeveledByWidth<AddResponses>::call(job, tuning, pending, sum);
    for (int i = r; i < std::min(r + 2, end); ++i) {
      float* const row = response + rowStart(i, cols);
      std::fill_n(row, kHarrisMargin, 0.0F);
      std::fill_n(row + cols - kHarrisMargin, kHarrisMargin, 0.0F);
    }
    // With the margins between the rows, which add nothing.
    pending = {first, both ? cols + count : count};
  }
  for (std::ptrdiff_t i = 0; i < pending.count; ++i) sum += pending.first[i];
  std::fill_n(response + rowStart(end, cols), rowStart(kHarrisMargin, cols), 0.0F);
  return sum;
}

}  // namespace framequilt
