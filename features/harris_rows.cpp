// SPDX-License-Identifier: Apache-2.0
#include "features/harris_rows.h"

#include <algorithm>
#include <array>
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

/// The three gradient products of a row.
struct Products {
  float *xx, *yy, *xy;
};

struct GradientRow {
  FRAMEQUILT_ROUTINE void run(const unsigned char* __restrict above,
                              const unsigned char* __restrict here,
                              const unsigned char* __restrict below, int count,
                              float* __restrict xx, float* __restrict yy, float* __restrict xy) {
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

/// Sum over five rows, or five neighbours, in the order of the taps.
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

struct SmoothDown {
  FRAMEQUILT_ROUTINE void run(const float* __restrict a, const float* __restrict b,
                              const float* __restrict c, const float* __restrict d,
                              const float* __restrict e, const float* kernel, int count,
                              float* __restrict out) {
    const float k[kHarrisTaps] = {kernel[0], kernel[1], kernel[2], kernel[3], kernel[4]};
    for (int i = 0; i < count; ++i) out[i] = fiveTaps(k, a[i], b[i], c[i], d[i], e[i]);
  }
};

/// From the vertically smoothed products, which begin `kHalf` columns before the response.
struct ResponseRow {
  FRAMEQUILT_ROUTINE void run(const float* __restrict xx, const float* __restrict yy,
                              const float* __restrict xy, const HarrisTuning& tuning, int count,
                              float* __restrict response) {
    const float* const kernel = tuning.kernel;
    const float w[kHarrisTaps] = {kernel[0], kernel[1], kernel[2], kernel[3], kernel[4]};
    const float k = tuning.k;
    for (int c = 0; c < count; ++c) {
      const float a = fiveTaps(w, xx[c], xx[c + 1], xx[c + 2], xx[c + 3], xx[c + 4]);
      const float b = fiveTaps(w, yy[c], yy[c + 1], yy[c + 2], yy[c + 3], yy[c + 4]);
      const float x = fiveTaps(w, xy[c], xy[c + 1], xy[c + 2], xy[c + 3], xy[c + 4]);
      const float value = (a * b - x * x) - ((a + b) * k) * (a + b);
      response[c] = value > 0.0F ? value : 0.0F;
    }
  }
};

/// The last five rows of products, and one row of each smoothed downwards.
class Ring {
 public:
  explicit Ring(int width) : width_(static_cast<std::size_t>(width)), floats_(width_ * 3 * 6) {}

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
  const auto addProducts = [&](int r) {
    const unsigned char* const here = gray + rowStart(r, cols) + kReach;
    const Products to = ring.row(r);
    Leveled<GradientRow>::call(here - cols, here, here + cols, width, to.xx, to.yy, to.xy);
  };

  std::fill_n(response, rowStart(kHarrisMargin, cols), 0.0F);
  for (int r = kReach; r < kHarrisMargin + kHalf; ++r) addProducts(r);
  float sum = 0.0F;
  for (int r = kHarrisMargin; r < rows - kHarrisMargin; ++r) {
    addProducts(r + kHalf);
    const Products five[] = {ring.row(r - 2), ring.row(r - 1), ring.row(r), ring.row(r + 1),
                             ring.row(r + 2)};
    const Products smooth = ring.smoothed();
    const auto down = [&](float* Products::*plane) {
      Leveled<SmoothDown>::call(five[0].*plane, five[1].*plane, five[2].*plane, five[3].*plane,
                                five[4].*plane, tuning.kernel, width, smooth.*plane);
    };
    down(&Products::xx);
    down(&Products::yy);
    down(&Products::xy);

    float* const row = response + rowStart(r, cols);
    std::fill_n(row, kHarrisMargin, 0.0F);
    std::fill_n(row + cols - kHarrisMargin, kHarrisMargin, 0.0F);
    Leveled<ResponseRow>::call(smooth.xx, smooth.yy, smooth.xy, tuning, count, row + kHarrisMargin);
    for (int c = kHarrisMargin; c < cols - kHarrisMargin; ++c) sum += row[c];
  }
  std::fill_n(response + rowStart(rows - kHarrisMargin, cols), rowStart(kHarrisMargin, cols), 0.0F);
  return sum;
}

}  // namespace framequilt
