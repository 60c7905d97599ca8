// SPDX-License-Identifier: Apache-2.0
#include "features/harris_rows.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <vector>

#include "imaging/cpu_level.h"
#include "imaging/pixel_math.h"

namespace framequilt {
namespace {

constexpr int kHalf = kHarrisTaps / 2;
/// First and last column, counted from the edge, whose gradients have a part in a response.
constexpr int kReach = kHarrisMargin - kHalf;

/// Columns that are taken from gradients to response before the next ones: few enough that the sum
/// of their responses, a chain of additions, goes on beside the vectors of the next ones.
constexpr int kStretch = 64;

/// Sum of five weighted values in the order of the taps.
FRAMEQUILT_ROUTINE float fiveTaps(const float* kernel, float a, float b, float c, float d,
                                  float e) {
  float sum = 0.0F;
  sum += kernel[0] * a;
  sum += kernel[1] * b;
  sum += kernel[2] * c;
  sum += kernel[3] * d;
  sum += kernel[4] * e;
  return sum;
}

/// Three planes of one row: gradient products, or these smoothed downwards.
struct Products {
  float *xx, *yy, *xy;
};

/// What a row of responses is made of and where it goes. Products begin `kHalf` columns before the
/// response.
struct ResponseRow {
  const unsigned char *above, *here, *below;  ///< Pixels of the row whose gradients are new.
  Products rows[kHarrisTaps];                 ///< The last of these are the new ones.
  Products smooth;
  float* response;
  int count;  ///< Of responses.
};

FRAMEQUILT_ROUTINE void addProducts(const unsigned char* __restrict above,
                                    const unsigned char* __restrict here,
                                    const unsigned char* __restrict below, int begin, int end,
                                    const Products& to) {
  float* __restrict xx = to.xx;
  float* __restrict yy = to.yy;
  float* __restrict xy = to.xy;
  for (int c = begin; c < end; ++c) {
    const int sx = (above[c + 1] + 2 * here[c + 1] + below[c + 1]) -
                   (above[c - 1] + 2 * here[c - 1] + below[c - 1]);
    const int sy =
        (below[c - 1] + 2 * below[c] + below[c + 1]) - (above[c - 1] + 2 * above[c] + above[c + 1]);
    const int gx = std::abs(sx) >> 2;
    const int gy = std::abs(sy) >> 2;
    xx[c] = static_cast<float>(gx * gx);
    yy[c] = static_cast<float>(gy * gy);
    xy[c] = static_cast<float>(gx * gy);
  }
}

FRAMEQUILT_ROUTINE void smoothDown(const float* __restrict a, const float* __restrict b,
                                   const float* __restrict c, const float* __restrict d,
                                   const float* __restrict e, const float (&kernel)[kHarrisTaps],
                                   int begin, int end, float* __restrict out) {
  for (int i = begin; i < end; ++i) out[i] = fiveTaps(kernel, a[i], b[i], c[i], d[i], e[i]);
}

FRAMEQUILT_ROUTINE void respond(const Products& smooth, const float (&w)[kHarrisTaps], float k,
                                int begin, int end, float* __restrict response) {
  const float* __restrict xx = smooth.xx;
  const float* __restrict yy = smooth.yy;
  const float* __restrict xy = smooth.xy;
  for (int c = begin; c < end; ++c) {
    const float a = fiveTaps(w, xx[c], xx[c + 1], xx[c + 2], xx[c + 3], xx[c + 4]);
    const float b = fiveTaps(w, yy[c], yy[c + 1], yy[c + 2], yy[c + 3], yy[c + 4]);
    const float x = fiveTaps(w, xy[c], xy[c + 1], xy[c + 2], xy[c + 3], xy[c + 4]);
    const float value = (a * b - x * x) - ((a + b) * k) * (a + b);
    response[c] = value > 0.0F ? value : 0.0F;
  }
}

struct AddProducts {
  FRAMEQUILT_ROUTINE void run(const unsigned char* above, const unsigned char* here,
                              const unsigned char* below, int count, const Products& to) {
    addProducts(above, here, below, 0, count, to);
  }
};

/// One row; returns `sum` and its responses, added one after the other.
struct AddResponses {
  FRAMEQUILT_ROUTINE float run(const ResponseRow& row, const HarrisTuning& tuning, float sum) {
    const float* const w = tuning.kernel;
    const float kernel[kHarrisTaps] = {w[0], w[1], w[2], w[3], w[4]};
    const auto& [a, b, c, d, e] = row.rows;
    int smoothed = 0;
    for (int begin = 0; begin < row.count; begin += kStretch) {
      const int end = begin + kStretch < row.count ? begin + kStretch : row.count;
      const int ahead = end + 2 * kHalf;
      addProducts(row.above, row.here, row.below, smoothed, ahead, e);
      smoothDown(a.xx, b.xx, c.xx, d.xx, e.xx, kernel, smoothed, ahead, row.smooth.xx);
      smoothDown(a.yy, b.yy, c.yy, d.yy, e.yy, kernel, smoothed, ahead, row.smooth.yy);
      smoothDown(a.xy, b.xy, c.xy, d.xy, e.xy, kernel, smoothed, ahead, row.smooth.xy);
      smoothed = ahead;
      respond(row.smooth, kernel, tuning.k, begin, end, row.response);
      for (int i = begin; i < end; ++i) sum += row.response[i];
    }
    return sum;
  }
};

/// The last five rows of products, and one row of each smoothed downwards.
class Ring {
 public:
  explicit Ring(int width)
      : width_(static_cast<std::size_t>(width)), floats_(width_ * 3 * (kHarrisTaps + 1)) {}

  Products row(int r) { return at(static_cast<std::size_t>(r % kHarrisTaps)); }
  Products smoothed() { return at(kHarrisTaps); }

 private:
  Products at(std::size_t place) {
    float* const start = floats_.data() + place * 3 * width_;
    return {start, start + width_, start + 2 * width_};
  }

  std::size_t width_;
  std::vector<float> floats_;
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
  Ring ring(width);
  const auto pixels = [&](int r) { return gray + rowStart(r, cols) + kReach; };
  for (int r = kReach; r < kHarrisMargin + kHalf; ++r) {
    Leveled<AddProducts>::call(pixels(r - 1), pixels(r), pixels(r + 1), width, ring.row(r));
  }

  std::fill_n(response, rowStart(kHarrisMargin, cols), 0.0F);
  float sum = 0.0F;
  for (int r = kHarrisMargin; r < rows - kHarrisMargin; ++r) {
    float* const row = response + rowStart(r, cols);
    std::fill_n(row, kHarrisMargin, 0.0F);
    std::fill_n(row + cols - kHarrisMargin, kHarrisMargin, 0.0F);
    sum = Leveled<AddResponses>::call(
        {pixels(r + kHalf - 1),
         pixels(r + kHalf),
         pixels(r + kHalf + 1),
         {ring.row(r - 2), ring.row(r - 1), ring.row(r), ring.row(r + 1), ring.row(r + 2)},
         ring.smoothed(),
         row + kHarrisMargin,
         count},
        tuning, sum);
  }
  std::fill_n(response + rowStart(rows - kHarrisMargin, cols), rowStart(kHarrisMargin, cols), 0.0F);
  return sum;
}

}  // namespace framequilt
