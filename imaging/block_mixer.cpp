// SPDX-License-Identifier: Apache-2.0
#include "imaging/block_mixer.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "imaging/chamfer.h"
#include "imaging/cpu_level.h"
#include "imaging/pixel_math.h"

namespace framequilt {
namespace {

using Bytes = unsigned char;
using chamfer::kLanes;

/// Bytes before a row of weights.
constexpr std::size_t kBefore = kLanes;

// --- Weights ---

/// A byte for each lane of each step.
struct WeighSlanted {
  template <bool kGroundIsFull, bool kFrameIsFull>
  FRAMEQUILT_ROUTINE void loop(const BlockDistances& from, int steps, Bytes* __restrict weights) {
    const float* __restrict ground = from.ground;
    const float* __restrict frame = from.frame;
    const float* __restrict rows = from.frameRows;
    const float* __restrict columns = from.frameColumns;
    for (int t = 0; t < steps; ++t) {
      for (int k = 0; k < kLanes; ++k) {
        const int i = t * kLanes + k;
        const float a = kGroundIsFull ? chamfer::kFarthest : ground[i];
        const float b = kFrameIsFull ? std::min(rows[k], columns[k - t]) : frame[i];
        const float sum = a + b;
        const float share = a * 255.0F / (sum == 0.0F ? 1.0F : sum);
        weights[i] = static_cast<Bytes>(static_cast<int>(share));
      }
    }
  }

  FRAMEQUILT_ROUTINE void run(const BlockDistances& from, int steps, Bytes* weights) {
    if (from.ground == nullptr) {
      from.frame == nullptr ? loop<true, true>(from, steps, weights)
                            : loop<true, false>(from, steps, weights);
    } else {
      from.frame == nullptr ? loop<false, true>(from, steps, weights)
                            : loop<false, false>(from, steps, weights);
    }
  }
};

/// Slanted bytes to rows. `rows + k * stride` is where column 0 of the block's row k goes; up to 15
/// bytes before a row and 30 behind it are written, too.
struct Straighten {
  typedef Bytes Lane __attribute__((vector_size(16)));

  FRAMEQUILT_ROUTINE void interleave(const Lane& a, const Lane& b, Lane& low, Lane& high) {
    low = __builtin_shufflevector(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    high =
        __builtin_shufflevector(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
  }

  FRAMEQUILT_ROUTINE void halves(const Lane (&from)[kLanes], Lane (&to)[kLanes]) {
    for (std::size_t i = 0; i < kLanes / 2; ++i) {
      interleave(from[i], from[i + kLanes / 2], to[2 * i], to[2 * i + 1]);
    }
  }

  FRAMEQUILT_ROUTINE void run(const Bytes* slanted, int tiles, Bytes* rows, std::ptrdiff_t stride) {
    for (int tile = 0; tile < tiles; ++tile) {
      // Interleaving the halves four times transposes a square of 16 x 16.
      Lane a[kLanes];
      Lane b[kLanes];
      std::memcpy(a, slanted + std::ptrdiff_t{tile} * kLanes * kLanes, sizeof(a));
      halves(a, b);
      halves(b, a);
      halves(a, b);
      halves(b, a);
      for (int k = 0; k < kLanes; ++k) {
        std::memcpy(rows + k * stride + std::ptrdiff_t{tile} * kLanes - k, &a[k], sizeof(Lane));
      }
    }
  }
};

// --- Mixing ---

inline unsigned weightedSum(unsigned weight, Bytes ground, Bytes frame) {
  return (255U - weight) * frame + weight * ground;
}

struct MixColour {
  FRAMEQUILT_ROUTINE void run(const Bytes* __restrict ground, const Bytes* __restrict weight,
                              std::size_t count, Bytes* __restrict frame) {
    for (std::size_t i = 0; i < count; ++i) {
      for (std::size_t k = 0; k < 3; ++k) {
        // In 16 bits, and divided by 255 exactly: true up to 65534.
        const auto sum =
            static_cast<std::uint16_t>(weightedSum(weight[i], ground[3 * i + k], frame[3 * i + k]));
        frame[3 * i + k] = static_cast<Bytes>((sum + 1U + (sum >> 8U)) >> 8U);
      }
    }
  }
};

struct MixGray {
  FRAMEQUILT_ROUTINE void run(const Bytes* __restrict ground, const Bytes* __restrict weight,
                              std::size_t count, Bytes* __restrict frame) {
    for (std::size_t i = 0; i < count; ++i) {
      const auto sum = static_cast<std::uint16_t>(weightedSum(weight[i], ground[i], frame[i]));
      frame[i] = static_cast<Bytes>(sum >> 8U);
    }
  }
};

}  // namespace

void BlockMixer::prepare(int cols) {
  cols_ = cols;
  tiles_ = (chamfer::stepsOf(cols) + kLanes - 1) / kLanes;
  stride_ = static_cast<std::size_t>(cols) + std::size_t{4} * kLanes;
  slanted_.resize(static_cast<std::size_t>(tiles_) * kLanes * kLanes);
  straight_.resize(stride_ * kLanes);
}

void BlockMixer::weigh(const BlockDistances& distances) {
  Leveled<WeighSlanted>::call(distances, chamfer::stepsOf(cols_), slanted_.data());
  Leveled<Straighten>::call(slanted_.data(), tiles_, straight_.data() + kBefore,
                            static_cast<std::ptrdiff_t>(stride_));
}

void BlockMixer::weighNothing() { std::fill(straight_.begin(), straight_.end(), Bytes{0}); }

void BlockMixer::mix(const Feathering& job, int block) const {
  const auto cols = static_cast<std::size_t>(job.cols);
  const std::size_t bytes = planeSize(1, job.cols, job.channels);
  const int first = block * kLanes;
  const int end = std::min(job.rows, first + kLanes);
  for (int r = first; r < end; ++r) {
    Bytes* const ground = job.ground + r * job.stride;
    Bytes* const frame = job.frame + rowStart(r, job.cols, job.channels);
    const Bytes* const weights =
        straight_.data() + static_cast<std::size_t>(r - first) * stride_ + kBefore;
    if (job.channels == 3) {
      Leveled<MixColour>::call(ground, weights, cols, frame);
    } else {
      Leveled<MixGray>::call(ground, weights, cols, frame);
    }
    std::memcpy(ground, frame, bytes);
    if (job.copy != nullptr) {
      std::memcpy(job.copy + rowStart(r, job.cols, job.channels), frame, bytes);
    }
  }
}

}  // namespace framequilt
